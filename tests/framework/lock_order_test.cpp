// Builds with TARVEX_DEBUG_CHECKS end the process where locks are taken in the wrong order, and say which.
#include <gtest/gtest.h>

#include "framework/condition_variable.h"
#include "framework/critical_section.h"

#if defined(TARVEX_DEBUG_CHECKS) && GTEST_HAS_DEATH_TEST

namespace tarvex::test {
namespace {

TEST(LockOrderDeathTest, WhatCouldMeetAnotherThreadTheOtherWayRoundEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fork alone would copy what other threads hold
  CCritSec filter{"the filter's", LockRank::kFilter};
  CCritSec position{"the position's", LockRank::kPosition};
  CCritSec leaf{"one leaf", LockRank::kLeaf};
  CCritSec otherLeaf{"another leaf", LockRank::kLeaf};
  CCritSec last{"the last", LockRank::kLogSink};
  ConditionVariable changed;
  filter.Lock();
  position.Lock();
  filter.Lock();
  filter.Unlock();
  filter.Unlock();  // not in the order in which they were taken, as scopes that are given away do
  EXPECT_DEATH(filter.Lock(), "lock order: \"the filter's\" taken while \"the position's\" is held");
  leaf.Lock();
  changed.Wait(leaf, 1);
  EXPECT_DEATH(otherLeaf.Lock(), "lock order: \"another leaf\" taken while \"one leaf\" is held");
  last.Lock();
  EXPECT_DEATH(changed.Wait(last, 0), "lock order: \"the last\" waited with while \"one leaf\" is held");
  last.Unlock();
  leaf.Lock();  // a wait would give it up once, and nobody else could ever take it
  EXPECT_DEATH(changed.Wait(leaf, 0), "waited with while once more");
  for (CCritSec* held : {&leaf, &leaf, &position}) held->Unlock();
  filter.Lock();
  filter.Unlock();
}

}  // namespace
}  // namespace tarvex::test

#endif

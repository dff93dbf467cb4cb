// Builds with TARVEX_DEBUG_CHECKS end the process where locks are taken in the wrong order, and say which.
#include <gtest/gtest.h>

#include "framework/condition_variable.h"
#include "framework/critical_section.h"

#if defined(TARVEX_DEBUG_CHECKS) && GTEST_HAS_DEATH_TEST

namespace tarvex::test {
namespace {

class LockOrderDeathTest : public testing::Test {
 protected:
  // A fork alone would copy what other threads hold.
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  CCritSec m_filter{"the filter's", LockRank::kFilter};
  CCritSec m_position{"the position's", LockRank::kPosition};
  CCritSec m_leaf{"one leaf", LockRank::kLeaf};
  CCritSec m_otherLeaf{"another leaf", LockRank::kLeaf};
  ConditionVariable m_changed;
};

TEST_F(LockOrderDeathTest, ALockBeforeTheOneHeldEndsTheProcess) {
  const CAutoLock position(m_position);
  EXPECT_DEATH(m_filter.Lock(), "lock order: \"the filter's\" taken while \"the position's\" is held");
}

TEST_F(LockOrderDeathTest, ASecondLockOfOnePlaceEndsTheProcess) {
  const CAutoLock leaf(m_leaf);
  EXPECT_DEATH(m_otherLeaf.Lock(), "lock order: \"another leaf\" taken while \"one leaf\" is held");
}

TEST_F(LockOrderDeathTest, AWaitWhileALeafIsHeldEndsTheProcess) {
  CCritSec last{"the last", LockRank::kLogSink};
  const CAutoLock leaf(m_leaf);
  const CAutoLock hold(last);
  EXPECT_DEATH(m_changed.Wait(last, 0), "lock order: \"the last\" waited with while \"one leaf\" is held");
}

// The wait would give it up once, and nobody else could ever take it.
TEST_F(LockOrderDeathTest, AWaitWithALockThatIsHeldTwiceEndsTheProcess) {
  const CAutoLock hold(m_leaf);
  const CAutoLock again(m_leaf);
  EXPECT_DEATH(m_changed.Wait(m_leaf, 0), "waited with while once more");
}

TEST_F(LockOrderDeathTest, WhatIsHeldMayBeTakenAgainAndWhatWasGivenUpIsForgotten) {
  const CAutoLock filter(m_filter);
  {
    const CAutoLock position(m_position);
    const CAutoLock again(m_filter);
    const CAutoLock leaf(m_leaf);
    m_changed.Wait(m_leaf, 1);
  }
  const CAutoLock leaf(m_otherLeaf);
}

// Not in the order in which they were taken, as scopes that are given away do.
TEST_F(LockOrderDeathTest, LocksMayBeGivenUpInAnyOrder) {
  m_filter.Lock();
  m_position.Lock();
  m_filter.Unlock();
  EXPECT_DEATH(m_filter.Lock(), "taken while \"the position's\"");
  m_position.Unlock();
  m_filter.Lock();
  m_filter.Unlock();
}

}  // namespace
}  // namespace tarvex::test

#endif

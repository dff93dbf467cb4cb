// The ring's arithmetic, against a plain model of its rules under random requests and releases.
#include "pins/output/ring_regions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace tarvex {
namespace {

using Region = RingRegions::Region;

/// The rules, word by word: an ordered map of what is out, a cursor, and a limit that is moved, not found.
class Model {
 public:
  explicit Model(std::size_t size) : m_size(size), m_limit(size) {}

  std::optional<std::size_t> Take(std::size_t size) {
    if (m_out.empty()) {
      m_cursor = 0;
      m_limit = m_size;
    } else if (m_limit - m_cursor < size && m_out.begin()->first > 0) {
      m_cursor = 0;
      m_limit = m_out.begin()->first;
    }
    if (m_limit - m_cursor < size) return std::nullopt;
    const std::size_t start = m_cursor;
    m_cursor += size;
    m_out[start] = m_cursor;
    return start;
  }

  void Give(std::size_t start) {
    const auto region = m_out.find(start);
    const auto above = std::next(region);
    const bool bounds = region->first == m_limit || region->second == m_limit;
    if (bounds) m_limit = above == m_out.end() ? m_size : above->first;
    m_out.erase(region);
  }

  bool Overlaps(std::size_t start, std::size_t end) const {
    for (const auto& [from, to] : m_out) {
      if (start < to && from < end) return true;
    }
    return false;
  }

 private:
  const std::size_t m_size;
  std::size_t m_cursor = 0;
  std::size_t m_limit;
  std::map<std::size_t, std::size_t> m_out;
};

/// Both, in step.
class Pair {
 public:
  explicit Pair(std::size_t size) : m_model(size), m_size(size) { m_ring.Reset(size); }

  void Take(std::size_t size) {
    auto region = std::make_unique<Region>();
    const Model before = m_model;
    const auto expected = m_model.Take(size);
    ASSERT_EQ(m_ring.Take(*region, size), expected.has_value());
    if (!expected) return;
    ASSERT_EQ(region->start, *expected);
    ASSERT_EQ(region->end, *expected + size);
    ASSERT_LE(region->end, m_size);
    ASSERT_FALSE(before.Overlaps(region->start, region->end));
    m_out.push_back(std::move(region));
  }

  void Give(std::size_t index) {
    m_model.Give(m_out[index]->start);
    m_ring.Give(*m_out[index]);
    m_out.erase(m_out.begin() + static_cast<std::ptrdiff_t>(index));
    ASSERT_EQ(m_ring.IsEmpty(), m_out.empty());
  }

  std::size_t Count() const { return m_out.size(); }

 private:
  RingRegions m_ring;
  Model m_model;
  std::size_t m_size;
  std::vector<std::unique_ptr<Region>> m_out;
};

/// `disorder` is how far from the oldest a release may reach: 1 is a queue.
void RunAgainstModel(std::uint32_t seed, std::size_t largest, std::size_t disorder) {
  SCOPED_TRACE(testing::Message() << "seed " << seed << " largest " << largest << " disorder " << disorder);
  std::mt19937 random(seed);
  const auto upTo = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n)(random); };
  Pair pair(1000);
  for (int step = 0; step < 2000 && !testing::Test::HasFatalFailure(); ++step) {
    if (pair.Count() != 0 && upTo(1) == 0) {
      pair.Give(std::min(upTo(disorder - 1), pair.Count() - 1));
    } else {
      pair.Take(1 + upTo(largest - 1));
    }
  }
}

TEST(RingRegions, PlacesAndRefusesAsTheRulesSay) {
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    for (const std::size_t largest : {3U, 90U, 400U, 1000U}) {
      for (const std::size_t disorder : {1U, 4U, 1000U}) RunAgainstModel(seed, largest, disorder);
    }
  }
}

TEST(RingRegions, WrapsIntoWhatIsFreeAtTheFront) {
  RingRegions ring;
  ring.Reset(1000);
  Region first;
  Region second;
  Region third;
  ASSERT_TRUE(ring.Take(first, 100));
  ASSERT_TRUE(ring.Take(second, 100));
  ASSERT_TRUE(ring.Take(third, 750));
  ring.Give(first);
  Region large;
  EXPECT_FALSE(ring.Take(large, 101)) << "only 100 bytes are free before the region that is out";
  Region small;
  ASSERT_TRUE(ring.Take(small, 100));
  EXPECT_EQ(small.start, 0U);
}

// A peer that always keeps its latest sample must not stop the ring with most of it free.
TEST(RingRegions, GivingBackTheRegionAboveTheFreeSpanWidensIt) {
  RingRegions ring;
  ring.Reset(1000);
  Region oldest;
  Region next;
  Region latest;
  ASSERT_TRUE(ring.Take(oldest, 300));
  ASSERT_TRUE(ring.Take(next, 600));
  ring.Give(oldest);
  ASSERT_TRUE(ring.Take(latest, 200));
  ring.Give(next);
  Region large;
  ASSERT_TRUE(ring.Take(large, 700));
  EXPECT_EQ(large.start, 200U);
}

TEST(RingRegions, EmptyRegionsTakeNoRoomAndHideNoOther) {
  RingRegions ring;
  ring.Reset(100);
  Region empty;
  Region whole;
  Region after;
  ASSERT_TRUE(ring.Take(empty, 0));
  ASSERT_TRUE(ring.Take(whole, 100));
  ASSERT_TRUE(ring.Take(after, 0)) << "even in a full ring";
  EXPECT_EQ(whole.start, empty.start);
  ring.Give(empty);
  Region more;
  EXPECT_FALSE(ring.Take(more, 1)) << "the region that starts where the empty one did is still out";
  ring.Give(whole);
  EXPECT_TRUE(ring.IsEmpty());
  EXPECT_TRUE(ring.Take(more, 100));
}

}  // namespace
}  // namespace tarvex

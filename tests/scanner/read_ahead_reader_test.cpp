// The read-ahead reader gives the bytes and results of the reader below, and reads long streams ahead on another
// thread. What failed reads and moving ends make of that is seen in whole films.
#include "scanner/source/read_ahead_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "scanner/source/async_callback.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"
#include "tests/support/patience.h"

namespace tarvex::test {
namespace {

constexpr LONGLONG kMebibyte = 1 << 20;
constexpr LONGLONG kSize = 9 * kMebibyte + 17;
constexpr SourceReads kOne = SourceReads::kOneAtATime;
constexpr SourceReads kSeveral = SourceReads::kSeveralAtATime;
constexpr LONGLONG kFewReads = kSize / kMebibyte + 6;  // nothing twice

struct Stream {
  explicit Stream(LONGLONG size = kSize, SourceReads sourceReads = kSeveral)
      : below(Noise(static_cast<std::size_t>(size), 6)), reader(MakeCom<ReadAheadReader>(&below, sourceReads)) {
    below.onRead = [this] {
      const bool isHere = std::this_thread::get_id() == here;
      ++(isHere ? readsHere : readsElsewhere);
      if (!isHere && elsewhere) elsewhere();
    };
  }

  /// The answer of the reader, which must be that of one without reading ahead, as must the bytes: what there is of
  /// the stream, and nothing behind it.
  HRESULT Read(LONGLONG position, LONG length) {
    ByteString bytes(static_cast<std::size_t>(length), 0xEE);
    ByteString expected = bytes;
    const auto end = static_cast<LONGLONG>(below.bytes.size());
    const LONGLONG given = std::clamp<LONGLONG>(end - position, 0, length);
    if (given > 0) std::copy_n(below.bytes.begin() + static_cast<std::ptrdiff_t>(position), given, expected.begin());
    const HRESULT result = reader->SyncRead(position, length, bytes.data());
    EXPECT_TRUE(FAILED(result) || (result == (given == length ? S_OK : S_FALSE) && bytes == expected))
        << result << " at " << position << "+" << length;
    return result;
  }
  /// How far blocks of this size can be read from `position` on. The other thread gets its turn.
  LONGLONG ReadOn(LONGLONG position, LONG length) {
    for (const LONGLONG begin = position; position + length <= kSize && Read(position, length) == S_OK;) {
      position += length;
      if (position > begin + kMebibyte && !AwaitOtherThread()) break;
    }
    return position;
  }
  bool AwaitOtherThread() {
    const bool isThere = Eventually([this] { return readsElsewhere != 0; });
    EXPECT_TRUE(isThere) << "nothing is read ahead";
    return isThere;
  }

  /// From now on a read on the other thread takes until one was made here meanwhile, if there is any.
  void MakeSlow() {
    elsewhere = [this] {
      const int before = readsHere;
      const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(overtaken == 0 ? 5000 : 20);
      while (readsHere == before && std::chrono::steady_clock::now() < end) std::this_thread::yield();
      if (readsHere != before) ++overtaken;
    };
  }
  /// A read on the other thread blocks until a flush. Reads here as far as it reads itself: not to the piece that does
  /// not come.
  void Block() {
    elsewhere = [this] {
      while (below.beginFlushes == 0) std::this_thread::yield();
    };
    for (LONGLONG position = 0; position < kMebibyte; position += 1000) EXPECT_EQ(Read(position, 1000), S_OK);
    AwaitOtherThread();
  }

  const std::thread::id here = std::this_thread::get_id();
  std::function<void()> elsewhere;  // inside each read that is made there
  std::atomic<int> readsHere{0};
  std::atomic<int> readsElsewhere{0};
  std::atomic<int> overtaken{0};
  MemoryReader below;
  ComPtr<ReadAheadReader> reader;
};

// Downstream may write over frames that stay where they were read to, and be sought back into them.
TEST(ReadAheadReader, WhatIsKeptIsReadAgainForWhoeverGoesBackToIt) {
  for (const bool borrows : {false, true}) {
    Stream stream;
    LONGLONG position = 0;
    ComPtr<IUnknown> keeper;
    for (; !keeper && position < 6 * kMebibyte; position += keeper ? 0 : 1000) {
      ASSERT_TRUE(position <= kMebibyte || stream.AwaitOtherThread());
      const auto bytes = stream.reader->Borrow(position, 1000, kMebibyte);
      ASSERT_GE(bytes.size(), 1000U);
      keeper = stream.reader->Keep(bytes.first(1000));
      if (keeper) std::fill_n(const_cast<BYTE*>(bytes.data()), 1000, BYTE{0xEE});
    }
    ASSERT_TRUE(keeper) << "nothing is kept";
    EXPECT_EQ(stream.Read(position + 1000, 1000), S_OK) << "what follows is there";
    const auto again = borrows ? stream.reader->Borrow(position + 500, 500, 500) : std::span<const BYTE>();
    EXPECT_TRUE(std::equal(again.begin(), again.end(),
                           stream.below.bytes.begin() + static_cast<std::ptrdiff_t>(position + 500)));
    EXPECT_EQ(stream.Read(position, 1000), S_OK);
  }
}

// The walk often looks a few bytes ahead of what it reads.
TEST(ReadAheadReader, ReadsBelowAreFewWhereItGoesOn) {
  for (const LONG lookAhead : {16, 64}) {
    Stream stream(3 * kMebibyte, kOne);
    for (LONGLONG position = 0; position + 64 <= 3 * kMebibyte; position += 16) {
      ASSERT_EQ(stream.Read(position, lookAhead), S_OK);
      ASSERT_EQ(stream.Read(position, 16), S_OK);
    }
    EXPECT_LT(stream.below.reads, 16);
  }
}

TEST(Prefetcher, StreamReadOnIsReadOnceByBothAndWhoWouldWaitReadsOnHimself) {
  for (const SourceReads reads : {kOne, kSeveral}) {
    for (const LONG length : {1000, 300000}) {
      Stream stream(kSize, reads);
      const LONGLONG half = stream.ReadOn(0, length) / 2;
      EXPECT_GT(half, (kSize - length) / 2);
      EXPECT_LE(stream.below.reads, kFewReads);
      stream.ReadOn(half, length);
      EXPECT_TRUE(reads == kSeveral || !stream.below.hadTwoAtOnce);
    }
  }
  Stream slow;
  slow.MakeSlow();
  EXPECT_GT(slow.ReadOn(0, 1000), kSize - 1000);
  EXPECT_GE(slow.overtaken, 1);
  EXPECT_LE(slow.below.reads, kFewReads);
}

// Whether it waits for a piece or for the one read that is allowed.
TEST(Prefetcher, AFlushFreesWhoWaitsAndABlockedReadOfAnotherPlaceHoldsNobodyUp) {
  for (const auto& [reads, begin] : {std::pair{kSeveral, kMebibyte / 1000 * 1000}, {kOne, 3 * kMebibyte}}) {
    Stream stream(kSize, reads);
    stream.Block();
    std::thread flusher([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      stream.reader->BeginFlush();
    });
    const LONGLONG reached = stream.ReadOn(begin, 1000);
    EXPECT_LT(reached, kSize - kMebibyte);
    EXPECT_EQ(stream.Read(reached, 1000), VFW_E_WRONG_STATE);
    flusher.join();
    stream.reader->EndFlush();
    EXPECT_GT(stream.ReadOn(reached, 1000), kSize - 1000);
    EXPECT_TRUE(reads == kSeveral || !stream.below.hadTwoAtOnce);
  }
  Stream stream;
  stream.Block();
  EXPECT_GT(stream.ReadOn(3 * kMebibyte, 1000), kSize - 1000) << "read here, as before";
  stream.reader.Reset();
  EXPECT_EQ(stream.below.endFlushes, 1) << "destruction frees it";
}

// What the reader does not give is zero, also when the stream is shorter than it said.
TEST(AsyncCallback, ShortReadCountsWholeAndEndsInZeros) {
  for (const auto& [shrunk, answer] :
       {std::pair{100U, S_FALSE}, {50U, S_FALSE}, {100U, HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)}}) {
    MemoryReader reader(Noise(100, 1));
    reader.answerAtTheEnd = answer;
    CAsyncCallback callback;
    callback.Attach(&reader);
    reader.bytes.resize(shrunk);
    callback.setFilePointer(std::int64_t{shrunk} - 2);
    ByteString buffer(4, 1);
    EXPECT_EQ(callback.read(buffer.data(), 4), 4U);
    EXPECT_EQ(callback.getFilePointer(), shrunk + 2);
    EXPECT_EQ(buffer, (ByteString{reader.bytes[shrunk - 2], reader.bytes[shrunk - 1], 0, 0}));
  }
}

}  // namespace
}  // namespace tarvex::test

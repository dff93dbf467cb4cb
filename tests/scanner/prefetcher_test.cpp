// Reading ahead on another thread: long streams read on, through the read-ahead reader.
#include "scanner/source/prefetcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "scanner/source/read_ahead_reader.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::test {
namespace {

constexpr LONGLONG kMebibyte = 1 << 20;
constexpr LONGLONG kSize = 9 * kMebibyte + 17;

struct LongStream {
  explicit LongStream(SourceReads sourceReads = SourceReads::kSeveralAtATime)
      : below(Noise(kSize, 6)), reader(MakeCom<ReadAheadReader>(&below, sourceReads)) {
    below.onRead = [this] { CountRead(); };
  }
  /// Whether it is made on this thread.
  bool CountRead() {
    const bool isHere = std::this_thread::get_id() == here;
    ++(isHere ? readsHere : readsElsewhere);
    return isHere;
  }

  /// The reader's answer; the bytes must be those of the stream when it is S_OK.
  HRESULT Read(LONGLONG position, LONG length) {
    ByteString bytes(static_cast<std::size_t>(length), 0xEE);
    const HRESULT result = reader->SyncRead(position, length, bytes.data());
    EXPECT_TRUE(result != S_OK ||
                std::equal(bytes.begin(), bytes.end(), below.bytes.begin() + static_cast<std::ptrdiff_t>(position)))
        << position;
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
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (readsElsewhere == 0 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    EXPECT_GT(readsElsewhere, 0) << "nothing is read ahead";
    return readsElsewhere != 0;
  }

  const std::thread::id here = std::this_thread::get_id();
  std::atomic<int> readsHere{0};
  std::atomic<int> readsElsewhere{0};
  MemoryReader below;
  ComPtr<ReadAheadReader> reader;
};

TEST(Prefetcher, StreamReadOnIsTheSameAndReadOnceByBoth) {
  for (const SourceReads reads : {SourceReads::kOneAtATime, SourceReads::kSeveralAtATime}) {
    for (const LONG length : {1000, 300000}) {
      LongStream stream(reads);
      const LONGLONG half = stream.ReadOn(0, length) / 2;
      EXPECT_GT(half, (kSize - length) / 2);
      EXPECT_LE(stream.below.reads, kSize / kMebibyte + 6);
      stream.ReadOn(half, length);
      EXPECT_TRUE(reads == SourceReads::kSeveralAtATime || !stream.below.hadTwoAtOnce);
    }
  }
}

/// A read on the other thread takes until one was made here meanwhile, if there is any.
struct SlowStream : LongStream {
  SlowStream() {
    below.onRead = [this] {
      const int before = readsHere;
      if (CountRead()) return;
      const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(overtaken == 0 ? 5000 : 20);
      while (readsHere == before && std::chrono::steady_clock::now() < end) std::this_thread::yield();
      if (readsHere != before) ++overtaken;
    };
  }
  std::atomic<int> overtaken{0};
};

TEST(Prefetcher, WhoWouldWaitReadsOnHimself) {
  SlowStream stream;
  EXPECT_GT(stream.ReadOn(0, 1000), kSize - 1000);
  EXPECT_GE(stream.overtaken, 1);
  EXPECT_LE(stream.below.reads, kSize / kMebibyte + 6) << "nothing twice";
}

template <class Stream>
void ExpectBrokenPlaceFailsOnlyReadsThatTouchIt(LONGLONG brokenFrom) {
  Stream stream;
  stream.below.brokenFrom = brokenFrom;
  EXPECT_EQ(stream.ReadOn(0, 1000), brokenFrom / 1000 * 1000);
  EXPECT_EQ(stream.Read(brokenFrom, 1), E_FAIL);
  stream.below.brokenFrom = -1;
  EXPECT_GT(stream.ReadOn(0, 1000), kSize - 1000);
}

TEST(Prefetcher, BrokenPlaceFailsOnlyReadsThatTouchIt) {
  for (const LONGLONG piece : {4, 5, 6}) {  // one of both threads each
    ExpectBrokenPlaceFailsOnlyReadsThatTouchIt<LongStream>(piece * kMebibyte + 5000);
    ExpectBrokenPlaceFailsOnlyReadsThatTouchIt<SlowStream>(piece * kMebibyte + 5000);
  }
}

/// Reading on another thread blocks until a flush. Read here as far as it reads itself: not to the piece that does not
/// come.
struct BlockedStream : LongStream {
  explicit BlockedStream(SourceReads sourceReads) : LongStream(sourceReads) {
    below.onRead = [this] {
      if (CountRead()) return;
      while (below.beginFlushes == 0) std::this_thread::yield();
    };
    for (LONGLONG position = 0; position < kMebibyte; position += 1000) EXPECT_EQ(Read(position, 1000), S_OK);
    AwaitOtherThread();
  }
  /// A flush frees who reads from there on.
  void ExpectFreed(LONGLONG position) {
    std::thread flusher([this] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      reader->BeginFlush();
    });
    const LONGLONG reached = ReadOn(position, 1000);
    EXPECT_LT(reached, kSize - kMebibyte);
    EXPECT_EQ(Read(reached, 1000), VFW_E_WRONG_STATE);
    flusher.join();
    reader->EndFlush();
    EXPECT_GT(ReadOn(reached, 1000), kSize - 1000);
  }
};

TEST(Prefetcher, FlushFreesWhoWaitsForAPieceOrForTheOneReadThatIsAllowed) {
  BlockedStream(SourceReads::kSeveralAtATime).ExpectFreed(kMebibyte / 1000 * 1000);
  BlockedStream stream(SourceReads::kOneAtATime);
  stream.ExpectFreed(3 * kMebibyte);
  EXPECT_FALSE(stream.below.hadTwoAtOnce);
}

TEST(Prefetcher, BlockedReadOfAnotherPlaceHoldsNobodyUpAndDestructionFreesIt) {
  BlockedStream stream(SourceReads::kSeveralAtATime);
  EXPECT_GT(stream.ReadOn(3 * kMebibyte, 1000), kSize - 1000) << "read here, as before";
  stream.reader.Reset();
  EXPECT_EQ(stream.below.endFlushes, 1);
}

}  // namespace
}  // namespace tarvex::test

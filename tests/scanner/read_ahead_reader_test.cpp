// What stands between libebml and the reader upstream: the read-ahead reader, which gives the same bytes, results and
// errors as the reader below, and the byte source on top of it.
#include "scanner/source/read_ahead_reader.h"

#include <gtest/gtest.h>

#include <random>

#include "scanner/source/async_callback.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::test {
namespace {

constexpr std::size_t kStreamSize = 3 * 1024 * 1024 + 17;

struct TwoReaders {
  explicit TwoReaders(std::size_t size = kStreamSize) : below(Noise(size, 2)) {}

  /// Both readers must answer alike and leave alike bytes.
  void ExpectSame(LONGLONG position, LONG length) {
    ByteString expected(static_cast<std::size_t>(length), 0xEE);
    ByteString actual(static_cast<std::size_t>(length), 0xEE);
    const HRESULT expectedResult = below.SyncRead(position, length, expected.data());
    const HRESULT actualResult = readAhead->SyncRead(position, length, actual.data());
    EXPECT_EQ(actualResult, expectedResult) << position << "+" << length;
    EXPECT_TRUE(FAILED(expectedResult) || actual == expected) << position << "+" << length;
  }

  MemoryReader below;
  ComPtr<ReadAheadReader> readAhead = MakeCom<ReadAheadReader>(&below);
};

TEST(ReadAheadReader, RandomReadsAreThoseOfTheReaderBelow) {
  TwoReaders readers;
  std::mt19937 random(3);
  LONGLONG position = 0;
  for (int count = 0; count < 20000; ++count) {
    if (random() % 50 == 0) position = random() % (kStreamSize + 5000);
    const LONG length = random() % 100 == 0 ? static_cast<LONG>(random() % 300000) : static_cast<LONG>(random() % 300);
    readers.ExpectSame(position, length);
    position += length;
  }
}

TEST(ReadAheadReader, EndOfTheStreamIsShortAlikeAlsoAfterItGrew) {
  TwoReaders readers(10000);
  for (LONGLONG position = 9980; position < 10020; ++position) readers.ExpectSame(position, 16);
  readers.ExpectSame(0, 20000);
  readers.ExpectSame(9990, 20);
  const ByteString more = Noise(5000, 4);
  readers.below.bytes.insert(readers.below.bytes.end(), more.begin(), more.end());
  readers.ExpectSame(9990, 20);
  readers.ExpectSame(10010, 100);
  readers.below.reportedLength = 15000;
  readers.ExpectSame(10110, 100);
  readers.ExpectSame(10210, 100);
}

// The walk often looks a few bytes ahead of what it reads. First reads and jumps ask for little.
TEST(ReadAheadReader, ReadsBelowAreFewWhereItGoesOnAndSmallWhereItJumps) {
  BYTE bytes[64];
  for (const LONG lookAhead : {0, 64}) {
    TwoReaders readers;
    for (LONGLONG position = 0; position + 64 <= static_cast<LONGLONG>(kStreamSize); position += 16) {
      ASSERT_EQ(readers.readAhead->SyncRead(position, lookAhead, bytes), S_OK);
      ASSERT_EQ(readers.readAhead->SyncRead(position, 16, bytes), S_OK);
    }
    EXPECT_LT(readers.below.reads, 16);
    EXPECT_EQ(readers.below.largestRead, ReadAheadReader::kLargestWindow);
  }
  TwoReaders readers;
  for (LONGLONG count = 0; count < 100; ++count) readers.readAhead->SyncRead(count * 1234567 % 3000000, 16, bytes);
  EXPECT_EQ(readers.below.largestRead, ReadAheadReader::kSmallestWindow);
}

// The flush arrives while the reader below is inside a read, which then comes back with data.
TEST(ReadAheadReader, AFlushWaitsForNoReadAndFailsNewOnesAlsoOfBytesReadAhead) {
  TwoReaders readers;
  readers.below.onRead = [&] { readers.readAhead->BeginFlush(); };
  BYTE bytes[16];
  EXPECT_EQ(readers.readAhead->SyncRead(0, 16, bytes), S_OK);
  EXPECT_EQ(readers.below.beginFlushes, 1);
  for (const LONGLONG position : {16, 1000000}) {
    EXPECT_EQ(readers.readAhead->SyncRead(position, 16, bytes), VFW_E_WRONG_STATE);
  }
  readers.below.onRead = nullptr;
  EXPECT_EQ(readers.readAhead->EndFlush(), S_OK);
  EXPECT_EQ(readers.below.endFlushes, 1);
  readers.ExpectSame(16, 16);
}

// What the reader does not give is zero, also when the stream is shorter than it said.
TEST(AsyncCallback, ShortReadCountsWholeAndEndsInZeros) {
  for (const std::size_t shrunk : {100U, 50U}) {
    MemoryReader reader(Noise(100, 1));
    CAsyncCallback callback;
    callback.Attach(&reader);
    reader.bytes.resize(shrunk);
    callback.setFilePointer(static_cast<std::int64_t>(shrunk) - 2);
    ByteString buffer(4, 1);
    EXPECT_EQ(callback.read(buffer.data(), 4), 4U);
    EXPECT_EQ(callback.getFilePointer(), shrunk + 2);
    EXPECT_EQ(buffer, (ByteString{reader.bytes[shrunk - 2], reader.bytes[shrunk - 1], 0, 0}));
  }
}

}  // namespace
}  // namespace tarvex::test

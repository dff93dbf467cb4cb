#include "scanner/async_callback.h"

#include <gtest/gtest.h>

#include <array>

#include "framework/message_error.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using libebml::seek_beginning;
using libebml::seek_current;
using libebml::seek_end;

struct Source {
  explicit Source(std::size_t size) : reader(Noise(size, 1)) { callback.Attach(&reader); }

  MemoryReader reader;
  CAsyncCallback callback;
};

TEST(AsyncCallback, WithoutReaderEveryOperationNamesItself) {
  CAsyncCallback callback;
  std::uint8_t byte = 0;
  const char* readText = "<CAsyncCallback::read> invalid pointer to IAsyncReader interface";
  EXPECT_EQ(MessageOf([&] { callback.read(&byte, 1); }), readText);
  EXPECT_EQ(MessageOf([&] { callback.QueryLength(); }), readText);
  EXPECT_EQ(MessageOf([&] { callback.BeginFlush(); }),
            "<CAsyncCallback::BeginFlush> invalid pointer to IAsyncReader interface");
  EXPECT_EQ(MessageOf([&] { callback.EndFlush(); }),
            "<CAsyncCallback::EndFlush> invalid pointer to IAsyncReader interface");
}

TEST(AsyncCallback, FailedReadNamesTheMethodAndKeepsThePosition) {
  Source source(100);
  source.reader.failingRead = 0;
  std::uint8_t byte = 0;
  EXPECT_EQ(MessageOf([&] { source.callback.read(&byte, 1); }),
            "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method");
  EXPECT_EQ(source.callback.getFilePointer(), 0U);
}

TEST(AsyncCallback, SeekFromTheEndSubtracts) {
  Source source(100);
  source.callback.setFilePointer(0, seek_end);
  EXPECT_EQ(source.callback.getFilePointer(), 100U);
  source.callback.setFilePointer(10, seek_end);
  EXPECT_EQ(source.callback.getFilePointer(), 90U);
}

TEST(AsyncCallback, SeekOutsideTheStreamIsRefusedSilently) {
  Source source(100);
  source.callback.setFilePointer(40);
  source.callback.setFilePointer(101, seek_beginning);
  source.callback.setFilePointer(-41, seek_current);
  source.callback.setFilePointer(101, seek_end);
  source.callback.setFilePointer(-1, seek_end);
  source.callback.setFilePointer(std::numeric_limits<std::int64_t>::max(), seek_current);
  EXPECT_EQ(source.callback.getFilePointer(), 40U);
  source.callback.setFilePointer(60, seek_current);
  EXPECT_EQ(source.callback.getFilePointer(), 100U);
}

TEST(AsyncCallback, UnknownSeekModeThrows) {
  Source source(100);
  EXPECT_EQ(MessageOf([&] { source.callback.setFilePointer(0, static_cast<libebml::seek_mode>(3)); }),
            "<CAsyncCallback::setFilePointer> invalid seek mode");
}

TEST(AsyncCallback, ShortReadCountsWholeAndEndsInZeros) {
  Source source(100);
  source.callback.setFilePointer(98);
  std::array<std::uint8_t, 4> buffer = {1, 1, 1, 1};
  EXPECT_EQ(source.callback.read(buffer.data(), 4), 4U);
  EXPECT_EQ(source.callback.getFilePointer(), 102U);
  EXPECT_EQ(buffer[0], source.reader.bytes[98]);
  EXPECT_EQ(buffer[1], source.reader.bytes[99]);
  EXPECT_EQ(buffer[2], 0);
  EXPECT_EQ(buffer[3], 0);
  EXPECT_EQ(source.callback.read(buffer.data(), 4), 0U);
  EXPECT_EQ(source.reader.reads, 1);
}

TEST(AsyncCallback, ReadAtTheEndStillAsksTheReader) {
  Source source(100);
  source.callback.setFilePointer(100);
  std::uint8_t byte = 7;
  EXPECT_EQ(source.callback.read(&byte, 1), 1U);
  EXPECT_EQ(source.reader.reads, 1);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(source.callback.read(&byte, 1), 0U);
  EXPECT_EQ(source.reader.reads, 1);
}

TEST(AsyncCallback, StreamThatShrankEndsInZerosToo) {
  Source source(100);
  source.reader.bytes.resize(50);
  source.callback.setFilePointer(48);
  std::array<std::uint8_t, 4> buffer = {1, 1, 1, 1};
  source.callback.read(buffer.data(), 4);
  EXPECT_EQ(buffer[1], source.reader.bytes[49]);
  EXPECT_EQ(buffer[2], 0);
  EXPECT_EQ(buffer[3], 0);
}

TEST(AsyncCallback, FlushReachesTheReader) {
  Source source(100);
  source.callback.BeginFlush();
  source.callback.EndFlush();
  EXPECT_EQ(source.reader.beginFlushes, 1);
  EXPECT_EQ(source.reader.endFlushes, 1);
}

TEST(AsyncCallback, WritesNothing) {
  Source source(100);
  EXPECT_EQ(source.callback.write("x", 1), 0U);
  EXPECT_EQ(source.callback.getFilePointer(), 0U);
}

}  // namespace
}  // namespace tarvex::test

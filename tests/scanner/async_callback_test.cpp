// The byte source: seeks, short reads, and its texts.
#include "scanner/source/async_callback.h"

#include <gtest/gtest.h>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

struct Source {
  explicit Source(std::size_t size) : reader(Noise(size, 1)) { callback.Attach(&reader); }

  MemoryReader reader;
  CAsyncCallback callback;
};

TEST(AsyncCallback, FailuresNameTheirMethod) {
  CAsyncCallback callback;
  std::uint8_t byte = 0;
  const char* readText = "<CAsyncCallback::read> invalid pointer to IAsyncReader interface";
  EXPECT_EQ(MessageOf([&] { callback.read(&byte, 1); }), readText);
  EXPECT_EQ(MessageOf([&] { callback.QueryLength(); }), readText);
  EXPECT_EQ(MessageOf([&] { callback.BeginFlush(); }),
            "<CAsyncCallback::BeginFlush> invalid pointer to IAsyncReader interface");
  EXPECT_EQ(MessageOf([&] { callback.EndFlush(); }),
            "<CAsyncCallback::EndFlush> invalid pointer to IAsyncReader interface");
  EXPECT_EQ(MessageOf([&] { callback.setFilePointer(0, static_cast<libebml::seek_mode>(3)); }),
            "<CAsyncCallback::setFilePointer> invalid seek mode");
  Source source(100);
  source.reader.failingRead = 0;
  EXPECT_EQ(MessageOf([&] { source.callback.read(&byte, 1); }),
            "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method");
  EXPECT_EQ(source.callback.getFilePointer(), 0U);
}

TEST(AsyncCallback, SeekFromTheEndSubtractsAndSeeksOutsideAreRefusedSilently) {
  Source source(100);
  const struct {
    std::int64_t offset;
    libebml::seek_mode mode;
    std::uint64_t expected;
  } seeks[] = {
      {0, libebml::seek_end, 100},        {60, libebml::seek_end, 40},
      {101, libebml::seek_beginning, 40}, {-41, libebml::seek_current, 40},
      {101, libebml::seek_end, 40},       {-1, libebml::seek_end, 40},
      {60, libebml::seek_current, 100},   {std::numeric_limits<std::int64_t>::max(), libebml::seek_current, 100},
  };
  for (const auto& [offset, mode, expected] : seeks) {
    source.callback.setFilePointer(offset, mode);
    EXPECT_EQ(source.callback.getFilePointer(), expected) << offset << " " << mode;
  }
}

// What the reader does not give is zero, also when the stream is shorter than it said.
TEST(AsyncCallback, ShortReadCountsWholeAndEndsInZeros) {
  for (const std::size_t shrunk : {100U, 50U}) {
    Source source(100);
    source.reader.bytes.resize(shrunk);
    source.callback.setFilePointer(static_cast<std::int64_t>(shrunk) - 2);
    ByteString buffer(4, 1);
    EXPECT_EQ(source.callback.read(buffer.data(), 4), 4U);
    EXPECT_EQ(source.callback.getFilePointer(), shrunk + 2);
    EXPECT_EQ(buffer, (ByteString{source.reader.bytes[shrunk - 2], source.reader.bytes[shrunk - 1], 0, 0}));
  }
}

TEST(AsyncCallback, ReadAtTheEndStillAsksTheReader) {
  Source source(100);
  source.callback.setFilePointer(100);
  std::uint8_t byte = 7;
  EXPECT_EQ(source.callback.read(&byte, 1), 1U);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(source.callback.read(&byte, 1), 0U);
  EXPECT_EQ(source.reader.reads, 1);
}

}  // namespace
}  // namespace tarvex::test

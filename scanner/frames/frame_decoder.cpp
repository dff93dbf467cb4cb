#include "scanner/frames/frame_decoder.h"

#include <algorithm>

#include "scanner/limits.h"

namespace tarvex {

namespace {

// Bytes asked of zlib at a time; when fewer come, that was the end.
constexpr std::size_t kChunk = 16384;
constexpr std::size_t kMostInflated = limits::kInflatedFrame + kChunk;

}  // namespace

void FrameDecoder::EndInflate::operator()(z_stream* stream) const noexcept {
  inflateEnd(stream);
  const std::unique_ptr<z_stream> owner(stream);
}

// Keeps the bytes that are there.
void FrameDecoder::MakeRoom(std::size_t size) {
  if (size <= m_bytes.size()) return;
  const std::size_t room = std::max(size, std::min(m_bytes.size() * 2, kMostInflated));
  m_bytes.reserve(room);  // no more than that
  m_bytes.resize(room);
}

bool FrameDecoder::RestoreHeader(std::span<const std::uint8_t> settings, std::span<const std::uint8_t> frame) {
  if (settings.size() > limits::kFrame || frame.size() > limits::kFrame - settings.size()) return false;
  m_size = settings.size() + frame.size();
  MakeRoom(m_size);
  std::ranges::copy(frame, std::ranges::copy(settings, m_bytes.begin()).out);
  return true;
}

bool FrameDecoder::BeginInflate(std::span<const std::uint8_t> frame) {
  if (m_stream) {
    if (inflateReset(m_stream.get()) != Z_OK) return false;
  } else {
    auto stream = std::make_unique<z_stream>();
    if (inflateInit_(stream.get(), "1.2.5", static_cast<int>(sizeof(z_stream))) != Z_OK) return false;
    m_stream.reset(stream.release());
  }
  m_stream->next_in = const_cast<Bytef*>(frame.data());  // zlib does not write there
  m_stream->avail_in = static_cast<uInt>(frame.size());
  return true;
}

bool FrameDecoder::Inflate(std::span<const std::uint8_t> frame) {
  if (frame.empty() || !BeginInflate(frame)) return false;
  for (m_size = 0;;) {
    MakeRoom(m_size + kChunk);
    m_stream->next_out = m_bytes.data() + m_size;
    m_stream->avail_out = static_cast<uInt>(kChunk);
    const int result = inflate(m_stream.get(), Z_NO_FLUSH);
    if (result == Z_NEED_DICT || result == Z_DATA_ERROR || result == Z_MEM_ERROR) return false;
    m_size += kChunk - m_stream->avail_out;
    if (m_stream->avail_out != 0 || m_size >= limits::kInflatedFrame) return true;
  }
}

bool FrameDecoder::Decode(const CHeap* track, FrameInfo& frame) {
  constexpr std::uint64_t kZlib = 0;
  constexpr std::uint64_t kHeaderStripping = 3;
  if (track == nullptr) return false;
  const auto algorithm = track->Unsigned("KaxContentCompAlgo");
  if (!algorithm) return false;
  const std::span<const std::uint8_t> bytes(frame.data, frame.size);
  bool isDecoded = false;
  if (*algorithm == kZlib) isDecoded = Inflate(bytes);
  if (*algorithm == kHeaderStripping) {
    const auto settings = track->Binary("KaxContentCompSettings");
    isDecoded = settings && RestoreHeader(*settings, bytes);
  }
  if (!isDecoded) return false;
  frame.data = m_bytes.data();
  frame.size = static_cast<std::uint32_t>(m_size);
  return true;
}

}  // namespace tarvex

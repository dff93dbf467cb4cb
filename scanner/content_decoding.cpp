#include "scanner/content_decoding.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>

#include "scanner/limits.h"

namespace tarvex {

namespace {

class CInflater {
 public:
  explicit CInflater(std::span<const std::uint8_t> input) {
    m_stream.next_in = const_cast<Bytef*>(input.data());  // zlib does not write there
    m_stream.avail_in = static_cast<uInt>(input.size());
    m_ready = inflateInit_(&m_stream, "1.2.5", static_cast<int>(sizeof(m_stream))) == Z_OK;
  }
  CInflater(const CInflater&) = delete;
  CInflater& operator=(const CInflater&) = delete;
  ~CInflater() {
    if (m_ready) inflateEnd(&m_stream);
  }

  bool Ready() const { return m_ready; }

  /// Bytes put into `output`; nothing when the input is corrupt.
  std::optional<std::size_t> Fill(std::span<std::uint8_t> output) {
    m_stream.next_out = output.data();
    m_stream.avail_out = static_cast<uInt>(output.size());
    const int result = inflate(&m_stream, Z_NO_FLUSH);
    if (result == Z_NEED_DICT || result == Z_DATA_ERROR || result == Z_MEM_ERROR) return std::nullopt;
    return output.size() - m_stream.avail_out;
  }

 private:
  z_stream m_stream{};
  bool m_ready = false;
};

bool Replace(std::optional<DecodedFrame> decoded, FrameInfo& frame, DecodedFrame& owner) {
  if (!decoded) return false;
  owner = std::move(*decoded);
  frame.data = owner.Bytes().data();
  frame.size = static_cast<std::uint32_t>(owner.Bytes().size());
  return true;
}

}  // namespace

void DecodedFrame::Resize(std::size_t size) {
  if (size == 0) {
    m_data.reset();
  } else {
    auto* data = static_cast<std::uint8_t*>(std::realloc(m_data.get(), size));
    if (data == nullptr) throw std::bad_alloc();
    static_cast<void>(m_data.release());  // realloc has taken it over
    m_data.reset(data);
  }
  m_size = size;
}

std::optional<DecodedFrame> RestoreHeader(std::span<const std::uint8_t> settings, std::span<const std::uint8_t> frame) {
  if (settings.size() > limits::kFrame || frame.size() > limits::kFrame - settings.size()) return std::nullopt;
  DecodedFrame decoded;
  decoded.Resize(settings.size() + frame.size());
  std::copy(frame.begin(), frame.end(), std::copy(settings.begin(), settings.end(), decoded.Data()));
  return decoded;
}

std::optional<DecodedFrame> Inflate(std::span<const std::uint8_t> frame) {
  CInflater inflater(frame);
  if (!inflater.Ready() || frame.empty()) return std::nullopt;
  DecodedFrame decoded;
  std::array<std::uint8_t, 16384> chunk{};
  for (;;) {
    const auto produced = inflater.Fill(chunk);
    const std::size_t before = decoded.Bytes().size();
    if (!produced) return std::nullopt;
    // Exactly what there is: a frame that inflates to little must not hold much.
    decoded.Resize(before + *produced);
    std::copy_n(chunk.begin(), *produced, decoded.Data() + before);
    if (*produced < chunk.size() || decoded.Bytes().size() >= limits::kInflatedFrame) return decoded;
  }
}

bool DecodeFrame(const CHeap* track, FrameInfo& frame, DecodedFrame& owner) {
  constexpr std::uint64_t kZlib = 0;
  constexpr std::uint64_t kHeaderStripping = 3;
  if (track == nullptr) return false;
  const auto algorithm = track->Unsigned("KaxContentCompAlgo");
  if (!algorithm) return false;
  const std::span<const std::uint8_t> bytes(frame.data, frame.size);
  if (*algorithm == kZlib) return Replace(Inflate(bytes), frame, owner);
  if (*algorithm != kHeaderStripping) return false;
  const auto settings = track->Binary("KaxContentCompSettings");
  return settings && Replace(RestoreHeader(*settings, bytes), frame, owner);
}

}  // namespace tarvex

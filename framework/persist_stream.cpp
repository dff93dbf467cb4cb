// The version header of saved settings and the dirty flag.
#include "framework/persist_stream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "framework/com_boundary.h"

namespace tarvex {

namespace {

// Eleven decimal digits and a blank.
constexpr std::size_t kDigits = 11;
using Header = std::array<OLECHAR, kDigits + 1>;
static_assert(sizeof(Header) == 24);

Header HeaderOf(DWORD version) {
  Header header{};
  header.fill(static_cast<OLECHAR>('0'));
  header[kDigits] = static_cast<OLECHAR>(' ');
  for (std::size_t i = kDigits; version != 0; version /= 10) header[--i] = static_cast<OLECHAR>('0' + version % 10);
  return header;
}

std::optional<DWORD> VersionIn(const Header& header) {
  std::uint64_t version = 0;
  for (std::size_t i = 0; i < kDigits; ++i) {
    if (header[i] < '0' || header[i] > '9') return std::nullopt;
    version = version * 10 + static_cast<std::uint64_t>(header[i] - '0');
  }
  if (header[kDigits] != ' ' || version > 0xFFFFFFFFu) return std::nullopt;
  return static_cast<DWORD>(version);
}

}  // namespace

HRESULT CPersistStream::Load(IStream* stream) noexcept {
  if (stream == nullptr) return E_POINTER;
  Header header{};
  HRESULT hr = ReadExact(stream, header.data(), sizeof(header));
  if (FAILED(hr)) return hr;
  const bool wasDirty = m_dirty.exchange(false);
  hr = ComBoundary([&] {
    const auto version = VersionIn(header);
    if (!version || *version > GetSoftwareVersion()) return VFW_E_INVALID_FILE_VERSION;
    return ReadFromStream(stream);
  });
  if (FAILED(hr) && wasDirty) m_dirty = true;
  return hr;
}

HRESULT CPersistStream::Save(IStream* stream, BOOL clearDirty) noexcept {
  if (stream == nullptr) return E_POINTER;
  const bool wasDirty = clearDirty != FALSE && m_dirty.exchange(false);
  const HRESULT hr = ComBoundary([&] {
    const Header header = HeaderOf(GetSoftwareVersion());
    const HRESULT written = WriteExact(stream, header.data(), sizeof(header));
    return FAILED(written) ? written : WriteToStream(stream);
  });
  if (FAILED(hr) && wasDirty) m_dirty = true;
  return hr;
}

HRESULT CPersistStream::GetSizeMax(ULARGE_INTEGER* size) noexcept {
  if (size == nullptr) return E_POINTER;
  return ComBoundary([&] {
    size->QuadPart = sizeof(Header) + static_cast<ULONGLONG>(std::max(SizeMax(), 0));
    return S_OK;
  });
}

HRESULT CPersistStream::ReadExact(IStream* stream, void* bytes, ULONG count) noexcept {
  ULONG read = 0;
  const HRESULT hr = stream->Read(bytes, count, &read);
  if (FAILED(hr)) return hr;
  return read == count ? S_OK : HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
}

HRESULT CPersistStream::WriteExact(IStream* stream, const void* bytes, ULONG count) noexcept {
  ULONG written = 0;
  const HRESULT hr = stream->Write(bytes, count, &written);
  if (FAILED(hr)) return hr;
  return written == count ? S_OK : E_FAIL;
}

}  // namespace tarvex

// A stream over bytes in memory for the tests of persistence. Owned by one test through ComPtr.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "framework/unknown.h"

namespace tarvex::test {

class MemoryStream : public UnknownImpl<IStream> {
 public:
  explicit MemoryStream(std::vector<std::uint8_t> content = {})
      : UnknownImpl("MemoryStream", nullptr), bytes(std::move(content)) {}

  HRESULT STDMETHODCALLTYPE Read(void* out, ULONG count, ULONG* read) override {
    const std::size_t given = std::min<std::size_t>(count, bytes.size() - m_position);
    if (given != 0) std::memcpy(out, bytes.data() + m_position, given);
    m_position += given;
    if (read != nullptr) *read = static_cast<ULONG>(given);
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG count, ULONG* written) override {
    if (bytes.size() + count > capacity) return kFull;
    const auto* first = static_cast<const std::uint8_t*>(data);
    bytes.insert(bytes.end(), first, first + count);
    if (written != nullptr) *written = count;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  std::vector<std::uint8_t> bytes;
  std::size_t capacity = 1024;  ///< writes beyond it fail

 private:
  static constexpr HRESULT kFull = static_cast<HRESULT>(0x80030070);
  std::size_t m_position = 0;
};

}  // namespace tarvex::test

// A stream over bytes in memory for the tests of persistence. Owned by one test through ComPtr.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "framework/unknown.h"

namespace tarvex::test {

class MemoryStream final : public UnknownImpl<IStream> {
 public:
  explicit MemoryStream(std::vector<std::uint8_t> content = {})
      : UnknownImpl("MemoryStream", nullptr), bytes(std::move(content)) {}

  HRESULT STDMETHODCALLTYPE Read(void* out, ULONG count, ULONG* read) override {
    const std::size_t given = std::min<std::size_t>(count, bytes.size() - m_position);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(m_position), given, static_cast<std::uint8_t*>(out));
    m_position += given;
    *read = static_cast<ULONG>(given);
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG count, ULONG* written) override {
    const auto* first = static_cast<const std::uint8_t*>(data);
    bytes.insert(bytes.end(), first, first + count);
    *written = count;
    return afterEachWrite ? afterEachWrite() : S_OK;
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
  std::function<HRESULT()> afterEachWrite;  ///< the write's answer

 private:
  std::size_t m_position = 0;
};

}  // namespace tarvex::test

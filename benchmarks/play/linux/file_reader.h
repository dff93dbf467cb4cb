// An IAsyncReader over a file, by pread: what the platform's file source is where there is one. Made for
// one playback, owned through ComPtr; read on the splitter's threads.
#pragma once

#include <string>

#include "framework/unknown.h"

namespace tarvex::bench {

class FileReader : public UnknownImpl<IAsyncReader> {
 public:
  /// Throws std::runtime_error when the file cannot be opened.
  explicit FileReader(const std::string& path);
  ~FileReader() override;
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  /// S_FALSE when the file ends before the bytes do.
  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample*) override { return E_NOTIMPL; }

 private:
  const int m_file;
  LONGLONG m_length = 0;
};

}  // namespace tarvex::bench

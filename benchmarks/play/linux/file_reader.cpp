// See file_reader.h.
#include "benchmarks/play/linux/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace tarvex::bench {

FileReader::FileReader(const std::string& path)
    : UnknownImpl("FileReader", nullptr), m_file(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  struct stat status {};
  if (m_file < 0 || ::fstat(m_file, &status) != 0) throw std::runtime_error("cannot read " + path);
  m_length = status.st_size;
}

FileReader::~FileReader() { ::close(m_file); }

HRESULT STDMETHODCALLTYPE FileReader::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE FileReader::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  if (llPosition < 0 || lLength < 0) return E_INVALIDARG;
  LONG done = 0;
  while (done < lLength) {
    const ssize_t count = ::pread(m_file, pBuffer + done, static_cast<std::size_t>(lLength - done), llPosition + done);
    if (count < 0) return E_FAIL;
    if (count == 0) return S_FALSE;
    done += static_cast<LONG>(count);
  }
  return S_OK;
}

HRESULT STDMETHODCALLTYPE FileReader::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  if (pTotal != nullptr) *pTotal = m_length;
  if (pAvailable != nullptr) *pAvailable = m_length;
  return S_OK;
}

}  // namespace tarvex::bench

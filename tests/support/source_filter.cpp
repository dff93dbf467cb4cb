// See source_filter.h.
#include "tests/support/source_filter.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace tarvex::test {

std::vector<std::uint8_t> ReadWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.tellg()));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

ComPtr<SourceFilter> SourceFilter::FromBytes(std::vector<std::uint8_t> bytes) {
  const auto size = static_cast<LONGLONG>(bytes.size());
  Parts parts;
  parts.emplace(0, std::move(bytes));
  return FromParts(std::move(parts), size);
}

ComPtr<SourceFilter> SourceFilter::FromParts(Parts parts, LONGLONG size) {
  return ComPtr<SourceFilter>(new SourceFilter(std::move(parts), size));
}

void SourceFilter::Arrive(LONGLONG size, LONGLONG estimate) {
  m_pin.reportedLength = estimate != 0 ? estimate : m_pin.size.load();
  m_pin.arrived = size;
}

HRESULT STDMETHODCALLTYPE SourcePin::QueryInterface(REFIID iid, void** out) {
  if (iid != IID_IAsyncReader) return PlainPin::QueryInterface(iid, out);
  *out = static_cast<IAsyncReader*>(this);
  AddRef();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SourcePin::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  const HRESULT result = MemoryReader::SyncRead(llPosition, lLength, pBuffer);
  if (!hadTwoAtOnce) return result;
  std::fputs("two reads at a time of a source that is not the platform's own\n", stderr);
  std::abort();
}

}  // namespace tarvex::test

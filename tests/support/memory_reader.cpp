// See memory_reader.h.
#include "tests/support/memory_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarvex::test {

MemoryReader::MemoryReader(std::vector<std::uint8_t> content) : size(0) {
  bytes = std::move(content);
  reportedLength = static_cast<LONGLONG>(bytes.size());
}

MemoryReader::MemoryReader(Parts parts, LONGLONG total)
    : m_parts(std::move(parts)), size(total), reportedLength(total) {}

LONGLONG MemoryReader::Size() const { return size != 0 ? size.load() : static_cast<LONGLONG>(bytes.size()); }

HRESULT STDMETHODCALLTYPE MemoryReader::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  ++reads;
  if (m_inside++ != 0) hadTwoAtOnce = true;
  const HRESULT result = Read(llPosition, lLength, pBuffer);
  --m_inside;
  return result;
}

HRESULT MemoryReader::Read(LONGLONG position, LONG length, BYTE* buffer) {
  LONG largest = largestRead;
  while (length > largest && !largestRead.compare_exchange_weak(largest, length)) {
  }
  if (onRead) onRead();
  if (position < 0 || length < 0) return E_INVALIDARG;
  const HRESULT answer = fault ? fault() : S_OK;
  if (FAILED(answer)) return answer;
  if (brokenFrom >= 0 && position + length > brokenFrom) {
    ++brokenReads;
    return E_FAIL;
  }
  const auto isThere = [&] { return std::min(position + length, Size()) <= arrived; };
  bool isFlushed = false;
  while (!isThere() && !isFlushed) {
    isWaiting = true;
    isFlushed = flushing.Wait(2);  // milliseconds between looks at either
  }
  isWaiting = false;
  if (isFlushed) return VFW_E_WRONG_STATE;
  if (answer == S_OK) return Copy(position, length, buffer);
  Copy(position, length / 2, buffer);
  return S_FALSE;
}

HRESULT MemoryReader::Copy(LONGLONG position, LONG length, BYTE* buffer) const {
  const LONGLONG end = position + std::clamp<LONGLONG>(Size() - position, 0, length);
  const bool isWhole = end == position + length;
  if (!isWhole && FAILED(answerAtTheEnd)) return answerAtTheEnd;
  std::fill_n(buffer, end - position, BYTE{0});  // of an empty read nobody needs a buffer
  auto part = m_parts.upper_bound(position);
  if (part != m_parts.begin()) --part;
  for (; part != m_parts.end() && part->first < end; ++part) {
    const LONGLONG from = std::max(part->first, position);
    const LONGLONG to = std::min(part->first + static_cast<LONGLONG>(part->second.size()), end);
    if (from >= to) continue;
    std::memcpy(buffer + (from - position), part->second.data() + (from - part->first),
                static_cast<std::size_t>(to - from));
  }
  return isWhole ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE MemoryReader::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  const HRESULT answer = fault ? fault() : S_OK;
  if (FAILED(answer)) return answer;
  const LONGLONG total = reportedLength;
  if (pTotal != nullptr) *pTotal = total;
  if (pAvailable != nullptr) *pAvailable = std::min(total, arrived.load());
  return arrived < total ? VFW_S_ESTIMATED : S_OK;
}

HRESULT STDMETHODCALLTYPE MemoryReader::BeginFlush() {
  ++beginFlushes;
  flushing.Set();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE MemoryReader::EndFlush() {
  ++endFlushes;
  flushing.Clear();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE MemoryReader::QueryInterface(REFIID riid, void** ppvObject) {
  const bool isOurs = riid == IID_IUnknown || riid == IID_IAsyncReader;
  *ppvObject = isOurs ? static_cast<IAsyncReader*>(this) : nullptr;
  return isOurs ? S_OK : E_NOINTERFACE;
}

}  // namespace tarvex::test

// See memory_reader.h.
#include "tests/support/memory_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarvex::test {
namespace {

constexpr DWORD kPollInterval = 2;  // milliseconds between looks at two events

bool IsReached(std::int64_t number, std::int64_t first) { return first >= 0 && number >= first; }

}  // namespace

MemoryReader::MemoryReader(std::vector<std::uint8_t> content) : size(0) {
  bytes = std::move(content);
  reportedLength = static_cast<LONGLONG>(bytes.size());
}

MemoryReader::MemoryReader(Parts parts, LONGLONG total)
    : m_parts(std::move(parts)), size(total), reportedLength(total) {}

LONGLONG MemoryReader::Size() const { return size != 0 ? size.load() : static_cast<LONGLONG>(bytes.size()); }

HRESULT STDMETHODCALLTYPE MemoryReader::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  const std::int64_t number = reads++;
  if (m_inside++ != 0) hadTwoAtOnce = true;
  const HRESULT result = Read(number, llPosition, lLength, pBuffer);
  --m_inside;
  return result;
}

HRESULT MemoryReader::Read(std::int64_t number, LONGLONG position, LONG length, BYTE* buffer) {
  LONG largest = largestRead;
  while (length > largest && !largestRead.compare_exchange_weak(largest, length)) {
  }
  if (onRead) onRead();
  if (position < 0 || length < 0) return E_INVALIDARG;
  if (IsReached(number, failingRead)) return failure;
  if (IsReached(number, blockingRead)) {
    blocked.Set();
    if (!WaitUntil([this] { return unblocked.Wait(0); })) return VFW_E_WRONG_STATE;
  }
  const HRESULT answer = fault ? fault() : S_OK;
  if (FAILED(answer)) return answer;
  if (brokenFrom >= 0 && position + length > brokenFrom) {
    ++brokenReads;
    return E_FAIL;
  }
  const auto isThere = [&] { return std::min(position + length, Size()) <= arrived; };
  isWaiting = !isThere();
  const bool came = WaitUntil(isThere);
  isWaiting = false;
  if (!came) return VFW_E_WRONG_STATE;
  if (answer == S_OK) return Copy(position, length, buffer);
  Copy(position, length / 2, buffer);
  return S_FALSE;
}

// False when a flush came first.
template <class Condition>
bool MemoryReader::WaitUntil(Condition isDone) {
  while (!isDone()) {
    if (flushing.Wait(kPollInterval)) return false;
  }
  return true;
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

// See source_filter.h.
#include "tests/support/source_filter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace tarvex::test {
namespace {

// {2B0A2C2E-0B1C-4D52-8A4B-4C3B5B1D7A31}
constexpr GUID kSourceClass = {0x2B0A2C2E, 0x0B1C, 0x4D52, {0x8A, 0x4B, 0x4C, 0x3B, 0x5B, 0x1D, 0x7A, 0x31}};
constexpr DWORD kPollInterval = 2;  // milliseconds between looks at two events

}  // namespace

std::vector<std::uint8_t> ReadWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.tellg()));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

ComPtr<SourceFilter> SourceFilter::FromFile(const std::string& path) { return FromBytes(ReadWholeFile(path)); }

ComPtr<SourceFilter> SourceFilter::FromBytes(std::vector<std::uint8_t> bytes) {
  const auto size = static_cast<LONGLONG>(bytes.size());
  Parts parts;
  parts.emplace(0, std::move(bytes));
  return FromParts(std::move(parts), size);
}

ComPtr<SourceFilter> SourceFilter::FromParts(Parts parts, LONGLONG size) {
  return ComPtr<SourceFilter>(new SourceFilter(std::move(parts), size));
}

SourceFilter::SourceFilter(Parts parts, LONGLONG size)
    : CBaseFilter("SourceFilter", nullptr, &m_filterLock, kSourceClass),
      m_parts(std::move(parts)),
      m_size(size),
      m_pin(new SourcePin(this, &m_filterLock)) {}

SourceFilter::~SourceFilter() = default;

CBasePin* SourceFilter::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

void SourceFilter::FailFrom(int read, HRESULT result) {
  m_failure = result;
  m_failFrom = m_reads + read;
}

void SourceFilter::BlockFrom(int read, bool ignoreFlush) {
  m_ignoreFlush = ignoreFlush;
  m_unblocked.Clear();
  m_blocked.Clear();
  m_blockFrom = m_reads + read;
}

/// A read, from construction to destruction.
class SourceFilter::ReadInProgress {
 public:
  explicit ReadInProgress(SourceFilter& source) : m_source(source) {
    if (!m_source.m_isReading.exchange(true)) return;
    std::fputs("two reads at a time of a source that is not the platform's own\n", stderr);
    std::abort();
  }
  ~ReadInProgress() { m_source.m_isReading = false; }
  ReadInProgress(const ReadInProgress&) = delete;
  ReadInProgress& operator=(const ReadInProgress&) = delete;

 private:
  SourceFilter& m_source;
};

HRESULT SourceFilter::Read(LONGLONG position, LONG length, BYTE* buffer) {
  const ReadInProgress read(*this);
  const HRESULT result = Gate(m_reads++);
  if (FAILED(result)) return result;
  const HRESULT fault = m_fault ? m_fault() : S_OK;
  if (FAILED(fault)) return fault;
  if (!WaitFor(position + length)) return VFW_E_WRONG_STATE;
  if (fault == S_OK) return Copy(position, length, buffer);
  Copy(position, length / 2, buffer);
  return S_FALSE;
}

// What stands between a read and its bytes.
HRESULT SourceFilter::Gate(int number) {
  if (number >= m_failFrom) return m_failure;
  if (number < m_blockFrom) return S_OK;
  m_blocked.Set();
  while (!m_unblocked.Wait(kPollInterval)) {
    if (!m_ignoreFlush && m_flushing.Wait(0)) return VFW_E_WRONG_STATE;
  }
  return S_OK;
}

// False when a flush came first.
bool SourceFilter::WaitFor(LONGLONG end) {
  while (std::min(end, m_size.load()) > m_arrived) {
    m_isWaiting = true;
    if (m_flushing.Wait(kPollInterval)) break;
  }
  m_isWaiting = false;
  return std::min(end, m_size.load()) <= m_arrived;
}

HRESULT SourceFilter::Copy(LONGLONG position, LONG length, BYTE* buffer) const {
  if (position < 0 || length < 0) return E_INVALIDARG;
  const LONGLONG end = position + std::clamp<LONGLONG>(m_size - position, 0, length);
  const bool isWhole = end == position + length;
  if (!isWhole && FAILED(m_answerAtTheEnd)) return m_answerAtTheEnd;
  std::memset(buffer, 0, static_cast<std::size_t>(end - position));
  auto part = m_parts.upper_bound(position);
  if (part != m_parts.begin()) --part;
  for (; part != m_parts.end() && part->first < end; ++part) {
    const auto& [start, bytes] = *part;
    const LONGLONG from = std::max(start, position);
    const LONGLONG to = std::min(start + static_cast<LONGLONG>(bytes.size()), end);
    if (from >= to) continue;
    std::memcpy(buffer + (from - position), bytes.data() + (from - start), static_cast<std::size_t>(to - from));
  }
  return isWhole ? S_OK : S_FALSE;
}

void SourceFilter::BeginFlush() {
  ++m_flushes;
  m_flushing.Set();
}

void SourceFilter::EndFlush() { m_flushing.Clear(); }

SourcePin::SourcePin(SourceFilter* filter, CCritSec* lock)
    : CBasePin("SourcePin", filter, lock, OLESTR("Output"), PINDIR_OUTPUT), m_source(*filter) {}

HRESULT STDMETHODCALLTYPE SourcePin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader && !m_hidden) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  return CBasePin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE SourcePin::QueryInterface(REFIID iid, void** out) {
  return CBasePin::QueryInterface(iid, out);
}

ULONG STDMETHODCALLTYPE SourcePin::AddRef() { return CBasePin::AddRef(); }

ULONG STDMETHODCALLTYPE SourcePin::Release() { return CBasePin::Release(); }

HRESULT SourcePin::CheckMediaType(const CMediaType* type) {
  return type->majortype == MEDIATYPE_Stream ? S_OK : S_FALSE;
}

HRESULT SourcePin::GetMediaType(int position, CMediaType* type) {
  if (position != 0 || m_typeless) return VFW_S_NO_MORE_ITEMS;
  *type = CMediaType(MEDIATYPE_Stream);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SourcePin::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  return m_source.Read(llPosition, lLength, pBuffer);
}

HRESULT STDMETHODCALLTYPE SourcePin::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  const HRESULT fault = m_source.m_fault ? m_source.m_fault() : S_OK;
  if (FAILED(fault)) return fault;
  const LONGLONG length = m_source.m_size;
  const LONGLONG available = std::min(length, m_source.m_arrived.load());
  const LONGLONG estimate = m_source.m_estimate;
  if (pTotal != nullptr) *pTotal = available < length && estimate != 0 ? estimate : length;
  if (pAvailable != nullptr) *pAvailable = available;
  return available < length ? VFW_S_ESTIMATED : S_OK;
}

HRESULT STDMETHODCALLTYPE SourcePin::BeginFlush() {
  m_source.BeginFlush();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SourcePin::EndFlush() {
  m_source.EndFlush();
  return S_OK;
}

}  // namespace tarvex::test

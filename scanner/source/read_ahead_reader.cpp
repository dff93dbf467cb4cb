#include "scanner/source/read_ahead_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "framework/com_boundary.h"
#include "framework/condition_variable.h"
#include "scanner/source/serial_reader.h"

namespace tarvex {

namespace {

constexpr LONG kLargestSkip = 64 * 1024;
constexpr LONGLONG kLastPosition = std::numeric_limits<LONGLONG>::max();

ComPtr<IAsyncReader> Below(IAsyncReader* upstream, SourceReads reads) {
  if (reads == SourceReads::kSeveralAtATime) return ComPtr<IAsyncReader>(upstream);
  return MakeCom<SerialReader>(upstream);
}

}  // namespace

ReadAheadReader::ReadAheadReader(IAsyncReader* upstream, SourceReads reads, std::function<void()> beforeRead)
    : UnknownImpl("ReadAheadReader", nullptr),
      m_sourceReads(reads),
      m_upstream(Below(upstream, reads)),
      m_beforeRead(std::move(beforeRead)),
      m_prefetcher(m_upstream.Get(), kLargestWindow) {}

HRESULT ReadAheadReader::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader && out != nullptr) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  if (iid == kClass && out != nullptr) {
    AddRef();
    *out = this;
    return S_OK;
  }
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT ReadAheadReader::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  const bool sensible = llPosition >= 0 && lLength >= 0 && llPosition <= kLastPosition - lLength && pBuffer != nullptr;
  if (!sensible) return ReadBelow(llPosition, lLength, pBuffer);
  if (m_flushing.load(std::memory_order_acquire)) return VFW_E_WRONG_STATE;
  if (lLength == 0 && llPosition < m_knownEnd) return S_OK;
  const LONG taken = TakeFromWindow(llPosition, lLength, pBuffer);
  if (taken == lLength) return S_OK;
  return ReadMissing(llPosition + taken, lLength - taken, pBuffer + taken);
}

HRESULT ReadAheadReader::ReadBelow(LONGLONG position, LONG length, BYTE* buffer) {
  if (m_flushing.load(std::memory_order_acquire)) return VFW_E_WRONG_STATE;
  if (m_beforeRead) m_beforeRead();
  return m_upstream->SyncRead(position, length, buffer);
}

LONG ReadAheadReader::TakeFromWindow(LONGLONG position, LONG length, BYTE* buffer) const noexcept {
  const LONGLONG offset = position - m_windowStart;
  if (offset < 0 || offset >= m_windowBytes || position < m_keptEnd) return 0;
  const LONG taken = static_cast<LONG>(std::min<LONGLONG>(length, m_windowBytes - offset));
  std::memcpy(buffer, m_window + offset, static_cast<std::size_t>(taken));
  return taken;
}

// None of it is in the window.
HRESULT ReadAheadReader::ReadMissing(LONGLONG position, LONG length, BYTE* buffer) {
  AdaptWindow(position);
  if (length < m_windowSize && FillWindow(position, length)) {
    TakeFromWindow(position, length, buffer);
    return S_OK;
  }
  while (length > 0 && TakePrefetched(position, 0)) {
    const LONG taken = TakeFromWindow(position, length, buffer);
    position += taken;
    length -= taken;
    buffer += taken;
  }
  if (length == 0) return S_OK;
  const HRESULT result = ReadBelow(position, length, buffer);
  if (result == S_OK) {
    m_next = position + length;
    m_lastLength = length;
  }
  return result;
}

// A caller that has made a large read and goes on behind it will want more.
void ReadAheadReader::AdaptWindow(LONGLONG position) noexcept {
  constexpr LONG kGrowth = 4;
  const LONG wanted = std::min(std::max(m_windowSize, m_lastLength), kLargestWindow / kGrowth) * kGrowth;
  const bool goesOn = position == m_next || SkipsLittle(position);
  m_windowSize = goesOn ? wanted : kSmallestWindow;
  if (!goesOn) m_sourceIsSlow = false;
}

// A caller that looks at many small things passes over what lies between them.
bool ReadAheadReader::SkipsLittle(LONGLONG position) const noexcept {
  const LONGLONG skipped = position - (m_windowStart + m_windowBytes);
  return m_windowBytes != 0 && skipped >= 0 && skipped <= std::min(m_windowSize, kLargestSkip);
}

// Reads on from the end of the window, also over a small gap in front of `position`, and keeps the window's last bytes:
// a caller that looked a few bytes ahead comes back to them. False: the bytes could not be read ahead, so the reader
// below has to answer for them.
bool ReadAheadReader::FillWindow(LONGLONG position, LONG atLeast) {
  if (!SkipsLittle(position)) return Advance(position, 0, atLeast);
  const LONG tail = std::min(m_windowBytes, kSmallestWindow);
  const LONGLONG end = m_windowStart + m_windowBytes;
  return Advance(end - tail, tail, static_cast<LONG>(position - end) + atLeast);
}

// Afterwards the window begins with the `tail` bytes at `from`, which it has already, and at least `atLeast` more
// follow. False when those could not be read.
bool ReadAheadReader::Advance(LONGLONG from, LONG tail, LONG atLeast) {
  if (TakePrefetched(from, tail)) return m_windowBytes - tail >= atLeast;
  const LONG bytes = BytesToAsk(from + tail, BytesAhead(from + tail, atLeast));
  if (bytes < atLeast || !MoveToFront(from, tail, bytes) || !ReadIntoWindow(bytes)) return false;
  PrefetchOn();
  return true;
}

// Where reading ahead failed, no more is asked for than is needed: a failing read may be slow.
LONG ReadAheadReader::BytesAhead(LONGLONG position, LONG atLeast) const noexcept {
  return IsBroken(position) ? atLeast : std::max(m_windowSize, atLeast);
}

// Reads behind the bytes that are there. A short read counts as a failed one: it does not tell how much came, and there
// may be more next time.
bool ReadAheadReader::ReadIntoWindow(LONG bytes) {
  const LONGLONG position = m_windowStart + m_windowBytes;
  if (ReadBelow(position, bytes, m_window + m_windowBytes) != S_OK) {
    if (m_flushing.load(std::memory_order_acquire)) return false;
    m_brokenBegin = position;
    m_brokenEnd = position + bytes;
    return false;
  }
  m_windowBytes += bytes;
  m_next = position + bytes;
  m_lastLength = bytes;
  return true;
}

bool ReadAheadReader::TakePrefetched(LONGLONG from, LONG tail) {
  const LONGLONG position = from + tail;
  if (position != m_next || tail > kLargestWindow) return false;
  if (m_prefetcher.IsReading(position)) ReadAnother(position);
  Prefetcher::Piece piece;
  if (!m_prefetcher.Take(position, piece)) return false;
  BYTE* const window = m_prefetcher.BytesOf(piece) - tail;
  if (tail != 0) std::memcpy(window, m_window + (from - m_windowStart), static_cast<std::size_t>(tail));
  m_piece = std::move(piece.memory);
  m_window = window;
  ++m_windowNumber;
  m_windowStart = from;
  if (tail == 0) m_keptEnd = 0;
  m_windowBytes = tail + piece.bytes;
  m_next = position + piece.bytes;
  PrefetchOn();
  return true;
}

// While the piece at `position` is being read by the prefetcher, reads the next one here instead of waiting.
void ReadAheadReader::ReadAnother(LONGLONG position) {
  constexpr ULONGLONG kSlow = 100;  // ms: a slower source would hold the caller up for bytes that it does not need yet
  Prefetcher::Piece piece;
  const bool mayRead = m_sourceReads == SourceReads::kSeveralAtATime && !m_sourceIsSlow;
  if (!mayRead || !m_prefetcher.Claim(position, piece)) {
    if (m_beforeRead) m_beforeRead();
    return;
  }
  const ULONGLONG begin = MonotonicMilliseconds();
  const HRESULT result = ComBoundary([&] {
    return piece.memory ? ReadBelow(piece.position, piece.bytes, m_prefetcher.BytesOf(piece)) : E_OUTOFMEMORY;
  });
  m_sourceIsSlow = MonotonicMilliseconds() - begin > kSlow;
  m_prefetcher.Give(std::move(piece), result == S_OK);
}

// Only once the window has grown to its full size, that is after much sequential reading.
void ReadAheadReader::PrefetchOn() {
  if (m_windowSize != kLargestWindow || IsBroken(m_next)) return;
  if (BytesToAsk(m_next, kLargestWindow) > 0) m_prefetcher.Follow(m_next, m_knownEnd);
}

// Afterwards the window begins with the `tail` bytes at `from`, which it has already, and has `room` for more.
bool ReadAheadReader::MoveToFront(LONGLONG from, LONG tail, LONG room) {
  const BYTE* kept = m_window + (tail == 0 ? 0 : from - m_windowStart);
  ++m_windowNumber;
  if (m_capacity < tail + room) {
    const LONG capacity = tail + room + kSmallestWindow;
    std::unique_ptr<BYTE[]> memory(new (std::nothrow) BYTE[static_cast<std::size_t>(capacity)]);
    if (!memory) return false;
    std::copy_n(kept, tail, memory.get());
    m_own = std::move(memory);
    m_capacity = capacity;
  } else if (tail != 0) {
    std::memmove(m_own.get(), kept, static_cast<std::size_t>(tail));
  }
  m_piece = {};
  m_window = m_own.get();
  m_windowStart = from;
  if (tail == 0) m_keptEnd = 0;
  m_windowBytes = tail;
  return true;
}

ComPtr<IUnknown> ReadAheadReader::Keep(std::span<const BYTE> bytes) noexcept {
  const std::less_equal<> isNotAbove;
  const bool isInWindow = m_piece && isNotAbove(m_window, bytes.data()) &&
                          isNotAbove(bytes.data() + bytes.size(), m_window + m_windowBytes);
  if (!isInWindow) return nullptr;
  auto keeper = m_prefetcher.Keep(m_piece);
  if (keeper) m_keptEnd = std::max(m_keptEnd, m_windowStart + (bytes.data() + bytes.size() - m_window));
  return keeper;
}

bool ReadAheadReader::HasInWindow(LONGLONG position, LONG length) const noexcept {
  const LONGLONG offset = position - m_windowStart;
  return offset >= 0 && offset <= m_windowBytes && length <= m_windowBytes - offset && position >= m_keptEnd;
}

std::span<const BYTE> ReadAheadReader::Borrow(LONGLONG position, LONG atLeast, LONG wanted) {
  if (atLeast > kLargestWindow || m_flushing.load(std::memory_order_acquire)) return {};
  if (!HasInWindow(position, atLeast)) {
    const LONGLONG end = m_windowStart + m_windowBytes;
    const LONGLONG from = SkipsLittle(position) ? end : position;
    const LONG tail = HasInWindow(position, 0) ? static_cast<LONG>(end - position) : 0;
    const LONG needed = static_cast<LONG>(position - from) + atLeast - tail;
    AdaptWindow(position + tail);
    m_windowSize = std::clamp(wanted - tail, m_windowSize, kLargestWindow);
    if (needed > kLargestWindow || !Advance(from, tail, needed)) return {};
  }
  return std::span(m_window, static_cast<std::size_t>(m_windowBytes))
      .subspan(static_cast<std::size_t>(position - m_windowStart));
}

// No more than the reader says is available: behind that a read would meet the end of the stream, or wait.
LONG ReadAheadReader::BytesToAsk(LONGLONG position, LONG wanted) {
  if (wanted > m_knownEnd - position) {
    LONGLONG total = 0;
    LONGLONG available = 0;
    m_knownEnd = SUCCEEDED(m_upstream->Length(&total, &available)) ? std::min(total, available) : 0;
  }
  return static_cast<LONG>(std::clamp<LONGLONG>(m_knownEnd - position, 0, wanted));
}

HRESULT ReadAheadReader::BeginFlush() {
  // First, so that no new read begins after the one that the flush ends.
  m_flushing.store(true, std::memory_order_release);
  m_prefetcher.SetFlushing(true);
  return m_upstream->BeginFlush();
}

HRESULT ReadAheadReader::EndFlush() {
  const HRESULT result = m_upstream->EndFlush();
  m_prefetcher.SetFlushing(false);
  m_flushing.store(false, std::memory_order_release);
  return result;
}

HRESULT ReadAheadReader::RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                          IMemAllocator** ppActual) {
  return m_upstream->RequestAllocator(pPreferred, pProps, ppActual);
}

HRESULT ReadAheadReader::Request(IMediaSample* pSample, DWORD_PTR dwUser) {
  return m_upstream->Request(pSample, dwUser);
}

HRESULT ReadAheadReader::WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) {
  return m_upstream->WaitForNext(dwTimeout, ppSample, pdwUser);
}

HRESULT ReadAheadReader::SyncReadAligned(IMediaSample* pSample) { return m_upstream->SyncReadAligned(pSample); }

HRESULT ReadAheadReader::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  return m_upstream->Length(pTotal, pAvailable);
}

}  // namespace tarvex

#include "scanner/source/async_callback.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "scanner/source/read_ahead_reader.h"

namespace tarvex {

namespace {

constexpr const char* kNoReader = "<CAsyncCallback::read> invalid pointer to IAsyncReader interface";
constexpr const char* kReadFailed =
    "<CAsyncCallback::read> failed to read input data using IAsyncReader::SyncRead method";

}  // namespace

void CAsyncCallback::Attach(IAsyncReader* reader) {
  m_reader = reader;
  ComPtr<ReadAheadReader> readAhead;  // counted by whoever counts the reader
  if (reader != nullptr) static_cast<void>(reader->QueryInterface(ReadAheadReader::kClass, readAhead.PutVoid()));
  m_readAhead = readAhead.Get();
  QueryLength();
}

void CAsyncCallback::Detach() noexcept {
  m_reader = nullptr;
  m_readAhead = nullptr;
}

std::span<const std::uint8_t> CAsyncCallback::Borrow(std::uint64_t position, std::size_t atLeast, std::size_t wanted) {
  constexpr std::size_t kMost = static_cast<std::size_t>(ReadAheadReader::kLargestWindow);
  if (m_readAhead == nullptr || atLeast > kMost) return {};
  const auto bytes = m_readAhead->Borrow(static_cast<LONGLONG>(position), static_cast<LONG>(atLeast),
                                         static_cast<LONG>(std::min(wanted, kMost)));
  return bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), m_length - position)));
}

std::uint64_t CAsyncCallback::BorrowNumber() const noexcept {
  return m_readAhead == nullptr ? 0 : m_readAhead->WindowNumber();
}

std::uint64_t CAsyncCallback::QueryLength() {
  if (m_reader == nullptr) throw MessageError(kNoReader);
  LONGLONG total = 0;
  LONGLONG available = 0;
  static_cast<void>(m_reader->Length(&total, &available));  // without a length the stream is empty
  m_length = static_cast<std::uint64_t>(std::max<LONGLONG>(total, 0));
  return m_length;
}

bool CAsyncCallback::HasArrived(std::uint64_t position) const {
  LONGLONG total = 0;
  LONGLONG available = 0;
  if (m_reader == nullptr || FAILED(m_reader->Length(&total, &available))) return true;
  return available >= total || static_cast<LONGLONG>(position) < available;
}

std::uint32_t CAsyncCallback::read(void* buffer, std::size_t size) {
  if (m_reader == nullptr) throw MessageError(kNoReader);
  if (m_position > m_length) return 0;
  if (size > static_cast<std::size_t>(std::numeric_limits<LONG>::max())) throw MessageError(kReadFailed);
  if (size > m_length - m_position) std::memset(buffer, 0, size);
  if (!ReadWhole(buffer, static_cast<LONG>(size))) {
    // A failed read does not say how many bytes came. So the bytes that exist are read again, over zeros.
    std::memset(buffer, 0, size);
    const LONG there = BytesThere(static_cast<LONG>(size));
    if (there != 0) ReadWhole(buffer, there);
  }
  m_position += size;
  return static_cast<std::uint32_t>(size);
}

// How many of `size` bytes from the position on there are. The reader is asked anew: what it said before may have been
// an estimate.
LONG CAsyncCallback::BytesThere(LONG size) const {
  LONGLONG total = 0;
  LONGLONG available = 0;
  if (FAILED(m_reader->Length(&total, &available))) return size;
  return static_cast<LONG>(std::clamp<LONGLONG>(total - static_cast<LONGLONG>(m_position), 0, size));
}

// False for a short read, at the end of the stream. Some readers call that an error.
bool CAsyncCallback::ReadWhole(void* buffer, LONG size) {
  const HRESULT result = m_reader->SyncRead(static_cast<LONGLONG>(m_position), size, static_cast<BYTE*>(buffer));
  if (result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF) && BytesThere(size) < size) return false;
  if (FAILED(result)) throw MessageError(kReadFailed);
  return result == S_OK;
}

void CAsyncCallback::setFilePointer(std::int64_t offset, libebml::seek_mode mode) {
  // Unsigned, so that a sum out of range wraps around and is refused below.
  auto target = static_cast<std::uint64_t>(offset);
  switch (mode) {
    case libebml::seek_beginning:
      break;
    case libebml::seek_current:
      target = m_position + target;
      break;
    case libebml::seek_end:
      target = m_length - target;
      break;
    default:
      throw MessageError("<CAsyncCallback::setFilePointer> invalid seek mode");
  }
  if (static_cast<std::int64_t>(target) >= 0 && target <= m_length) m_position = target;
}

std::size_t CAsyncCallback::write(const void* /*buffer*/, std::size_t /*size*/) { return 0; }

HRESULT CAsyncCallback::BeginFlush() {
  if (m_reader == nullptr) {
    throw MessageError("<CAsyncCallback::BeginFlush> invalid pointer to IAsyncReader interface");
  }
  return m_reader->BeginFlush();
}

HRESULT CAsyncCallback::EndFlush() {
  if (m_reader == nullptr) {
    throw MessageError("<CAsyncCallback::EndFlush> invalid pointer to IAsyncReader interface");
  }
  return m_reader->EndFlush();
}

}  // namespace tarvex

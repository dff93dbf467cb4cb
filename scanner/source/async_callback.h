// The byte source of the scanner: libebml's reading interface over an IAsyncReader. Owned by the
// scanner. Reads and seeks run on the thread that drives the scanner; the flush operations may come from
// another one while a read is blocked and touch nothing but the reader.
#pragma once

#include <ebml/IOCallback.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "framework/platform/platform.h"

namespace tarvex {

class ReadAheadReader;

/// Positional and unbuffered: one read is one call of the reader. All failures are MessageErrors.
class CAsyncCallback : public libebml::IOCallback {
 public:
  CAsyncCallback() = default;
  CAsyncCallback(const CAsyncCallback&) = delete;
  CAsyncCallback& operator=(const CAsyncCallback&) = delete;

  /// Takes a reader, which is not counted and must stay until it is replaced or detached, and asks for
  /// its length.
  void Attach(IAsyncReader* reader);
  void Detach() noexcept;

  /// Asks the reader for the total length in bytes and keeps it.
  std::uint64_t QueryLength();
  std::uint64_t Length() const noexcept { return m_length; }
  /// The byte there can be read without a wait, as far as the reader says.
  bool HasArrived(std::uint64_t position) const;

  /// Returns and advances by the size asked for, also when the reader had less: the rest is then zero.
  /// Behind the end it returns 0. A reader may call its end an error: ERROR_HANDLE_EOF, for a read that crosses what it
  /// gives as its length at that time.
  std::uint32_t read(void* buffer, std::size_t size) override;
  /// A target outside the stream is refused silently. seek_end subtracts the offset.
  void setFilePointer(std::int64_t offset, libebml::seek_mode mode = libebml::seek_beginning) override;
  /// Writes nothing.
  std::size_t write(const void* buffer, std::size_t size) override;
  std::uint64_t getFilePointer() override { return m_position; }
  void close() override {}

  /// False: Borrow never gives anything.
  bool CanBorrow() const noexcept { return m_readAhead != nullptr; }
  /// The stream's bytes from `position` on, in the reader's own memory: at least `atLeast` of them, all before the end
  /// of the stream. If they have to be read, up to `wanted` are. Valid while BorrowNumber stays the same. Empty when
  /// the reader cannot do that: then read them.
  std::span<const std::uint8_t> Borrow(std::uint64_t position, std::size_t atLeast, std::size_t wanted);
  std::uint64_t BorrowNumber() const noexcept;

  /// Make a blocked read return, and reads possible again. MessageError without a reader. Any thread.
  HRESULT BeginFlush();
  HRESULT EndFlush();

 private:
  bool ReadWhole(void* buffer, LONG size);
  LONG BytesThere(LONG size) const;

  IAsyncReader* m_reader = nullptr;
  ReadAheadReader* m_readAhead = nullptr;  // the same reader, if it is one
  std::uint64_t m_position = 0;
  std::uint64_t m_length = 0;
};

}  // namespace tarvex

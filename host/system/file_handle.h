// The owner of one handle of the system, for files and events. A value that can be moved; one thread at a
// time.
#pragma once

#include <utility>

#include "framework/text_conversion.h"

namespace tarvex::host {

class FileHandle {
 public:
  FileHandle() noexcept = default;
  explicit FileHandle(HANDLE handle) noexcept : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  FileHandle(FileHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  ~FileHandle() {
    if (m_handle != nullptr) CloseHandle(m_handle);
  }

  /// Empty on failure; GetLastError says why. Others may write and delete meanwhile.
  static FileHandle OpenForReading(const WideString& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return FileHandle(CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  }
  /// A new file in place of one that is there. Empty on failure.
  static FileHandle Create(const WideString& path) {
    return FileHandle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr));
  }

  /// All of `size` bytes.
  bool Write(const void* bytes, std::size_t size) const noexcept {
    const auto* next = static_cast<const char*>(bytes);
    while (size != 0) {
      const DWORD piece = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size);
      DWORD written = 0;
      if (!WriteFile(m_handle, next, piece, &written, nullptr) || written == 0) return false;
      next += written;
      size -= written;
    }
    return true;
  }

  HANDLE Get() const noexcept { return m_handle; }
  explicit operator bool() const noexcept { return m_handle != nullptr; }

 private:
  HANDLE m_handle = nullptr;
};

}  // namespace tarvex::host

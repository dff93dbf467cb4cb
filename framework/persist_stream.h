// Saving and loading an object's settings with a graph: the version header and the dirty flag. A base of a class that
// implements IPersistStream, or an interface derived from it, by calling these. Any thread; that class guards what it
// writes and reads with a lock of its own.
#pragma once

#include <atomic>

#include "framework/platform/platform.h"

namespace tarvex {

/// Stream layout: the version as 12 UTF-16 units ("%011d " formatted), then what WriteToStream writes.
/// The operations have the names and results of IPersistStream's; GetClassID is the derived class's own
/// affair. Not an interface itself, so that a class can inherit one that derives from IPersistStream.
class CPersistStream {
 public:
  CPersistStream() = default;
  CPersistStream(const CPersistStream&) = delete;
  CPersistStream& operator=(const CPersistStream&) = delete;

  /// S_OK when there is something to save, else S_FALSE.
  HRESULT IsDirty() const noexcept { return m_dirty ? S_OK : S_FALSE; }
  /// VFW_E_INVALID_FILE_VERSION for a header that is no version or a version above ours; what Read or
  /// ReadFromStream answers. Only a whole load changes the dirty flag; a change that comes meanwhile is to be saved.
  HRESULT Load(IStream* stream) noexcept;
  HRESULT Save(IStream* stream, BOOL clearDirty) noexcept;
  /// The size of the version header plus SizeMax.
  HRESULT GetSizeMax(ULARGE_INTEGER* size) noexcept;

  void SetDirty(bool dirty) noexcept { m_dirty = dirty; }

 protected:
  ~CPersistStream() = default;

  /// The version written, and the highest one that is read.
  virtual DWORD GetSoftwareVersion() { return 0; }
  /// Bytes that WriteToStream may write.
  virtual int SizeMax() { return 0; }
  virtual HRESULT WriteToStream(IStream* stream) = 0;
  /// A failure must leave the object as it was.
  virtual HRESULT ReadFromStream(IStream* stream) = 0;

  /// All of the bytes or a failure; the stream's own end gives the system's end-of-file code.
  static HRESULT ReadExact(IStream* stream, void* bytes, ULONG count) noexcept;
  static HRESULT WriteExact(IStream* stream, const void* bytes, ULONG count) noexcept;

 private:
  std::atomic<bool> m_dirty{false};
};

}  // namespace tarvex

// The media type as a value: an AM_MEDIA_TYPE that owns its format block and its reference. Used on
// every thread; one object belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "framework/platform/platform.h"

namespace tarvex {

/// Copies are deep. A new one has null GUIDs, fixed-size samples of one byte, no temporal compression
/// and no block. What lacks memory throws std::bad_alloc and leaves the target as it was.
class CMediaType : public AM_MEDIA_TYPE {
 public:
  CMediaType() noexcept;
  explicit CMediaType(const GUID& majorType) noexcept;
  explicit CMediaType(const AM_MEDIA_TYPE& other);
  CMediaType(const CMediaType& other);
  CMediaType(CMediaType&& other) noexcept;
  CMediaType& operator=(const CMediaType& other);
  CMediaType& operator=(const AM_MEDIA_TYPE& other);
  CMediaType& operator=(CMediaType&& other) noexcept;
  ~CMediaType();

  /// Equal in every field and every byte of the block. The reference is not compared.
  bool operator==(const AM_MEDIA_TYPE& other) const noexcept;
  bool operator==(const CMediaType& other) const noexcept;

  BYTE* Format() const noexcept { return pbFormat; }
  ULONG FormatLength() const noexcept { return cbFormat; }
  std::span<const BYTE> FormatBytes() const noexcept { return {pbFormat, cbFormat}; }
  /// The block as a structure, or null when the block is shorter than that.
  template <class T>
  T* FormatAs() const noexcept {
    return cbFormat < sizeof(T) ? nullptr : reinterpret_cast<T*>(pbFormat);
  }

  /// Replaces the block by a new one of zeros and gives it.
  BYTE* AllocFormatBuffer(ULONG length);
  void ResetFormatBuffer() noexcept;

  /// Some of major type, subtype and format type is left open.
  bool IsPartiallySpecified() const noexcept;
  /// `partial` leaves open or equals each of: major type, subtype, format (type and bytes).
  bool MatchesPartial(const CMediaType* partial) const noexcept;
};

/// Frees what a media type record owns and makes it empty: for records that another module filled.
void FreeMediaType(AM_MEDIA_TYPE& type) noexcept;

/// A copy for a COM output argument: record and block from the task allocator. The caller frees both.
/// Throws std::bad_alloc.
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE& source);

/// Fills `target`, which must not own anything, with a deep copy. Throws std::bad_alloc.
void CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& source);

/// Frees a record from CreateMediaType or from another module's output argument. Null is allowed.
void DeleteMediaType(AM_MEDIA_TYPE* type) noexcept;

struct MediaTypeDeleter {
  void operator()(AM_MEDIA_TYPE* type) const noexcept { DeleteMediaType(type); }
};
/// Owns a record with its block as COM output arguments carry them.
using MediaTypePtr = std::unique_ptr<AM_MEDIA_TYPE, MediaTypeDeleter>;

}  // namespace tarvex

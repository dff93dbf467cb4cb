// The media type as a value.
#include "framework/media_type.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tarvex {

namespace {

constexpr AM_MEDIA_TYPE NewRecord() noexcept {
  AM_MEDIA_TYPE type{};
  type.bFixedSizeSamples = TRUE;
  type.lSampleSize = 1;
  return type;
}

BYTE* AllocateBlock(ULONG length) {
  if (length == 0) return nullptr;
  auto* block = static_cast<BYTE*>(CoTaskMemAlloc(length));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

bool SameFields(const AM_MEDIA_TYPE& a, const AM_MEDIA_TYPE& b) noexcept {
  return a.majortype == b.majortype && a.subtype == b.subtype && a.formattype == b.formattype &&
         a.bFixedSizeSamples == b.bFixedSizeSamples && a.bTemporalCompression == b.bTemporalCompression &&
         a.lSampleSize == b.lSampleSize;
}

bool SameBlock(const AM_MEDIA_TYPE& a, const AM_MEDIA_TYPE& b) noexcept {
  return a.cbFormat == b.cbFormat && (a.cbFormat == 0 || std::memcmp(a.pbFormat, b.pbFormat, a.cbFormat) == 0);
}

}  // namespace

CMediaType::CMediaType() noexcept : AM_MEDIA_TYPE(NewRecord()) {}

CMediaType::CMediaType(const GUID& majorType) noexcept : CMediaType() { majortype = majorType; }

CMediaType::CMediaType(const AM_MEDIA_TYPE& other) : CMediaType() { CopyMediaType(this, other); }

CMediaType::CMediaType(const CMediaType& other) : CMediaType(static_cast<const AM_MEDIA_TYPE&>(other)) {}

CMediaType::CMediaType(CMediaType&& other) noexcept : AM_MEDIA_TYPE(other) {
  static_cast<AM_MEDIA_TYPE&>(other) = NewRecord();
}

CMediaType& CMediaType::operator=(const CMediaType& other) { return *this = static_cast<const AM_MEDIA_TYPE&>(other); }

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& other) { return *this = CMediaType(other); }

CMediaType& CMediaType::operator=(CMediaType&& other) noexcept {
  std::swap(static_cast<AM_MEDIA_TYPE&>(*this), static_cast<AM_MEDIA_TYPE&>(other));
  return *this;
}

CMediaType::~CMediaType() { FreeMediaType(*this); }

bool CMediaType::operator==(const AM_MEDIA_TYPE& other) const noexcept {
  return SameFields(*this, other) && SameBlock(*this, other);
}

bool CMediaType::operator==(const CMediaType& other) const noexcept {
  return *this == static_cast<const AM_MEDIA_TYPE&>(other);
}

BYTE* CMediaType::AllocFormatBuffer(ULONG length) {
  BYTE* block = AllocateBlock(length);
  if (length != 0) std::memset(block, 0, length);
  ResetFormatBuffer();
  pbFormat = block;
  cbFormat = length;
  return block;
}

void CMediaType::ResetFormatBuffer() noexcept {
  CoTaskMemFree(std::exchange(pbFormat, nullptr));
  cbFormat = 0;
}

bool CMediaType::IsPartiallySpecified() const noexcept { return majortype == GUID_NULL || formattype == GUID_NULL; }

bool CMediaType::MatchesPartial(const CMediaType* partial) const noexcept {
  if (partial->majortype != GUID_NULL && partial->majortype != majortype) return false;
  if (partial->subtype != GUID_NULL && partial->subtype != subtype) return false;
  if (partial->formattype == GUID_NULL) return true;
  return partial->formattype == formattype && SameBlock(*this, *partial);
}

void FreeMediaType(AM_MEDIA_TYPE& type) noexcept {
  CoTaskMemFree(std::exchange(type.pbFormat, nullptr));
  type.cbFormat = 0;
  IUnknown* object = std::exchange(type.pUnk, nullptr);
  if (object != nullptr) object->Release();
}

void CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE& source) {
  const ULONG length = source.pbFormat != nullptr ? source.cbFormat : 0;
  BYTE* block = AllocateBlock(length);
  if (length != 0) std::memcpy(block, source.pbFormat, length);
  *target = source;
  target->pbFormat = block;
  target->cbFormat = length;
  if (target->pUnk != nullptr) target->pUnk->AddRef();
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE& source) {
  auto* record = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
  if (record == nullptr) throw std::bad_alloc();
  *record = AM_MEDIA_TYPE{};
  MediaTypePtr owner(record);
  CopyMediaType(record, source);
  return owner.release();
}

void DeleteMediaType(AM_MEDIA_TYPE* type) noexcept {
  if (type == nullptr) return;
  FreeMediaType(*type);
  CoTaskMemFree(type);
}

}  // namespace tarvex

// Compile-time proof that the structures other modules read have their published layout in this
// build. Nothing here exists at run time.
#pragma once

#include <cstddef>

static_assert(sizeof(LONG) == 4 && sizeof(DWORD) == 4 && sizeof(HRESULT) == 4 && sizeof(OLECHAR) == 2);
static_assert(sizeof(GUID) == 16 && offsetof(GUID, Data4) == 8);
static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(BITMAPINFOHEADER, biCompression) == 16);
static_assert(sizeof(VIDEOINFOHEADER) == 88 && offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == 40 &&
              offsetof(VIDEOINFOHEADER, bmiHeader) == 48);
static_assert(sizeof(VIDEOINFOHEADER2) == 112 && offsetof(VIDEOINFOHEADER2, dwPictAspectRatioX) == 56 &&
              offsetof(VIDEOINFOHEADER2, bmiHeader) == 72);
static_assert(sizeof(MPEG1VIDEOINFO) == 104 && offsetof(MPEG1VIDEOINFO, bSequenceHeader) == 96);
static_assert(sizeof(MPEG2VIDEOINFO) == 136 && offsetof(MPEG2VIDEOINFO, cbSequenceHeader) == 116 &&
              offsetof(MPEG2VIDEOINFO, dwSequenceHeader) == 132);
static_assert(sizeof(WAVEFORMATEX) == 18 && offsetof(WAVEFORMATEX, cbSize) == 16);

static_assert(offsetof(AM_MEDIA_TYPE, formattype) == 44);
static_assert(sizeof(void*) == 8 ? offsetof(AM_MEDIA_TYPE, pUnk) == 64 && offsetof(AM_MEDIA_TYPE, cbFormat) == 72 &&
                                       offsetof(AM_MEDIA_TYPE, pbFormat) == 80 && sizeof(AM_MEDIA_TYPE) == 88
                                 : offsetof(AM_MEDIA_TYPE, pUnk) == 60 && offsetof(AM_MEDIA_TYPE, cbFormat) == 64 &&
                                       offsetof(AM_MEDIA_TYPE, pbFormat) == 68 && sizeof(AM_MEDIA_TYPE) == 72);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, tStart) == 16 && offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId) == 32);
static_assert(sizeof(void*) == 8
                  ? offsetof(AM_SAMPLE2_PROPERTIES, pMediaType) == 40 &&
                        offsetof(AM_SAMPLE2_PROPERTIES, cbBuffer) == 56 && sizeof(AM_SAMPLE2_PROPERTIES) == 64
                  : offsetof(AM_SAMPLE2_PROPERTIES, pMediaType) == 36 &&
                        offsetof(AM_SAMPLE2_PROPERTIES, cbBuffer) == 44 && sizeof(AM_SAMPLE2_PROPERTIES) == 48);
static_assert(sizeof(ALLOCATOR_PROPERTIES) == 16);
static_assert(offsetof(VARIANT, llVal) == 8 && sizeof(VARIANT) == (sizeof(void*) == 8 ? 24 : 16));
static_assert(offsetof(PIN_INFO, achName) == sizeof(void*) + 4 && offsetof(FILTER_INFO, pGraph) == 256);

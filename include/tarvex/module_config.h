// The splitter's parameter interface: its settings, the chapter list, the document type and a seek,
// each named by a GUID. Obtained from the filter by QueryInterface. Callable from any application
// thread.
#pragma once

#if __has_include(<oaidl.h>)
#include <oaidl.h>
#else
#include "framework/platform/platform.h"
#endif

namespace tarvex {

/// Interface identifier of IModuleConfig.
/// {8867412E-6C40-4929-9861-905C0D1BBA59}
inline constexpr GUID IID_IModuleConfig = {
    0x8867412E, 0x6C40, 0x4929, {0x98, 0x61, 0x90, 0x5C, 0x0D, 0x1B, 0xBA, 0x59}};

/// VT_BOOL, read and write: H.264 pins deliver start codes instead of lengths, each from its next
/// connection on. Reads as 0 or 1;
/// test for non-zero.
/// {7699B22B-E85E-492A-A7B4-5F9861FE325D}
inline constexpr GUID paramAnnexBOutput = {
    0x7699B22B, 0xE85E, 0x492A, {0xA7, 0xB4, 0x5F, 0x98, 0x61, 0xFE, 0x32, 0x5D}};

/// VT_BOOL, read and write: one output pin per stream instead of one per kind. Reads as 0 or 1. A change
/// replaces all output pins, which disconnects them; while the filter is paused or running it is refused
/// with VFW_E_NOT_STOPPED.
/// {00A5C764-53D1-4259-991A-1558B4401E9A}
inline constexpr GUID paramSeparatePins = {
    0x00A5C764, 0x53D1, 0x4259, {0x99, 0x1A, 0x15, 0x58, 0xB4, 0x40, 0x1E, 0x9A}};

/// Read only. The caller sets vt: VT_UINT yields the chapter count in ulVal; VT_PTR fills the array of
/// ChapterEntry at byref, whose names the caller frees.
/// {2DAE93E6-AC4E-4A1D-97BE-AA3EF7AEB468}
inline constexpr GUID paramChapterList = {0x2DAE93E6, 0xAC4E, 0x4A1D, {0x97, 0xBE, 0xAA, 0x3E, 0xF7, 0xAE, 0xB4, 0x68}};

/// Read only: 0 for "matroska", 1 for "webm" in ulVal; E_FAIL for any other document type.
/// {9BB304EB-E783-4713-B785-067864832C14}
inline constexpr GUID paramDocType = {0x9BB304EB, 0xE783, 0x4713, {0xB7, 0x85, 0x06, 0x78, 0x64, 0x83, 0x2C, 0x14}};

/// Write only: seeks the graph to llVal, in 100 ns units.
/// {852EFE53-54F2-4D26-B254-88174116043B}
inline constexpr GUID paramPosition = {0x852EFE53, 0x54F2, 0x4D26, {0xB2, 0x54, 0x88, 0x17, 0x41, 0x16, 0x04, 0x3B}};

/// The two settings are saved with a graph through the IPersistStream operations.
struct IModuleConfig : public IPersistStream {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
  /// E_NOTIMPL for an unknown or read-only parameter.
  virtual HRESULT STDMETHODCALLTYPE SetValue(const GUID* parameter, const VARIANT* value) = 0;
  /// E_NOTIMPL for an unknown or write-only parameter.
  virtual HRESULT STDMETHODCALLTYPE GetValue(const GUID* parameter, VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved1() = 0;  ///< E_NOTIMPL
  virtual HRESULT STDMETHODCALLTYPE Reserved2() = 0;  ///< E_NOTIMPL
};

}  // namespace tarvex

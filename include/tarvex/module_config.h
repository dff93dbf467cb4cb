/*
 * The splitter's parameter interface: its settings, the chapter list, the document type and a seek, each
 * named by a GUID. Obtained from the filter by QueryInterface. Callable from any thread of the process that
 * the filter is in, and from no other process: there is no proxy for it.
 */
#pragma once

#include "declarations.h"

#ifdef __cplusplus
namespace tarvex {
#endif

/**
 * Interface identifier of IModuleConfig.
 * {8867412E-6C40-4929-9861-905C0D1BBA59}
 */
TARVEX_GUID IID_IModuleConfig = {0x8867412E, 0x6C40, 0x4929, {0x98, 0x61, 0x90, 0x5C, 0x0D, 0x1B, 0xBA, 0x59}};

/**
 * VT_BOOL, read and write: H.264 pins deliver start codes instead of lengths, each from its next connection
 * on. Reads as 0 or 1; test for non-zero.
 * {7699B22B-E85E-492A-A7B4-5F9861FE325D}
 */
TARVEX_GUID paramAnnexBOutput = {0x7699B22B, 0xE85E, 0x492A, {0xA7, 0xB4, 0x5F, 0x98, 0x61, 0xFE, 0x32, 0x5D}};

/**
 * VT_BOOL, read and write: one output pin per stream instead of one per kind. Reads as 0 or 1. A change
 * replaces all output pins, which disconnects them; while the filter is paused or running it is refused
 * with VFW_E_NOT_STOPPED.
 * {00A5C764-53D1-4259-991A-1558B4401E9A}
 */
TARVEX_GUID paramSeparatePins = {0x00A5C764, 0x53D1, 0x4259, {0x99, 0x1A, 0x15, 0x58, 0xB4, 0x40, 0x1E, 0x9A}};

/**
 * Read only. The caller sets vt: VT_UINT yields the chapter count in ulVal; VT_PTR fills the array of
 * ChapterEntry at byref, whose names the caller frees.
 * {2DAE93E6-AC4E-4A1D-97BE-AA3EF7AEB468}
 */
TARVEX_GUID paramChapterList = {0x2DAE93E6, 0xAC4E, 0x4A1D, {0x97, 0xBE, 0xAA, 0x3E, 0xF7, 0xAE, 0xB4, 0x68}};

/**
 * Read only: 0 for "matroska", 1 for "webm" in ulVal; E_FAIL for any other document type.
 * {9BB304EB-E783-4713-B785-067864832C14}
 */
TARVEX_GUID paramDocType = {0x9BB304EB, 0xE783, 0x4713, {0xB7, 0x85, 0x06, 0x78, 0x64, 0x83, 0x2C, 0x14}};

/**
 * Write only: seeks the graph to llVal, in 100 ns units.
 * {852EFE53-54F2-4D26-B254-88174116043B}
 */
TARVEX_GUID paramPosition = {0x852EFE53, 0x54F2, 0x4D26, {0xB2, 0x54, 0x88, 0x17, 0x41, 0x16, 0x04, 0x3B}};

/*
 * The two settings are saved with a graph through the IPersistStream operations. SetValue answers E_NOTIMPL
 * for an unknown or read-only parameter, GetValue for an unknown or write-only one, the reserved operations
 * always.
 */
#ifdef __cplusplus
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
TARVEX_INTERFACE("8867412E-6C40-4929-9861-905C0D1BBA59") IModuleConfig : public IPersistStream {
  virtual HRESULT STDMETHODCALLTYPE SetValue(const GUID* parameter, const VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetValue(const GUID* parameter, VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved1() = 0;
  virtual HRESULT STDMETHODCALLTYPE Reserved2() = 0;
};

}  // namespace tarvex
TARVEX_INTERFACE_ID(tarvex::IModuleConfig, 0x8867412E, 0x6C40, 0x4929, 0x98, 0x61, 0x90, 0x5C, 0x0D, 0x1B, 0xBA, 0x59)
#else
typedef struct IModuleConfig IModuleConfig;
typedef struct IModuleConfigVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IModuleConfig* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IModuleConfig* self);
  ULONG(STDMETHODCALLTYPE* Release)(IModuleConfig* self);
  HRESULT(STDMETHODCALLTYPE* GetClassID)(IModuleConfig* self, CLSID* clsid);
  HRESULT(STDMETHODCALLTYPE* IsDirty)(IModuleConfig* self);
  HRESULT(STDMETHODCALLTYPE* Load)(IModuleConfig* self, IStream* stream);
  HRESULT(STDMETHODCALLTYPE* Save)(IModuleConfig* self, IStream* stream, BOOL clearDirty);
  HRESULT(STDMETHODCALLTYPE* GetSizeMax)(IModuleConfig* self, ULARGE_INTEGER* size);
  HRESULT(STDMETHODCALLTYPE* SetValue)(IModuleConfig* self, const GUID* parameter, const VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* GetValue)(IModuleConfig* self, const GUID* parameter, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* Reserved1)(IModuleConfig* self);
  HRESULT(STDMETHODCALLTYPE* Reserved2)(IModuleConfig* self);
} IModuleConfigVtbl;
struct IModuleConfig {
  const IModuleConfigVtbl* lpVtbl;
};
#endif

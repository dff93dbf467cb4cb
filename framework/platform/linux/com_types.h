// COM's basic types, result codes, strings and variants for builds without the system headers: the
// same names and sizes. Owned by the platform border; include platform.h instead of this.
#pragma once

#include <cstddef>
#include <cstdint>

#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPI
#define OLESTR(text) u##text

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using FLOAT = float;
using DOUBLE = double;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using LCID = DWORD;
using HRESULT = LONG;
using SCODE = LONG;
using HANDLE = void*;

using WCHAR = char16_t;
using OLECHAR = char16_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr int THREAD_PRIORITY_NORMAL = 0;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];

  friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

constexpr bool IsEqualGUID(REFGUID a, REFGUID b) { return a == b; }
constexpr bool IsEqualIID(REFIID a, REFIID b) { return a == b; }
constexpr bool IsEqualCLSID(REFCLSID a, REFCLSID b) { return a == b; }

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
constexpr bool FAILED(HRESULT hr) { return hr < 0; }

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT NOERROR = 0;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
inline constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111);

inline constexpr DWORD ERROR_HANDLE_EOF = 38;
constexpr HRESULT HRESULT_FROM_WIN32(DWORD code) {
  return code == 0 ? S_OK : static_cast<HRESULT>((code & 0xFFFFu) | 0x80070000u);
}

/// Task memory, as handed to and freed by other modules. Null when there is none.
void* CoTaskMemAlloc(std::size_t size);
void CoTaskMemFree(void* memory);

/// Apartments. This stand-in keeps none and only counts; both kinds are one.
inline constexpr DWORD COINIT_MULTITHREADED = 0x0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 0x2;
inline constexpr DWORD COINIT_DISABLE_OLE1DDE = 0x4;
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0);
HRESULT CoInitializeEx(void* reserved, DWORD kind);
void CoUninitialize();
/// Entered and not left again, by all threads. For tests.
LONG ApartmentsEntered();
/// The calling thread is in one. For tests.
bool IsInApartment();

/// Counted strings: length in bytes before the text, a zero after it. Null when there is no memory.
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);

using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_UNKNOWN = 13,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_PTR = 26,
  VT_BYREF = 0x4000
};

struct IUnknown;
struct IDispatch;

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    FLOAT fltVal;
    DOUBLE dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    void* byref;
    WORD uiVal;
    ULONG ulVal;
    ULONGLONG ullVal;
    INT intVal;
    UINT uintVal;
    void* asPublished[2];  ///< the largest alternative of the published union
  };
};

inline void VariantInit(VARIANT* variant) { *variant = VARIANT{}; }

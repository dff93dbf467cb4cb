/*
 * What the other headers of this folder share: the platform's COM types, and how an identifier and an
 * interface are declared. For C11 and for C++14 or later. In C++ everything is in namespace tarvex, in C the
 * names stand alone.
 */
#pragma once

#if __has_include(<oaidl.h>)
#include <windows.h>
/* After windows.h, which they depend on. */
#include <oaidl.h>
#else
#include "framework/platform/platform.h"
#endif

/* TARVEX_GUID NAME = {...}; declares an identifier that needs no library and no source file. */
#if defined(__cpp_inline_variables)
#define TARVEX_GUID inline constexpr GUID
#elif defined(__cplusplus)
#define TARVEX_GUID constexpr GUID
#else
#define TARVEX_GUID static const GUID
#endif

/*
 * TARVEX_INTERFACE("...") Name : public Base {...}; and behind it, outside every namespace,
 * TARVEX_INTERFACE_ID(tarvex::Name, ...): so __uuidof(Name), IID_PPV_ARGS and the smart pointers that are
 * made of it know the interface, with each compiler in its own way.
 */
#if defined(_MSC_VER)
#define TARVEX_INTERFACE(id) struct __declspec(uuid(id)) __declspec(novtable)
#else
#define TARVEX_INTERFACE(id) struct
#endif
#if defined(__CRT_UUID_DECL)
#define TARVEX_INTERFACE_ID(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
  __CRT_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#else
#define TARVEX_INTERFACE_ID(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#endif

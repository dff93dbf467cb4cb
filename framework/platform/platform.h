// The platform border: every COM and DirectShow name the rest of the code uses comes through here.
// On Windows these are the system's own headers; elsewhere small declarations with the same names,
// values and slot order stand in for them. Included by nearly every file; owns nothing.
#pragma once

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define NO_DSHOW_STRSAFE
#include <windows.h>
// After windows.h, which they depend on.
#include <dshow.h>
#include <dvdmedia.h>
#include <mmreg.h>
#include <olectl.h>
#undef NO_DSHOW_STRSAFE
// Macros of these headers that would rename our own members.
#undef GetObject
#undef Yield
#undef GetFirstChild
#undef GetMessage
#undef SendMessage

#else

#include "framework/platform/linux/com_interfaces.h"
#include "framework/platform/linux/com_types.h"
#include "framework/platform/linux/dshow_interfaces.h"
#include "framework/platform/linux/guids.h"
#include "framework/platform/linux/media_formats.h"

#endif

#include "framework/platform/interface_ids.h"

// After the identifiers, which they use.
#include "framework/platform/extended_seeking.h"
#include "framework/platform/layout_checks.h"

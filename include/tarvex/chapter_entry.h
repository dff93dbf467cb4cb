/*
 * One chapter as the module hands it to a host through IModuleConfig. The host owns the array and frees each
 * name with SysFreeString.
 */
#pragma once

#include "declarations.h"

#ifdef __cplusplus
namespace tarvex {
#else
typedef struct ChapterEntry ChapterEntry;
#endif

struct ChapterEntry {
  BSTR name;      /**< display string: its UTF-8 bytes read in the thread's code page; owned by whoever holds it */
  LONGLONG start; /**< 100 ns units */
  LONGLONG end;   /**< 100 ns units; 0 when the file gives none */
};

#ifdef __cplusplus
} /* namespace tarvex */
#endif

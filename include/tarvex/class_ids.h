/*
 * Class identifiers of the module and the stream subtype it registers, for host applications. Values only;
 * nothing here is owned or called.
 */
#pragma once

#include "declarations.h"

#ifdef __cplusplus
namespace tarvex {
#endif

/**
 * The splitter filter. In-process only, as its interfaces are; any apartment.
 * {F90F48F0-3C28-4C86-AD91-B62C99A0EA47}
 */
TARVEX_GUID CLSID_MatroskaSplitter = {0xF90F48F0, 0x3C28, 0x4C86, {0xAD, 0x91, 0xB6, 0x2C, 0x99, 0xA0, 0xEA, 0x47}};

/**
 * Its settings page.
 * {A4423959-8387-41CA-B133-F19B0ABB0915}
 */
TARVEX_GUID CLSID_MatroskaSettingsPage = {0xA4423959, 0x8387, 0x41CA, {0xB1, 0x33, 0xF1, 0x9B, 0x0A, 0xBB, 0x09, 0x15}};

/**
 * Its about page.
 * {140B6756-76BC-4112-B584-0801ED52ECF5}
 */
TARVEX_GUID CLSID_MatroskaAboutPage = {0x140B6756, 0x76BC, 0x4112, {0xB5, 0x84, 0x08, 0x01, 0xED, 0x52, 0xEC, 0xF5}};

/**
 * Subtype of a Matroska byte stream under MEDIATYPE_Stream.
 * {1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}
 */
TARVEX_GUID MEDIASUBTYPE_MatroskaStream = {
    0x1AC0BEBD, 0x4D2B, 0x45AD, {0xBC, 0xEB, 0xF2, 0xC4, 0x1C, 0x5E, 0x37, 0x88}};

#ifdef __cplusplus
} /* namespace tarvex */
#endif

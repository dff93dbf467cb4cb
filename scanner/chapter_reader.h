// Turning a Chapters element into a flat list. A free function; runs while a file is opened.
#pragma once

#include <matroska/KaxChapters.h>

#include <vector>

#include "scanner/chapter_entry.h"

namespace tarvex {

/// The atoms of the first edition of `chapters`, which has been read whole; nested atoms stand before
/// the one they belong to.
std::vector<ScannedChapter> ReadChapters(const libmatroska::KaxChapters& chapters);

}  // namespace tarvex

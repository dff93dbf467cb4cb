// Turning a Chapters element into a flat list. A free function; runs while a file is opened.
#pragma once

#include <matroska/KaxChapters.h>

#include <vector>

#include "scanner/elements/element_walker.h"
#include "scanner/file/scanned_chapter.h"

namespace tarvex {

/// The atoms of the first edition of `chapters`, at whose data `walker` stands; nested atoms stand before the one they
/// belong to. As many as are allowed.
std::vector<ScannedChapter> ReadChapters(ElementWalker& walker, libmatroska::KaxChapters& chapters);

}  // namespace tarvex

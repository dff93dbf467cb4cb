#include "scanner/chapter_reader.h"

#include <matroska/KaxSemantic.h>

#include "framework/text_conversion.h"
#include "scanner/block_time.h"
#include "scanner/element_walker.h"
#include "scanner/limits.h"

namespace tarvex {

namespace {

using libmatroska::KaxChapterAtom;
using libmatroska::KaxChapterDisplay;
using libmatroska::KaxChapterString;
using libmatroska::KaxChapterTimeEnd;
using libmatroska::KaxChapterTimeStart;
using libmatroska::KaxEditionEntry;

void ReadDisplay(const KaxChapterDisplay& display, BStr& name) {
  for (const libebml::EbmlElement* child : display) {
    if (const auto* text = ElementAs<KaxChapterString>(child)) {
      name = BStr(WideFromThreadCodePage(text->GetValueUTF8()));
    }
  }
}

// The depth is bounded by the master reader, which reads no deeper.
void ReadAtom(const KaxChapterAtom& atom, std::vector<ScannedChapter>& chapters) {
  ScannedChapter chapter;
  chapter.name = BStr(WideView());
  for (const libebml::EbmlElement* child : atom) {
    if (const auto* nested = ElementAs<KaxChapterAtom>(child)) {
      ReadAtom(*nested, chapters);
    } else if (const auto* start = ElementAs<KaxChapterTimeStart>(child)) {
      chapter.start = start->GetValue() / kNanosecondsPerUnit;
    } else if (const auto* end = ElementAs<KaxChapterTimeEnd>(child)) {
      chapter.end = end->GetValue() / kNanosecondsPerUnit;
    } else if (const auto* display = ElementAs<KaxChapterDisplay>(child)) {
      ReadDisplay(*display, chapter.name);
    }
  }
  if (chapters.size() < limits::kChapters) chapters.push_back(std::move(chapter));
}

}  // namespace

std::vector<ScannedChapter> ReadChapters(const libmatroska::KaxChapters& chapters) {
  std::vector<ScannedChapter> list;
  for (const libebml::EbmlElement* child : chapters) {
    const auto* edition = ElementAs<KaxEditionEntry>(child);
    if (edition == nullptr) continue;
    for (const libebml::EbmlElement* atom : *edition) {
      if (ElementAs<KaxChapterAtom>(atom) != nullptr) ReadAtom(*ElementAs<KaxChapterAtom>(atom), list);
    }
    break;  // later editions are other ways through the file
  }
  return list;
}

}  // namespace tarvex

#include "scanner/file/chapter_reader.h"

#include <matroska/KaxSemantic.h>

#include <utility>

#include "framework/log.h"
#include "framework/text_conversion.h"
#include "scanner/block_time.h"
#include "scanner/elements/element_walker.h"
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

// Keeps the atoms around the place that is being read: as many as the master reader goes down at most.
class ChapterVisitor final : public ElementVisitor {
 public:
  bool Enter(const libebml::EbmlMaster& master) override {
    if (ElementAs<KaxEditionEntry>(&master) != nullptr) return true;
    if (ElementAs<KaxChapterAtom>(&master) == nullptr) return false;
    m_open.emplace_back().chapter.name = BStr(WideView());
    return true;
  }

  bool Leave() override {
    if (m_open.empty()) return false;  // later editions are other ways through the file
    Atom atom = std::move(m_open.back());
    m_open.pop_back();
    if (!atom.isWhole) return true;
    if (m_chapters.size() < limits::kChapters) {
      m_chapters.push_back(std::move(atom.chapter));
      return true;
    }
    LogText("<KaxChapters> more chapters than are read");
    return false;
  }

  bool Show(libebml::EbmlElement& element) override {
    if (m_open.empty()) return true;
    ScannedChapter& chapter = m_open.back().chapter;
    if (const auto* start = ElementAs<KaxChapterTimeStart>(&element)) {
      chapter.start = start->GetValue() / kNanosecondsPerUnit;
    } else if (const auto* end = ElementAs<KaxChapterTimeEnd>(&element)) {
      chapter.end = end->GetValue() / kNanosecondsPerUnit;
    } else if (const auto* display = ElementAs<KaxChapterDisplay>(&element)) {
      ReadDisplay(*display, chapter.name);
    }
    return true;
  }

  void LeaveOut() override {
    if (!m_open.empty()) m_open.back().isWhole = false;
  }

  std::vector<ScannedChapter> TakeChapters() { return std::move(m_chapters); }

 private:
  struct Atom {
    ScannedChapter chapter;
    bool isWhole = true;
  };

  std::vector<Atom> m_open;  // from the outermost inwards
  std::vector<ScannedChapter> m_chapters;
};

}  // namespace

std::vector<ScannedChapter> ReadChapters(ElementWalker& walker, libmatroska::KaxChapters& chapters) {
  ChapterVisitor visitor;
  walker.ReadEntries(chapters, {limits::kChapterNames, limits::kChapterNames}, visitor);
  return visitor.TakeChapters();
}

}  // namespace tarvex

#include <gtest/gtest.h>

#include "framework/text_conversion.h"
#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

ByteString Display(std::string_view text) { return Element(id::kChapterDisplay, Text(id::kChapterString, text)); }

ByteString Atom(std::initializer_list<ByteString> children) { return Element(id::kChapterAtom, Join(children)); }

ByteString Times(std::uint64_t start, std::uint64_t end) {
  return Join({Unsigned(id::kChapterTimeStart, start), Unsigned(id::kChapterTimeEnd, end)});
}

ByteString Edition(std::initializer_list<ByteString> atoms) { return Element(id::kEditionEntry, Join(atoms)); }

std::vector<ScannedChapter> ChaptersOf(std::initializer_list<ByteString> editions, bool listed = true) {
  const std::size_t position = SeekHeadFor(id::kChapters, 0).size() + Headers().size();
  const OpenFile file(MatroskaFile(Join(
      {SeekHeadFor(listed ? id::kChapters : id::kCues, position), Headers(), Element(id::kChapters, Join(editions))})));
  return file.scanner.Chapters();
}

TEST(Chapters, NestedAtomsStandBeforeTheirParent) {
  const auto chapters =
      ChaptersOf({Edition({Atom({Times(1000, 9000), Display("parent"), Atom({Times(1000, 2000), Display("first")}),
                                 Atom({Times(2000, 9000), Display("second")})})})});
  ASSERT_EQ(chapters.size(), 3U);
  EXPECT_TRUE(chapters[0].name.View() == OLESTR("first"));
  EXPECT_TRUE(chapters[1].name.View() == OLESTR("second"));
  EXPECT_TRUE(chapters[2].name.View() == OLESTR("parent"));
  EXPECT_EQ(chapters[2].start, 10U);
  EXPECT_EQ(chapters[2].end, 90U);
}

TEST(Chapters, MissingPartsAreEmpty) {
  const auto chapters = ChaptersOf({Edition({Atom({})})});
  ASSERT_EQ(chapters.size(), 1U);
  EXPECT_NE(chapters[0].name.Get(), nullptr);
  EXPECT_TRUE(chapters[0].name.View().empty());
  EXPECT_EQ(chapters[0].start, 0U);
  EXPECT_EQ(chapters[0].end, 0U);
}

TEST(Chapters, OnlyTheFirstEditionIsRead) {
  EXPECT_EQ(ChaptersOf({Edition({Atom({})}), Edition({Atom({}), Atom({})})}).size(), 1U);
}

TEST(Chapters, LastStringOfTheLastDisplayIsTheName) {
  const ByteString two =
      Element(id::kChapterDisplay, Join({Text(id::kChapterString, "b"), Text(id::kChapterString, "c")}));
  const auto chapters = ChaptersOf({Edition({Atom({Display("a"), two})})});
  EXPECT_TRUE(chapters.at(0).name.View() == OLESTR("c"));
}

TEST(Chapters, NameGoesThroughTheNarrowCodePage) {
  const auto chapters = ChaptersOf({Edition({Atom({Display("\xC3\xBC")})})});
  EXPECT_TRUE(chapters.at(0).name.View() == WideFromThreadCodePage("\xC3\xBC"));
}

TEST(Chapters, WithoutAnEntryInTheSeekHeadThereAreNone) {
  EXPECT_TRUE(ChaptersOf({Edition({Atom({})})}, false).empty());
}

TEST(Chapters, AtomsNestedTooDeepAreLeftOut) {
  ByteString atom = Atom({});
  for (int depth = 1; depth < 2000; ++depth) atom = Atom({atom});
  EXPECT_EQ(ChaptersOf({Edition({atom})}).size(), 201U);
}

}  // namespace
}  // namespace tarvex::test

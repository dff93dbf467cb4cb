#include "host/system/text_escape.h"

#include <algorithm>
#include <optional>

#include "framework/unicode.h"

namespace tarvex::host {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// What a terminal obeys instead of showing.
constexpr Range kUnsafe[] = {
    {0x00, 0x1F},      // control characters
    {0x7F, 0x9F},      // delete, and the eight-bit control characters
    {0x061C, 0x061C},  // Arabic direction mark
    {0x200E, 0x200F},  // direction marks
    {0x2028, 0x202E},  // line and paragraph separator, direction embeddings and overrides
    {0x2066, 0x2069},  // direction isolates
    {0xFEFF, 0xFEFF},  // byte order mark
};

bool IsUnsafe(char32_t character) {
  return std::any_of(std::begin(kUnsafe), std::end(kUnsafe),
                     [character](Range range) { return character >= range.first && character <= range.last; });
}

void AppendHex(std::string& out, char32_t value, int leastDigits) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (; value != 0 || static_cast<int>(digits.size()) < leastDigits; value >>= 4) {
    digits.insert(digits.begin(), kDigits[value & 15]);
  }
  out += digits;
}

void AppendEscaped(std::string& out, char32_t character) {
  if (character == U'\n') {
    out += "\\n";
  } else if (character == U'\r') {
    out += "\\r";
  } else if (character == U'\t') {
    out += "\\t";
  } else if (character < 0x80) {
    out += "\\x";
    AppendHex(out, character, 2);
  } else {
    out += "\\u{";
    AppendHex(out, character, 4);
    out += '}';
  }
}

constexpr std::string_view kDots = "...";

// In bytes, so that with the dots the text has `most` characters, or as many as there are dots; nothing when
// it has no more than that by itself.
std::optional<std::size_t> PlaceOfDots(std::string_view text, std::size_t most) {
  const std::size_t kept = most - std::min(most, kDots.size());
  std::string_view rest = text;
  std::size_t cut = 0;
  for (std::size_t count = 0; !rest.empty(); ++count) {
    if (count == kept) cut = text.size() - rest.size();
    if (count == most) return cut;
    rest.remove_prefix(ReadUtf8(rest).length);
  }
  return std::nullopt;
}

}  // namespace

std::string EscapeForTerminal(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Utf8Step step = ReadUtf8(text);
    if (!step.valid) {
      out += "\\x";
      AppendHex(out, static_cast<unsigned char>(text.front()), 2);
    } else if (IsUnsafe(step.character)) {
      AppendEscaped(out, step.character);
    } else {
      out += text.substr(0, step.length);
    }
    text.remove_prefix(step.length);
  }
  return out;
}

// Cut before it is escaped, so that a long text costs no more than a short one.
std::string EscapeAndShorten(std::string_view text) {
  constexpr std::size_t kMost = 500;
  const auto cut = PlaceOfDots(text, kMost);
  return cut ? EscapeForTerminal(text.substr(0, *cut)).append(kDots) : EscapeForTerminal(text);
}

std::string Shorten(const std::string& text, std::size_t most) {
  const auto cut = PlaceOfDots(text, most);
  return cut ? text.substr(0, *cut).append(kDots) : text;
}

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) text.remove_prefix(ReadUtf8(text).length);
  return count;
}

}  // namespace tarvex::host

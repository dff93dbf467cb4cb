#include "host/report/stream_choice.h"

#include <algorithm>
#include <charconv>

#include "framework/text_conversion.h"
#include "pins/formats/language_table.h"

namespace tarvex::host {

namespace {

constexpr std::string_view kNoSubtitles = "No Subtitles";

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) letter = Lower(letter);
  return lower;
}

// The splitter appends it to a stream's name: "A: Commentary [French]".
std::string_view LanguageIn(std::string_view name) {
  const std::size_t begin = name.rfind(" [");
  if (begin == std::string_view::npos || !name.ends_with(']')) return {};
  return name.substr(begin + 2, name.size() - begin - 3);
}

// What the splitter would show for a code; the text itself for what is no code.
std::string EnglishName(const std::string& wish) {
  const std::string_view name = LanguageName(wish);
  return name.empty() ? wish : Lower(Utf8FromWide(WideFromThreadCodePage(name)));
}

std::optional<std::uint32_t> Number(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

template <class Fits>
std::optional<std::uint32_t> FirstOf(const std::vector<StreamReport>& streams, std::uint32_t group, Fits fits) {
  for (std::uint32_t index = 0; index < streams.size(); ++index) {
    if (streams[index].group == group && fits(index)) return index;
  }
  return std::nullopt;
}

}  // namespace

std::string GroupName(std::uint32_t group) {
  switch (group) {
    case kVideoGroup:
      return "video";
    case kAudioGroup:
      return "audio";
    case kSubtitleGroup:
      return "subtitle";
    default:
      return std::to_string(group);
  }
}

std::uint32_t NumberInGroup(const std::vector<StreamReport>& streams, std::uint32_t index) {
  const auto begin = streams.begin();
  const auto sameGroup = [&](const StreamReport& stream) { return stream.group == streams[index].group; };
  return static_cast<std::uint32_t>(std::count_if(begin, begin + index + 1, sameGroup));
}

std::optional<std::uint32_t> FindStream(const std::vector<StreamReport>& streams, std::uint32_t group,
                                        std::string_view wish) {
  if (const auto number = Number(wish)) {
    return FirstOf(streams, group, [&](std::uint32_t index) { return NumberInGroup(streams, index) == *number; });
  }
  const std::string lower = Lower(wish);
  if (lower == "off") {
    return FirstOf(streams, group, [&](std::uint32_t index) { return streams[index].name == kNoSubtitles; });
  }
  if (lower.empty()) return std::nullopt;
  const std::string language = EnglishName(lower);
  return FirstOf(streams, group,
                 [&](std::uint32_t index) { return Lower(LanguageIn(streams[index].name)) == language; });
}

std::optional<std::uint32_t> NextStream(const std::vector<StreamReport>& streams, std::uint32_t group) {
  const auto enabled = FirstOf(streams, group, [&](std::uint32_t index) { return streams[index].enabled; });
  const auto isOther = [&](std::uint32_t index) { return !streams[index].enabled; };
  const auto after =
      FirstOf(streams, group, [&](std::uint32_t index) { return index > enabled.value_or(0) && isOther(index); });
  return after ? after : FirstOf(streams, group, isOther);
}

std::int64_t TimeOf(const MarkerReport& marker) {
  constexpr double kMost = 9e11;  // seconds that fit
  return static_cast<std::int64_t>(std::clamp(marker.seconds, -kMost, kMost) * 1e7);
}

std::optional<std::size_t> NextMarker(const std::vector<MarkerReport>& markers, std::int64_t position) {
  const auto next =
      std::find_if(markers.begin(), markers.end(), [&](const auto& marker) { return TimeOf(marker) > position; });
  if (next == markers.end()) return std::nullopt;
  return static_cast<std::size_t>(next - markers.begin());
}

}  // namespace tarvex::host

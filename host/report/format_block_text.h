// The decoders of the format blocks, one for each form. Each reads text.block, appends to text.fields and
// writes text.summary; false when the block is too short for its form. Free functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "host/report/media_type_text.h"

namespace tarvex::host {

inline void AddField(MediaTypeText& text, const char* name, std::int64_t value) {
  text.fields.push_back({name, value});
}
inline void AddField(MediaTypeText& text, const char* name, std::string value) {
  text.fields.push_back({name, std::move(value)});
}

bool DecodeVideoInfo(MediaTypeText& text);
bool DecodeVideoInfo2(MediaTypeText& text);
bool DecodeMpeg1VideoInfo(MediaTypeText& text);
bool DecodeMpeg2VideoInfo(MediaTypeText& text);
bool DecodeWaveFormat(MediaTypeText& text);
bool DecodeVorbisFormat(MediaTypeText& text);
bool DecodeSubtitleInfo(MediaTypeText& text);

}  // namespace tarvex::host

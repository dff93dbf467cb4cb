// Records from track entries, pins from records.
#include "pins/creator/out_pins_creator.h"

#include <algorithm>
#include <new>
#include <string>

#include "framework/log.h"
#include "framework/message_error.h"
#include "pins/creator/audio_media_type.h"
#include "pins/creator/subtitle_media_type.h"
#include "pins/creator/track_elements.h"
#include "pins/creator/video_media_type.h"
#include "pins/formats/h264_form.h"
#include "pins/formats/language_table.h"
#include "pins/formats/refused_track.h"
#include "pins/output/matroska_audio_pin.h"
#include "pins/output/matroska_subtitle_pin.h"
#include "pins/output/matroska_video_pin.h"
#include "scanner/elements/heap.h"

namespace tarvex {

namespace {

TrackPinInfo CommonFields(const CHeap& track) {
  const auto type = Unsigned32(track, "KaxTrackType");
  if (!type) throw MessageError("COutPinsCreator::CreatePin failed get track type");
  const auto number = Unsigned32(track, "KaxTrackNumber");
  if (!number) throw MessageError("COutPinsCreator::CreatePin failed get track_number");
  TrackPinInfo info;
  info.trackNumber = *number;
  info.trackType = *type;
  info.defaultFlag = track.Unsigned("KaxTrackFlagDefault").value_or(info.defaultFlag) != 0;
  info.forcedFlag = track.Unsigned("KaxTrackFlagForced").value_or(info.forcedFlag) != 0;
  info.trackName = track.Text("KaxTrackName").value_or(info.trackName);
  info.language = track.String("KaxTrackLanguage").value_or(info.language);
  info.codecId = track.String("KaxCodecID").value_or(info.codecId);
  return info;
}

// An unconnected pin fails here for one reason only.
void Carry(CMatroskaOutputPin& pin, const TrackPinInfo& info) {
  if (FAILED(pin.SetTrack(info))) throw std::bad_alloc();
}

}  // namespace

void COutPinsCreator::CreatePin(const CHeap& track) {
  TrackPinInfo info = CommonFields(track);
  try {
    BuildMediaType(track, info);
  } catch (const MessageError&) {
    // The reason alone does not say what it is about.
    LogFormat("%strack %u (%s)", kRefusedTrack, info.trackNumber, info.codecId.c_str());
    throw;
  }
  m_tracks.try_emplace(info.trackNumber, std::move(info));
}

void COutPinsCreator::BuildMediaType(const CHeap& track, TrackPinInfo& info) const {
  switch (info.trackType) {
    case kTrackTypeVideo:
      return createVideoPin(track, info);
    case kTrackTypeAudio:
      return createAudioPin(track, info);
    case kTrackTypeSubtitle:
      return createSubtitlePin(track, info);
    default:
      throw MessageError("COutPinsCreator::CreatePin  unknown type");
  }
}

void COutPinsCreator::createVideoPin(const CHeap& track, TrackPinInfo& info) const {
  info.mediaType = VideoMediaType(track, m_byteStream);
}

void COutPinsCreator::createAudioPin(const CHeap& track, TrackPinInfo& info) const {
  info.mediaType = AudioMediaType(track);
}

void COutPinsCreator::createSubtitlePin(const CHeap& track, TrackPinInfo& info) const {
  info.mediaType = SubtitleMediaType(track, info.language);
}

COutPinsCreator::Pins COutPinsCreator::CreatePinsForAllTracks(const SharedByPins& shared) {
  StartCreation();
  Pins pins;
  for (const auto& [number, info] : m_tracks) pins.push_back(PinFor(info, shared));
  BuildStreamIndex();
  return pins;
}

COutPinsCreator::Pins COutPinsCreator::CreatePinsByType(const SharedByPins& shared) {
  StartCreation();
  Pins pins;
  const std::string language(LanguageCode(UserLanguageEnglishName()));
  const TrackPinInfo* subtitle = nullptr;
  for (const std::uint32_t type : {kTrackTypeVideo, kTrackTypeAudio, kTrackTypeSubtitle}) {
    const TrackPinInfo* info = ChooseTrack(m_tracks, type, language);
    if (info != nullptr) pins.push_back(PinFor(*info, shared));
    if (type == kTrackTypeSubtitle) subtitle = info;
  }
  if (subtitle != nullptr) {
    const TrackPinInfo& placeholder = AddPlaceholder(subtitle->mediaType);
    if (!subtitle->defaultFlag && !subtitle->forcedFlag) Carry(*pins.back(), placeholder);
  }
  BuildStreamIndex();
  return pins;
}

void COutPinsCreator::StartCreation() {
  m_videoCounter = m_audioCounter = m_subtitleCounter = 0;
  RemovePlaceholder();
}

// Only the first: a second track of that name is a track of the file.
void COutPinsCreator::RemovePlaceholder() {
  const auto found =
      std::ranges::find_if(m_tracks, [](const auto& entry) { return entry.second.trackName == kNoSubtitles; });
  if (found != m_tracks.end()) m_tracks.erase(found);
}

// Tracks that are numbered with gaps may hold the number that would be next; they keep it.
const TrackPinInfo& COutPinsCreator::AddPlaceholder(const CMediaType& mediaType) {
  auto number = static_cast<std::uint32_t>(m_tracks.size() + 1);
  while (m_tracks.contains(number)) ++number;
  TrackPinInfo info;
  info.trackNumber = number;
  info.trackType = kTrackTypeSubtitle;
  info.language.clear();
  info.trackName = kNoSubtitles;
  info.defaultFlag = false;
  info.mediaType = mediaType;
  return m_tracks.try_emplace(number, std::move(info)).first->second;
}

ComPtr<CMatroskaOutputPin> COutPinsCreator::PinFor(const TrackPinInfo& info, const SharedByPins& shared) {
  ComPtr<CMatroskaOutputPin> pin = NewPin(info, shared);
  Carry(*pin, info);
  return pin;
}

ComPtr<CMatroskaOutputPin> COutPinsCreator::NewPin(const TrackPinInfo& info, const SharedByPins& shared) {
  const WideString name = PinName(info.trackType, CounterOf(info.trackType)++, info.language);
  switch (info.trackType) {
    case kTrackTypeVideo:
      return MakeCom<CMatroskaVideoPin>(shared, name);
    case kTrackTypeAudio:
      return MakeCom<CMatroskaAudioPin>(shared, name);
    default:
      return MakeCom<CMatroskaSubtitlePin>(shared, name);
  }
}

std::uint32_t& COutPinsCreator::CounterOf(std::uint32_t trackType) noexcept {
  if (trackType == kTrackTypeVideo) return m_videoCounter;
  return trackType == kTrackTypeAudio ? m_audioCounter : m_subtitleCounter;
}

void COutPinsCreator::BuildStreamIndex() {
  m_streams.clear();
  for (const std::uint32_t type : {kTrackTypeVideo, kTrackTypeAudio, kTrackTypeSubtitle}) {
    for (const auto& [number, info] : m_tracks) {
      if (info.trackType == type) m_streams.emplace(GetStreamCount(), number);
    }
  }
}

bool COutPinsCreator::GetTrackInfoByIndex(std::uint32_t streamIndex, TrackPinInfo& info) const {
  const auto stream = m_streams.find(streamIndex);
  return stream != m_streams.end() && GetTrackInfoByNumber(stream->second, info);
}

bool COutPinsCreator::GetTrackInfoByNumber(std::uint32_t trackNumber, TrackPinInfo& info) const {
  const auto track = m_tracks.find(trackNumber);
  if (track == m_tracks.end()) return false;
  info = track->second;
  return true;
}

void COutPinsCreator::SetH264Form(bool byteStream) noexcept {
  m_byteStream = byteStream;
  for (auto& [number, info] : m_tracks) {
    if (info.trackType == kTrackTypeVideo) tarvex::SetH264Form(info.mediaType, byteStream);
  }
}

bool COutPinsCreator::HasVideo() const noexcept {
  return std::ranges::any_of(m_tracks, [](const auto& entry) { return entry.second.trackType == kTrackTypeVideo; });
}

void COutPinsCreator::Clear() noexcept {
  m_tracks.clear();
  m_streams.clear();
  m_videoCounter = m_audioCounter = m_subtitleCounter = 0;
}

}  // namespace tarvex

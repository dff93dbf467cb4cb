// Records from track entries, pins from records. Called on the thread that opens the file or switches
// streams; see the header.
#include "pins/creator/out_pins_creator.h"

#include <algorithm>
#include <new>
#include <string>

#include "framework/log.h"
#include "framework/message_error.h"
#include "pins/creator/audio_media_type.h"
#include "pins/creator/refused_track.h"
#include "pins/creator/subtitle_media_type.h"
#include "pins/creator/track_elements.h"
#include "pins/creator/video_media_type.h"
#include "pins/formats/h264_form.h"
#include "pins/formats/language_table.h"
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

template <class Pin>
ComPtr<CMatroskaOutputPin> MakePin(PinOwner& owner, const WideString& name) {
  HRESULT unused = S_OK;  // what construction reports changes nothing here
  return MakeCom<Pin>(owner.Filter(), owner.FilterLock(), owner.Host(), &unused, name);
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
  info.mediaType = VideoMediaType(track, m_owner != nullptr && m_owner->AnnexBOutput());
}

void COutPinsCreator::createAudioPin(const CHeap& track, TrackPinInfo& info) const {
  info.mediaType = AudioMediaType(track);
}

void COutPinsCreator::createSubtitlePin(const CHeap& track, TrackPinInfo& info) const {
  info.mediaType = SubtitleMediaType(track, info.language);
}

void COutPinsCreator::CreatePinsForAllTracks() {
  StartCreation(true);
  for (const auto& [number, info] : m_tracks) CreatePinFor(info);
  BuildStreamIndex();
}

void COutPinsCreator::CreatePinsByType() {
  StartCreation(false);
  const std::string language(LanguageCode(UserLanguageEnglishName()));
  CreatePinOfType(kTrackTypeVideo, language);
  CreatePinOfType(kTrackTypeAudio, language);
  const TrackPinInfo* subtitle = CreatePinOfType(kTrackTypeSubtitle, language);
  if (subtitle == nullptr) return BuildStreamIndex();
  const std::uint32_t placeholder = AddPlaceholder(subtitle->mediaType);
  BuildStreamIndex();
  if (!subtitle->defaultFlag && !subtitle->forcedFlag) EnableTrack(placeholder);
}

void COutPinsCreator::StartCreation(bool onePinPerTrack) {
  m_onePinPerTrack = onePinPerTrack;
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
std::uint32_t COutPinsCreator::AddPlaceholder(const CMediaType& mediaType) {
  auto number = static_cast<std::uint32_t>(m_tracks.size() + 1);
  while (m_tracks.contains(number)) ++number;
  TrackPinInfo info;
  info.trackNumber = number;
  info.trackType = kTrackTypeSubtitle;
  info.language.clear();
  info.trackName = kNoSubtitles;
  info.defaultFlag = false;
  info.mediaType = mediaType;
  m_tracks.try_emplace(number, std::move(info));
  return number;
}

void COutPinsCreator::EnableTrack(std::uint32_t trackNumber) {
  if (m_owner == nullptr) return;
  const auto stream = std::ranges::find_if(m_streams, [&](const auto& entry) { return entry.second == trackNumber; });
  if (stream == m_streams.end() || FAILED(m_owner->EnableStream(stream->first))) {
    LogText("COutPinsCreator::CreatePinsByType failed switch subtitles off");
  }
}

const TrackPinInfo* COutPinsCreator::CreatePinOfType(std::uint32_t trackType, const std::string& language) {
  const TrackPinInfo* info = ChooseTrack(m_tracks, trackType, language);
  if (info != nullptr) CreatePinFor(*info);
  return info;
}

void COutPinsCreator::CreatePinFor(const TrackPinInfo& info) {
  if (m_owner == nullptr) return;
  const ComPtr<CMatroskaOutputPin> pin = NewPin(info);
  if (!pin) return;
  // An unconnected pin fails here for one reason only.
  if (FAILED(pin->SetTrack(info))) throw std::bad_alloc();
  m_owner->AppendOutputPin(pin);
}

ComPtr<CMatroskaOutputPin> COutPinsCreator::NewPin(const TrackPinInfo& info) {
  const WideString name = PinName(info.trackType, CounterOf(info.trackType)++, info.language);
  switch (info.trackType) {
    case kTrackTypeVideo:
      return MakePin<CMatroskaVideoPin>(*m_owner, name);
    case kTrackTypeAudio:
      return MakePin<CMatroskaAudioPin>(*m_owner, name);
    default:
      return MakePin<CMatroskaSubtitlePin>(*m_owner, name);
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

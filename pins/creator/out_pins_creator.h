// Turns the track entries of an opened file into stream records, and the records into output pins. A
// member of the filter; every operation runs on the thread that opens the file or switches streams,
// one at a time, so there is no lock.
#pragma once

#include <cstdint>
#include <map>

#include "pins/creator/pin_owner.h"
#include "pins/creator/track_choice.h"
#include "pins/formats/track_pin_info.h"

namespace tarvex {

class CHeap;

class COutPinsCreator {
 public:
  /// `owner` must outlive this object or be replaced; null until the filter sets it. Without one,
  /// records are kept but no pin is made.
  void SetFilter(PinOwner* owner) noexcept { m_owner = owner; }

  /// Builds and keeps the stream record of one track. Makes no pin, whatever its name says. A number
  /// that is already known keeps its first record. Throws MessageError; a failed track leaves no trace.
  void CreatePin(const CHeap& track);

  /// One pin for every track, in track-number order.
  void CreatePinsForAllTracks();

  /// One pin for every kind of track, with the stream that suits the user's language and the tracks'
  /// flags; a file with subtitles also gets a stream that switches them off.
  void CreatePinsByType();

  /// Copies the record of a stream; false, and `info` untouched, when there is none with this index.
  bool GetTrackInfoByIndex(std::uint32_t streamIndex, TrackPinInfo& info) const;
  bool GetTrackInfoByNumber(std::uint32_t trackNumber, TrackPinInfo& info) const;

  /// The form of every H.264 stream in the records, and so in pins that are made from now on.
  void SetH264Form(bool byteStream) noexcept;

  /// Streams as stream selection counts them: videos, then audio, then subtitles.
  std::uint32_t GetStreamCount() const noexcept { return static_cast<std::uint32_t>(m_streams.size()); }

  /// Some stream is a video.
  bool HasVideo() const noexcept;

  /// Forgets records, streams and numbering, as before the first track of a file.
  void Clear() noexcept;

 private:
  void createVideoPin(const CHeap& track, TrackPinInfo& info) const;
  void createAudioPin(const CHeap& track, TrackPinInfo& info) const;
  void createSubtitlePin(const CHeap& track, TrackPinInfo& info) const;

  void BuildMediaType(const CHeap& track, TrackPinInfo& info) const;
  void StartCreation(bool onePinPerTrack);
  void RemovePlaceholder();
  std::uint32_t AddPlaceholder(const CMediaType& mediaType);
  void EnableTrack(std::uint32_t trackNumber);
  const TrackPinInfo* CreatePinOfType(std::uint32_t trackType, const std::string& language);
  void CreatePinFor(const TrackPinInfo& info);
  ComPtr<CMatroskaOutputPin> NewPin(const TrackPinInfo& info);
  std::uint32_t& CounterOf(std::uint32_t trackType) noexcept;
  void BuildStreamIndex();

  PinOwner* m_owner = nullptr;
  TrackMap m_tracks;
  std::map<std::uint32_t, std::uint32_t> m_streams;  // stream index to track number
  std::uint32_t m_videoCounter = 0;                  // the counters number the pins of their kind
  std::uint32_t m_audioCounter = 0;
  std::uint32_t m_subtitleCounter = 0;
  bool m_onePinPerTrack = false;  // which creation ran last; kept for information
};

}  // namespace tarvex

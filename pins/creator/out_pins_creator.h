// Turns the track entries of an opened file into stream records, and the records into output pins. Owned by the
// filter, whose lock is held around every call; application threads.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "framework/com_ptr.h"
#include "pins/creator/track_choice.h"
#include "pins/formats/track_pin_info.h"

namespace tarvex {

class CHeap;
class CMatroskaOutputPin;
struct SharedByPins;

class COutPinsCreator {
 public:
  using Pins = std::vector<ComPtr<CMatroskaOutputPin>>;

  /// Builds and keeps the stream record of one track. Makes no pin, whatever its name says. A number
  /// that is already known keeps its first record. Throws MessageError; a failed track leaves no trace.
  void CreatePin(const CHeap& track);

  // Pins for the filter of `shared`, which adds them to its list in this order. Throw std::bad_alloc.
  /// One pin for every track, in track-number order.
  Pins CreatePinsForAllTracks(const SharedByPins& shared);
  /// One pin for every kind of track, with the stream that suits the user's language and the tracks'
  /// flags; a file with subtitles also gets a stream that switches them off, which the pin carries where no
  /// subtitles are asked for.
  Pins CreatePinsByType(const SharedByPins& shared);

  /// Copies the record of a stream; false, and `info` untouched, when there is none with this index.
  bool GetTrackInfoByIndex(std::uint32_t streamIndex, TrackPinInfo& info) const;
  bool GetTrackInfoByNumber(std::uint32_t trackNumber, TrackPinInfo& info) const;

  /// The form of every H.264 stream in the records and of those to come, and so in pins that are made from now on.
  void SetH264Form(bool byteStream) noexcept;

  /// Streams as stream selection counts them: videos, then audio, then subtitles.
  std::uint32_t GetStreamCount() const noexcept { return static_cast<std::uint32_t>(m_streams.size()); }

  /// Some stream is a video.
  bool HasVideo() const noexcept;

  /// Forgets records, streams and numbering, as before the first track of a file. The H.264 form stays.
  void Clear() noexcept;

 private:
  void createVideoPin(const CHeap& track, TrackPinInfo& info) const;
  void createAudioPin(const CHeap& track, TrackPinInfo& info) const;
  void createSubtitlePin(const CHeap& track, TrackPinInfo& info) const;

  void BuildMediaType(const CHeap& track, TrackPinInfo& info) const;
  void StartCreation();
  void RemovePlaceholder();
  const TrackPinInfo& AddPlaceholder(const CMediaType& mediaType);
  ComPtr<CMatroskaOutputPin> PinFor(const TrackPinInfo& info, const SharedByPins& shared);
  ComPtr<CMatroskaOutputPin> NewPin(const TrackPinInfo& info, const SharedByPins& shared);
  std::uint32_t& CounterOf(std::uint32_t trackType) noexcept;
  void BuildStreamIndex();

  TrackMap m_tracks;
  std::map<std::uint32_t, std::uint32_t> m_streams;  // stream index to track number
  std::uint32_t m_videoCounter = 0;                  // the counters number the pins of their kind
  std::uint32_t m_audioCounter = 0;
  std::uint32_t m_subtitleCounter = 0;
  bool m_byteStream = false;  // the H.264 form
};

}  // namespace tarvex

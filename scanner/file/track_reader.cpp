#include "scanner/file/track_reader.h"

#include <matroska/KaxSemantic.h>
#include <matroska/KaxTrackAudio.h>
#include <matroska/KaxTrackEntryData.h>
#include <matroska/KaxTrackVideo.h>

#include <algorithm>
#include <span>

#include "framework/log.h"
#include "scanner/elements/element_walker.h"
#include "scanner/file/content_encodings.h"
#include "scanner/limits.h"

namespace tarvex {

namespace {

struct KeptElement {
  const libebml::EbmlCallbacks& (*info)();
  const char* key;
};

template <class T>
const libebml::EbmlCallbacks& InfoOf() {
  return EBML_INFO(T);
}

using namespace libmatroska;  // NOLINT(google-build-using-namespace): the tables name little else

constexpr KeptElement kTrackElements[] = {
    {InfoOf<KaxTrackNumber>, "KaxTrackNumber"},
    {InfoOf<KaxTrackType>, "KaxTrackType"},
    {InfoOf<KaxCodecID>, "KaxCodecID"},
    {InfoOf<KaxCodecPrivate>, "KaxCodecPrivate"},
    {InfoOf<KaxTrackName>, "KaxTrackName"},
    {InfoOf<KaxTrackLanguage>, "KaxTrackLanguage"},
    {InfoOf<KaxTrackFlagDefault>, "KaxTrackFlagDefault"},
    {InfoOf<KaxTrackFlagForced>, "KaxTrackFlagForced"},
    {InfoOf<KaxTrackDefaultDuration>, "KaxTrackDefaultDuration"},
};

constexpr KeptElement kVideoElements[] = {
    {InfoOf<KaxVideoPixelWidth>, "KaxVideoPixelWidth"},
    {InfoOf<KaxVideoPixelHeight>, "KaxVideoPixelHeight"},
    {InfoOf<KaxVideoDisplayWidth>, "KaxVideoDisplayWidth"},
    {InfoOf<KaxVideoDisplayHeight>, "KaxVideoDisplayHeight"},
};

constexpr KeptElement kAudioElements[] = {
    {InfoOf<KaxAudioSamplingFreq>, "KaxAudioSamplingFreq"},
    {InfoOf<KaxAudioChannels>, "KaxAudioChannels"},
    {InfoOf<KaxAudioBitDepth>, "KaxAudioBitDepth"},
};

void StoreIfKept(const libebml::EbmlElement& element, std::span<const KeptElement> kept, CHeap& track) {
  const libebml::EbmlId id(element);
  const auto found =
      std::find_if(kept.begin(), kept.end(), [&id](const KeptElement& row) { return EBML_INFO_ID(row.info()) == id; });
  if (found != kept.end()) track.Store(found->key, element);
}

void StoreChildren(const libebml::EbmlMaster& master, std::span<const KeptElement> kept, CHeap& track) {
  for (const libebml::EbmlElement* child : master) StoreIfKept(*child, kept, track);
}

void ReadTrackEntry(const KaxTrackEntry& entry, CHeap& track) {
  for (libebml::EbmlElement* child : entry) {
    if (auto* encodings = ElementAs<KaxContentEncodings>(child)) {
      ReadContentEncodings(*encodings, track);
    } else if (const auto* video = ElementAs<KaxTrackVideo>(child)) {
      StoreChildren(*video, kVideoElements, track);
    } else if (const auto* audio = ElementAs<KaxTrackAudio>(child)) {
      StoreChildren(*audio, kAudioElements, track);
    } else {
      StoreIfKept(*child, kTrackElements, track);
    }
  }
}

class TrackVisitor final : public ElementVisitor {
 public:
  TrackVisitor(CMatroskaInfo& info, const std::function<void()>& onTrack) : m_info(info), m_onTrack(onTrack) {}

  bool Show(libebml::EbmlElement& element) override {
    const auto* entry = ElementAs<KaxTrackEntry>(&element);
    if (entry == nullptr) return true;
    if (m_info.TrackCount() >= limits::kTracks) {
      LogText("<KaxTracks> more tracks than are read");
      return false;
    }
    CHeap& track = m_info.AddTrack();
    LogFormat("Current Heap Num: %d", static_cast<int>(m_info.CurrentHeap()));
    ReadTrackEntry(*entry, track);
    m_info.FinishTrack();
    m_onTrack();
    return true;
  }

 private:
  CMatroskaInfo& m_info;
  const std::function<void()>& m_onTrack;
};

}  // namespace

void ReadTracks(ElementWalker& walker, KaxTracks& tracks, CMatroskaInfo& info, const std::function<void()>& onTrack) {
  LogText("* Process Tracks Begin");
  TrackVisitor visitor(info, onTrack);
  walker.ReadEntries(tracks, {limits::kTrackData, limits::kTracksData}, visitor);
  LogText("* Process Tracks End");
}

}  // namespace tarvex

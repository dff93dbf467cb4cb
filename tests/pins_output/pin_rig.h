// An output pin with all it needs around it: a filter, a host that notes what is asked of it, and a sink
// downstream. Owned by one test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/critical_section.h"
#include "pins/output/matroska_audio_pin.h"
#include "pins/output/matroska_video_pin.h"
#include "pins/output/pin_host.h"
#include "tests/framework/fakes.h"
#include "tests/support/sink_filter.h"

namespace tarvex::test {

/// Positions as a filter keeps them, without a worker behind them.
class FakeHost : public PinHost {
 public:
  PlayRange Range() const override;
  PlayRange Positions() override;
  REFERENCE_TIME Duration() const override { return duration; }
  HRESULT SetPlayRange(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
  void SetRate(double rate) override;
  void SetStartPosition(REFERENCE_TIME start) override;
  bool ClaimSeekingOwner(const CMatroskaOutputPin* pin) override;
  void ClearSeekingOwner() override;
  void SetTimeFormatOnAllPins(const GUID& format) override;
  REFERENCE_TIME DefaultFrameDuration(std::uint32_t trackNumber) const override;
  void SetHoldingOnAllPins(bool on) override;
  HRESULT ReleaseHeldFrames(REFERENCE_TIME first) override;

  // Set by a test before threads start.
  REFERENCE_TIME duration = 1000000000;
  REFERENCE_TIME frameDuration = 0;  // of track 1
  std::vector<CMatroskaOutputPin*> pins;

  int moves = 0;  // calls of SetPlayRange

 private:
  mutable CCritSec m_lock{"FakeHost", LockRank::kLeaf};
  PlayRange m_range;
  const CMatroskaOutputPin* m_owner = nullptr;
};

/// Collects what is logged from construction to destruction.
class TextLog {
 public:
  TextLog();
  ~TextLog();
  TextLog(const TextLog&) = delete;
  TextLog& operator=(const TextLog&) = delete;

  int CountOf(std::string_view text);

 private:
  static void Take(void* context, const char* text);

  CCritSec m_lock{"TextLog", LockRank::kLogSink};
  std::vector<std::string> m_texts;
};

/// Waits until `done()` holds; false after ten seconds.
bool WaitFor(const std::function<bool()>& done);

/// A stream record with this number and a distinguishable media type.
TrackPinInfo TrackOf(std::uint32_t number, const GUID& majorType);

/// One pin of class Pin, connected to a sink unless told otherwise. At the end everything is stopped and
/// taken apart.
template <class Pin>
class Rig {
 public:
  explicit Rig(SinkKind kind = SinkKind::kRecording, bool connect = true)
      : upstream(MakeCom<TestFilter>()), sink(CSinkFilter::Create(kind)) {
    HRESULT hr = S_OK;
    pin = upstream->Add(new Pin(upstream.Get(), &upstream->lock, &host, &hr, OLESTR("Out")));
    EXPECT_EQ(hr, S_OK);
    host.pins.push_back(pin);
    EXPECT_EQ(pin->SetTrack(TrackOf(1, MajorType())), S_OK);
    if (connect) {
      EXPECT_EQ(pin->Connect(sink->Pin(), nullptr), S_OK);
    }
  }
  ~Rig() {
    Stop();
    sink->Stop();
    pin->Disconnect();
    sink->Pin()->Disconnect();
  }
  Rig(const Rig&) = delete;
  Rig& operator=(const Rig&) = delete;

  static const GUID& MajorType();

  void Start() {
    EXPECT_EQ(sink->Pause(), S_OK);
    EXPECT_EQ(upstream->Pause(), S_OK);
  }
  /// The upstream filter alone.
  void Stop() { EXPECT_EQ(upstream->Stop(), S_OK); }

  /// A frame of track 1 with these times in the file, in 100 ns units.
  bool Send(REFERENCE_TIME start, REFERENCE_TIME duration = 400000, bool key = true, std::size_t size = 100) {
    const std::vector<std::uint8_t> bytes(size, 5);
    FrameInfo frame;
    frame.keyFrame = key;
    frame.trackNumber = 1;
    frame.start = static_cast<std::uint64_t>(start);
    frame.duration = static_cast<std::uint64_t>(duration);
    frame.data = bytes.data();
    frame.size = static_cast<std::uint32_t>(size);
    return pin->OnData(frame);
  }

  void Flush() {
    pin->DeliverBeginFlush();
    pin->DeliverEndFlush();
  }

  /// Until this many samples have reached the sink.
  bool WaitForSamples(std::size_t count) {
    return WaitFor([&] { return sink->CountOf(SinkEvent::Kind::kSample) >= count; });
  }
  bool WaitForEnds(std::size_t count) {
    return WaitFor([&] { return sink->CountOf(SinkEvent::Kind::kEndOfStream) >= count; });
  }

  FakeHost host;
  ComPtr<TestFilter> upstream;
  Pin* pin = nullptr;
  ComPtr<CSinkFilter> sink;
};

template <>
inline const GUID& Rig<CMatroskaVideoPin>::MajorType() {
  return MEDIATYPE_Video;
}
template <>
inline const GUID& Rig<CMatroskaAudioPin>::MajorType() {
  return MEDIATYPE_Audio;
}

using VideoRig = Rig<CMatroskaVideoPin>;
using AudioRig = Rig<CMatroskaAudioPin>;

/// The events' kinds in one letter each: n(ew segment) s(ample) e(nd) b(egin flush) f(lush ended).
std::string Order(const std::vector<SinkEvent>& events);

}  // namespace tarvex::test

// See delivery_model.h.
#include "tests/seeking/delivery_model.h"

#include <algorithm>
#include <optional>

namespace tarvex::test {
namespace {

struct Pin {
  bool isVideo = false;
  bool waitsForKey = true;
  bool stopReached = false;
  bool ended = false;
  std::vector<ManifestFrame> held{};
  ModelStream out{};
};

class Model {
 public:
  Model(const std::vector<ModelPin>& pins, const ModelRange& range) : m_origin(range.start), m_stop(range.stop) {
    for (const ModelPin& pin : pins) {
      m_pins.push_back({.isVideo = pin.isVideo});
      m_holding = m_holding || pin.isVideo;
    }
  }

  void Take(const ModelFrame& next) {
    Pin& pin = m_pins[next.pin];
    if (pin.ended || IsPastStop(pin, next.frame)) return;
    if (pin.isVideo && pin.waitsForKey && !next.frame.key) return;
    pin.waitsForKey = false;
    if (!m_holding) return Give(pin, next.frame);
    pin.held.push_back(next.frame);
    if (pin.isVideo) ReleaseWhenKnown(pin);
  }

  std::vector<ModelStream> End() {
    for (Pin& pin : m_pins) EndPin(pin);
    std::vector<ModelStream> streams;
    for (Pin& pin : m_pins) streams.push_back(std::move(pin.out));
    return streams;
  }

 private:
  bool IsPastStop(Pin& pin, const ManifestFrame& frame) {
    if (frame.time + frame.duration > m_stop) pin.stopReached = true;
    if (!pin.stopReached || (pin.isVideo && frame.time <= m_stop)) return false;
    EndPin(pin);
    return true;
  }

  void EndPin(Pin& pin) {
    if (!pin.ended && pin.isVideo && m_holding) {
      if (!pin.held.empty()) {
        const auto latest = std::ranges::max(pin.held, {}, &ManifestFrame::time).time;
        Release(pin, Nearest(pin.held, std::min(m_origin, latest)));
      }
      ReleaseAll();
    }
    pin.ended = true;
  }

  void ReleaseWhenKnown(Pin& pin) {
    // Begin with the last key frame that is not after the wanted time.
    for (std::size_t k = pin.held.size(); k-- > 1;) {
      if (!pin.held[k].key || pin.held[k].time > m_origin) continue;
      pin.held.erase(pin.held.begin(), pin.held.begin() + static_cast<std::ptrdiff_t>(k));
      break;
    }
    if (std::ranges::count_if(pin.held, &ManifestFrame::key) < 2) return;
    const bool beyond = std::ranges::any_of(pin.held, [&](const auto& frame) { return frame.time > m_origin; });
    if (!beyond && m_origin != 0) return;
    Release(pin, beyond ? Nearest(pin.held, m_origin) : 0);
    ReleaseAll();
  }

  // The last time that is not after the wanted one; else the first of all.
  static std::int64_t Nearest(const std::vector<ManifestFrame>& held, std::int64_t wanted) {
    std::optional<std::int64_t> best;
    for (const auto& frame : held) {
      if (frame.time <= wanted) best = std::max(best.value_or(frame.time), frame.time);
    }
    return best ? *best : std::ranges::min(held, {}, &ManifestFrame::time).time;
  }

  // What starts before the picture that comes first is of no use, as far as it leads.
  void Release(const Pin& video, std::int64_t origin) {
    m_origin = origin;
    const std::int64_t first = video.held.front().time;
    for (Pin& pin : m_pins) {
      const auto useful = std::ranges::find_if(pin.held, [&](const auto& frame) { return frame.time >= first; });
      pin.held.erase(pin.held.begin(), useful);
    }
  }

  void ReleaseAll() {
    m_holding = false;
    for (Pin& pin : m_pins) {
      for (const ManifestFrame& frame : pin.held) Give(pin, frame);
      pin.held.clear();
    }
  }

  void Give(Pin& pin, const ManifestFrame& frame) const {
    const std::int64_t start = frame.time - m_origin;
    if (!pin.isVideo && start < 0 && start + frame.duration < 0) return;
    if (pin.out.samples.empty()) pin.out.segmentStart = m_origin;
    pin.out.samples.push_back({start, start + frame.duration, frame.key, frame.sha1});
  }

  std::vector<Pin> m_pins;
  std::int64_t m_origin;
  const std::int64_t m_stop;
  bool m_holding = false;
};

}  // namespace

std::uint64_t FirstCluster(const std::vector<ManifestSeekPoint>& index, std::int64_t start, std::int64_t duration) {
  if (start <= 0 || index.empty()) return 0;
  std::size_t entry = 0;
  if (duration > 0)
    entry = static_cast<std::size_t>((index.size() - 1) * static_cast<std::uint64_t>(start) /
                                     static_cast<std::uint64_t>(duration));
  if (entry >= index.size()) return index[0].position;
  while (entry > 0 && index[entry].time > start) --entry;
  if (index[entry].time <= start) {
    while (entry + 1 < index.size() && index[entry + 1].time <= start) ++entry;
  }
  return index[entry > 0 ? entry - 1 : 0].position;
}

std::vector<ModelStream> Deliver(const std::vector<ModelPin>& pins, const std::vector<ModelFrame>& frames,
                                 const ModelRange& range) {
  Model model(pins, range);
  for (const ModelFrame& frame : frames) model.Take(frame);
  return model.End();
}

}  // namespace tarvex::test

// See whole_scan.h.
#include "tests/damage/whole_scan.h"

#include <map>
#include <numeric>
#include <optional>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/annex_b_converter.h"
#include "scanner/ebml_scanner.h"
#include "scanner/read_ahead_reader.h"
#include "tests/damage/heap_count.h"
#include "tests/support/memory_reader.h"

namespace tarvex::test {
namespace {

/// Looks at every byte that would be delivered.
class Consumer : public CMatroskaCallback {
 public:
  explicit Consumer(CEbmlScanner& scanner) : m_scanner(scanner) {}
  virtual ~Consumer() = default;

  void OnTrack(std::uint32_t heapIndex) override {
    // The filter refuses the file here; the rest of it is of interest all the same.
    try {
      m_records.CreatePin(*m_scanner.TrackAt(heapIndex));
    } catch (const MessageError&) {
      return;
    }
  }
  bool ProcessEvents() override { return false; }
  bool OnData(const FrameInfo& frame) override {
    FrameInfo decoded = frame;
    m_scanner.Decode(decoded);
    try {
      if (auto& converter = ConverterOf(frame.trackNumber)) decoded = converter->Convert(decoded);
    } catch (const MessageError&) {
      return true;  // larger than can be delivered
    }
    m_sum = std::accumulate(decoded.data, decoded.data + decoded.size, m_sum);
    ++m_frames;
    return true;
  }

  std::uint64_t Frames() const { return m_frames; }
  std::uint64_t Sum() const { return m_sum; }

 private:
  std::optional<CAnnexBConverter>& ConverterOf(std::uint32_t track) {
    const auto found = m_converters.find(track);
    if (found != m_converters.end()) return found->second;
    m_records.SetH264Form(true);
    TrackPinInfo record;
    const bool known = m_records.GetTrackInfoByNumber(track, record);
    return m_converters[track] = known ? CAnnexBConverter::For(record.mediaType) : std::nullopt;
  }

  CEbmlScanner& m_scanner;
  COutPinsCreator m_records;
  std::map<std::uint32_t, std::optional<CAnnexBConverter>> m_converters;
  std::uint64_t m_frames = 0;
  std::uint64_t m_sum = 0;
};

void Scan(MemoryReader& reader, ScanResult& result) {
  const auto readAhead = MakeCom<CReadAheadReader>(&reader);
  CEbmlScanner scanner;
  Consumer consumer(scanner);
  scanner.SetCallback(&consumer);
  try {
    scanner.CanProcess(readAhead.Get());
    result.opened = true;
    scanner.Process();
    scanner.BuildIndex();
    scanner.SetStartTime(scanner.Duration() / 2 + 1);
    scanner.Process();
  } catch (const MessageError&) {
    result.stopped = true;
  }
  result.frames = consumer.Frames();
  result.sum = consumer.Sum();
}

}  // namespace

ScanResult ScanWhole(std::vector<std::uint8_t> bytes) {
  MemoryReader reader(std::move(bytes));
  ScanResult result;
  const HeapCount heap;
  Scan(reader, result);
  result.peak = heap.Peak();
  result.left = heap.Now();
  return result;
}

}  // namespace tarvex::test

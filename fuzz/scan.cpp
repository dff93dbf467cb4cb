// See scan.h.
#include "fuzz/scan.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/annex_b_converter.h"
#include "scanner/source/read_ahead_reader.h"

namespace tarvex::fuzz {
namespace {

/// Looks at every byte that would be delivered.
class Consumer : public CMatroskaCallback {
 public:
  Consumer(CEbmlScanner& scanner, ScanResult& result) : m_scanner(scanner), m_result(result) {
    m_records.SetH264Form(true);
  }
  virtual ~Consumer() = default;

  void OnTrack(std::uint32_t heapIndex) override {
    ++m_result.tracks;
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
    ++m_result.frames;
    m_result.largestFrame = std::max(m_result.largestFrame, decoded.size);
    try {
      if (auto& converter = ConverterOf(frame.trackNumber)) decoded = converter->Convert(decoded);
    } catch (const MessageError&) {
      return true;  // larger than can be delivered
    }
    m_result.sum = std::accumulate(decoded.data, decoded.data + decoded.size, m_result.sum);
    return true;
  }

 private:
  std::optional<AnnexBConverter>& ConverterOf(std::uint32_t track) {
    const auto [place, isNew] = m_converters.try_emplace(track);
    TrackPinInfo record;
    if (isNew && m_records.GetTrackInfoByNumber(track, record)) place->second = AnnexBConverter::For(record.mediaType);
    return place->second;
  }

  CEbmlScanner& m_scanner;
  ScanResult& m_result;
  COutPinsCreator m_records;
  std::map<std::uint32_t, std::optional<AnnexBConverter>> m_converters;
};

}  // namespace

ScanResult ScanStream(IAsyncReader& reader, const std::function<void(CEbmlScanner&)>& use) {
  const auto readAhead = MakeCom<ReadAheadReader>(&reader);
  ScanResult result;
  CEbmlScanner scanner;
  Consumer consumer(scanner, result);
  scanner.SetCallback(&consumer);
  try {
    scanner.CanProcess(readAhead.Get());
    result.opened = true;
    use(scanner);
  } catch (const MessageError&) {
  }
  result.chapters = scanner.Chapters().size();
  result.indexEntries = scanner.Index().size();
  return result;
}

void ScanWhole(CEbmlScanner& scanner) {
  scanner.Process();
  scanner.BuildIndex();
  scanner.SetStartTime(scanner.Duration() / 2 + 1);
  scanner.Process();
}

}  // namespace tarvex::fuzz

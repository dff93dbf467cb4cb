// The scanner over the input as a file.
#include <initializer_list>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "fuzz/targets.h"
#include "scanner/ebml_scanner.h"
#include "scanner/index_search.h"
#include "scanner/read_ahead_reader.h"
#include "tests/support/memory_reader.h"

namespace tarvex::fuzz {

namespace {

/// Reads every frame and event as a filter would.
class Consumer : public CMatroskaCallback {
 public:
  explicit Consumer(CEbmlScanner& scanner) : m_scanner(scanner) {}
  void OnTrack(std::uint32_t heapIndex) override { m_tracks += m_scanner.TrackAt(heapIndex) != nullptr ? 1 : 0; }
  bool ProcessEvents() override { return false; }
  bool OnData(const FrameInfo& frame) override {
    FrameInfo decoded = frame;
    m_scanner.Decode(decoded);
    for (std::uint32_t i = 0; i < decoded.size; ++i) m_sum += decoded.data[i];
    return true;
  }
  std::uint64_t Sum() const { return m_sum + m_tracks; }

 private:
  CEbmlScanner& m_scanner;
  std::uint64_t m_sum = 0;
  std::uint64_t m_tracks = 0;
};

template <class Use>
void WithOpenFile(Input file, Use&& use) {
  test::MemoryReader reader(std::vector<std::uint8_t>(file.begin(), file.end()));
  const auto readAhead = MakeCom<CReadAheadReader>(&reader);
  CEbmlScanner scanner;
  Consumer consumer(scanner);
  scanner.SetCallback(&consumer);
  try {
    scanner.CanProcess(readAhead.Get());
    use(scanner);
  } catch (const MessageError&) {  // a refusal is an answer
  }
  volatile std::uint64_t used = consumer.Sum();
  static_cast<void>(used);
}

}  // namespace

void FuzzOpen(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
    for (std::uint32_t track = 0; track < scanner.Tracks(); ++track) {
      scanner.DefaultFrameDuration(scanner.TrackAt(track)->Unsigned("KaxTrackNumber").value_or(0));
    }
    static_cast<void>(scanner.Duration());
  });
}

void FuzzIndex(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
    scanner.BuildIndex();
    for (const std::uint64_t time : {std::uint64_t{0}, std::uint64_t{1}, scanner.Duration(), ~std::uint64_t{0}}) {
      const std::int32_t entry = FindIndexEntry(scanner.Index(), time, scanner.Duration());
      if (entry != 0 && static_cast<std::size_t>(entry) >= scanner.Index().size()) __builtin_trap();
    }
  });
}

void FuzzDeliver(Input file) {
  WithOpenFile(file, [](CEbmlScanner& scanner) {
    scanner.Process();
    scanner.SetStartTime(scanner.Duration() / 2 + 1);
    scanner.Process();
  });
}

}  // namespace tarvex::fuzz

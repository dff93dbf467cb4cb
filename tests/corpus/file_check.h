// Opens one corpus file through the whole filter, plays it to its end, and says what differs from the
// manifest. Used by one thread, which corpus_test gives up when it takes too long.
#pragma once

#include <string>
#include <vector>

#include "tests/corpus/expected_pins.h"
#include "tests/corpus/manifest.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {

class FileCheck {
 public:
  explicit FileCheck(const ManifestFile& file) : m_file(file) {}

  /// One text per difference; none when the file is read as it must be.
  std::vector<std::string> Run();

 private:
  void CheckRefusal(HRESULT result, LogCapture& log);
  void CheckOpened(TestGraph& graph);
  void CheckDocType(IBaseFilter* filter);
  void CheckChapters(IBaseFilter* filter);
  void CheckMarkers(IBaseFilter* filter);
  void CheckPins(const std::vector<ComPtr<IPin>>& pins);
  void CheckMediaType(IPin* pin, const ExpectedPin& expected);
  void CheckDuration(IPin* pin);
  void Play(TestGraph& graph);
  void CheckStream(SinkFilter& sink, const ExpectedPin& expected);
  void Add(const std::string& difference);

  const ManifestFile& m_file;
  std::vector<ExpectedPin> m_expected;
  std::vector<std::string> m_differences;
};

}  // namespace tarvex::test

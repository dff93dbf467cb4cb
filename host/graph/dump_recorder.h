// Writes down what reaches one pin, and keeps the bytes on request. Filled on the pin's streaming thread,
// read by the dump command after the graph has stopped.
#pragma once

#include <string>
#include <vector>

#include "framework/critical_section.h"
#include "host/graph/sample_observer.h"
#include "host/report/dump_report.h"
#include "host/system/file_handle.h"

namespace tarvex::host {

class DumpRecorder : public SampleObserver {
 public:
  /// The bytes of all samples go to `bytes`, one after another; an empty handle keeps none.
  explicit DumpRecorder(FileHandle bytes) : m_bytes(std::move(bytes)) {}

  void OnSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
  void OnSample(const SampleView& sample) override;
  void OnEndOfStream() override;

  std::vector<DumpEvent> TakeEvents();
  /// Some bytes could not be written.
  bool HasWriteFailed();

 private:
  void Append(DumpEvent event);

  CCritSec m_lock{"DumpRecorder", LockRank::kVisited};
  std::vector<DumpEvent> m_events;  // under m_lock
  bool m_writeFailed = false;       // under m_lock
  FileHandle m_bytes;               // the streaming thread's
};

}  // namespace tarvex::host

#include "host/graph/dump_recorder.h"

#include "host/report/checksum.h"

namespace tarvex::host {

void DumpRecorder::OnSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  DumpEvent event;
  event.kind = DumpEvent::Kind::kSegment;
  event.start = start;
  event.stop = stop;
  event.rate = rate;
  Append(std::move(event));
}

void DumpRecorder::OnSample(const SampleView& sample) {
  DumpEvent event;
  event.start = sample.start;
  event.stop = sample.stop;
  event.sync = sample.sync;
  event.discontinuity = sample.discontinuity;
  event.preroll = sample.preroll;
  event.typeChange = sample.typeChange;
  event.size = static_cast<std::uint32_t>(sample.data.size());
  event.sha1 = Sha1Text(sample.data);
  const bool failed = m_bytes && !m_bytes.Write(sample.data.data(), sample.data.size());
  Append(std::move(event));
  const CAutoLock hold(m_lock);
  m_writeFailed = m_writeFailed || failed;
}

void DumpRecorder::OnEndOfStream() {
  DumpEvent event;
  event.kind = DumpEvent::Kind::kEnd;
  Append(std::move(event));
}

void DumpRecorder::Append(DumpEvent event) {
  const CAutoLock hold(m_lock);
  m_events.push_back(std::move(event));
}

std::vector<DumpEvent> DumpRecorder::TakeEvents() {
  const CAutoLock hold(m_lock);
  return std::move(m_events);
}

bool DumpRecorder::HasWriteFailed() {
  const CAutoLock hold(m_lock);
  return m_writeFailed;
}

}  // namespace tarvex::host

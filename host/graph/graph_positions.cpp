#include "host/graph/graph_positions.h"

#include <utility>

#include "host/report/time_text.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"

namespace tarvex::host {

GraphPositions::GraphPositions(IGraphBuilder* graph, std::string file)
    : m_seeking(QueryFor<IMediaSeeking>(graph)), m_file(std::move(file)) {}

std::optional<std::int64_t> GraphPositions::Current() const {
  LONGLONG position = 0;
  if (!m_seeking || FAILED(m_seeking->GetCurrentPosition(&position))) return std::nullopt;
  return position;
}

std::optional<std::int64_t> GraphPositions::Duration() const {
  LONGLONG duration = 0;
  if (!m_seeking || FAILED(m_seeking->GetDuration(&duration)) || duration == kOpenTime) return std::nullopt;
  return duration;
}

// The stop goes along each time: the splitter takes both times or none.
void GraphPositions::Seek(std::int64_t start) {
  LONGLONG current = start;
  LONGLONG stop = m_stop.value_or(Duration().value_or(kOpenTime));
  const HRESULT result = m_seeking ? m_seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, &stop,
                                                             AM_SEEKING_AbsolutePositioning)
                                   : E_NOINTERFACE;
  if (SUCCEEDED(result)) return;
  throw HostError(ExitCode::kPlayback, m_file + ": cannot seek to " + TimeText(start) + ": " + ResultText(result));
}

}  // namespace tarvex::host

#include "host/graph/graph_events.h"

#include "framework/condition_variable.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"

namespace tarvex::host {

namespace {

void HandleMessages() {
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace

GraphEvents::GraphEvents(IGraphBuilder* graph) {
  OAEVENT handle = 0;
  HRESULT result = graph->QueryInterface(IID_IMediaEventEx, m_events.PutVoid());
  if (SUCCEEDED(result)) result = m_events->GetEventHandle(&handle);
  if (FAILED(result)) throw HostError(ExitCode::kInternal, "the graph has no events: " + ResultText(result));
  m_signal = reinterpret_cast<HANDLE>(handle);  // NOLINT(performance-no-int-to-ptr): the interface has it so
}

GraphEnd GraphEvents::TakeEvents() {
  LONG code = 0;
  LONG_PTR first = 0;
  LONG_PTR second = 0;
  GraphEnd end = GraphEnd::kNone;
  while (end == GraphEnd::kNone && SUCCEEDED(m_events->GetEvent(&code, &first, &second, 0))) {
    if (code == EC_COMPLETE) end = GraphEnd::kComplete;
    if (code == EC_USERABORT) end = GraphEnd::kClosed;
    if (code == EC_ERRORABORT || code == EC_STREAM_ERROR_STOPPED) {
      m_error = static_cast<HRESULT>(first);
      end = GraphEnd::kAborted;
    }
    m_events->FreeEventParams(code, first, second);
  }
  return end;
}

GraphEnd GraphEvents::Wait(DWORD milliseconds, HANDLE attention) {
  const HANDLE handles[] = {m_interrupt.Event(), m_signal, attention};
  const DWORD count = attention == nullptr ? 2 : 3;
  const ULONGLONG begin = MonotonicMilliseconds();
  for (;;) {
    const GraphEnd end = TakeEvents();
    if (end != GraphEnd::kNone) return end;
    const ULONGLONG passed = MonotonicMilliseconds() - begin;
    if (milliseconds != INFINITE && passed >= milliseconds) return GraphEnd::kNone;
    const DWORD left = milliseconds == INFINITE ? INFINITE : milliseconds - static_cast<DWORD>(passed);
    const DWORD woken = MsgWaitForMultipleObjects(count, handles, FALSE, left, QS_ALLINPUT);
    if (woken == WAIT_OBJECT_0) return GraphEnd::kInterrupted;
    if (count == 3 && woken == WAIT_OBJECT_0 + 2) return GraphEnd::kNone;
    HandleMessages();
  }
}

}  // namespace tarvex::host

// Plays a file as a simple player does: RenderFile and no word about any filter. Prints where the
// splitter's module was loaded from. Usage: render_file FILE. Run by the test of the packages.
#include <dshow.h>
#include <wrl/client.h>

#include <array>
#include <cstdio>

#include "include/tarvex/class_ids.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr long kLimit = 20'000;  // milliseconds; the sample has five seconds

int Fail(HRESULT result, const char* what) {
  std::printf("%s failed: %08lX\n", what, static_cast<unsigned long>(result));
  return 1;
}

bool HasSplitter(IGraphBuilder* graph) {
  ComPtr<IEnumFilters> list;
  if (FAILED(graph->EnumFilters(&list))) return false;
  ComPtr<IBaseFilter> filter;
  while (list->Next(1, filter.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    CLSID clsid{};
    if (SUCCEEDED(filter->GetClassID(&clsid)) && clsid == tarvex::CLSID_MatroskaSplitter) return true;
  }
  return false;
}

template <class I>
HRESULT Ask(const ComPtr<IGraphBuilder>& graph, const IID& iid, ComPtr<I>& out) {
  return graph->QueryInterface(iid, reinterpret_cast<void**>(out.ReleaseAndGetAddressOf()));
}

// A clock would only make the test longer.
HRESULT PlayToTheEnd(const ComPtr<IGraphBuilder>& graph) {
  ComPtr<IMediaFilter> media;
  ComPtr<IMediaControl> control;
  ComPtr<IMediaEvent> events;
  HRESULT result = Ask(graph, IID_IMediaFilter, media);
  if (SUCCEEDED(result)) result = Ask(graph, IID_IMediaControl, control);
  if (SUCCEEDED(result)) result = Ask(graph, IID_IMediaEvent, events);
  if (SUCCEEDED(result)) result = media->SetSyncSource(nullptr);
  if (SUCCEEDED(result)) result = control->Run();
  long code = 0;
  if (SUCCEEDED(result)) result = events->WaitForCompletion(kLimit, &code);
  if (control) control->Stop();
  return SUCCEEDED(result) && code != EC_COMPLETE ? E_FAIL : result;
}

int Play(const wchar_t* file) {
  ComPtr<IGraphBuilder> graph;
  HRESULT result = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph);
  if (FAILED(result)) return Fail(result, "the graph");
  result = graph->RenderFile(file, nullptr);
  if (FAILED(result)) return Fail(result, "RenderFile");
  if (!HasSplitter(graph.Get())) return Fail(E_FAIL, "choosing the splitter");
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(GetModuleHandleW(L"tarvex.dll"), path.data(), MAX_PATH);
  std::printf("module %ls\n", path.data());
  result = PlayToTheEnd(graph);
  if (FAILED(result)) return Fail(result, "playing");
  std::printf("played\n");
  return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return std::printf("usage: render_file FILE\n"), 2;
  const HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  if (FAILED(result)) return Fail(result, "COM");
  const int code = Play(arguments[1]);
  CoUninitialize();
  return code;
}

// Plays a file as a simple player does: RenderFile and no word about any filter. Prints where the
// splitter's module was loaded from. Usage: render_file FILE. Run by the test of the packages.
#include <dshow.h>
#include <wrl/client.h>

#include <array>
#include <cstdio>

using Microsoft::WRL::ComPtr;

namespace {

constexpr long kLimit = 20'000;  // milliseconds; the sample has five seconds

int Fail(HRESULT result, const char* what) {
  std::printf("%s failed: %08lX\n", what, static_cast<unsigned long>(result));
  return 1;
}

int Play(const wchar_t* file) {
  ComPtr<IGraphBuilder> graph;
  HRESULT result = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph);
  if (SUCCEEDED(result)) result = graph->RenderFile(file, nullptr);
  if (FAILED(result)) return Fail(result, "RenderFile");
  // No other filter of the prefix reads such a file, so the one that is loaded is what plays it.
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(GetModuleHandleW(L"tarvex.dll"), path.data(), MAX_PATH);
  std::printf("module %ls\n", path.data());
  ComPtr<IMediaFilter> media;
  ComPtr<IMediaControl> control;
  ComPtr<IMediaEvent> events;
  long code = 0;
  result = graph.CopyTo(IID_IMediaFilter, reinterpret_cast<void**>(media.GetAddressOf()));
  if (SUCCEEDED(result)) result = graph.CopyTo(IID_IMediaControl, reinterpret_cast<void**>(control.GetAddressOf()));
  if (SUCCEEDED(result)) result = graph.CopyTo(IID_IMediaEvent, reinterpret_cast<void**>(events.GetAddressOf()));
  if (SUCCEEDED(result)) result = media->SetSyncSource(nullptr);  // a clock would only make the test longer
  if (SUCCEEDED(result)) result = control->Run();
  if (SUCCEEDED(result)) result = events->WaitForCompletion(kLimit, &code);
  if (FAILED(result) || code != EC_COMPLETE) return Fail(result, "playing");
  control->Stop();
  std::printf("played\n");
  return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return Fail(E_INVALIDARG, "usage: render_file FILE, and starting");
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
  const int code = Play(arguments[1]);
  CoUninitialize();
  return code;
}

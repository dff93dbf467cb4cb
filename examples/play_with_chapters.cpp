// Opens a file with the splitter, lists its chapters, switches to another sound and plays the last
// chapter. Usage: play_with_chapters FILE. The module must be registered.
#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/class_ids.h"
#include "include/tarvex/module_config.h"

using Microsoft::WRL::ComPtr;

namespace {

// The graph is of no use without any of these steps, so the first failure ends the program.
void Check(HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return;
  std::printf("%s failed: %08lX\n", what, static_cast<unsigned long>(result));
  std::exit(1);
}

template <class I, class From>
ComPtr<I> Ask(const From& object, const IID& iid, const char* what) {
  ComPtr<I> result;
  Check(object->QueryInterface(iid, reinterpret_cast<void**>(result.GetAddressOf())), what);
  return result;
}

std::vector<ComPtr<IPin>> Pins(IBaseFilter* filter, PIN_DIRECTION wanted) {
  ComPtr<IEnumPins> list;
  Check(filter->EnumPins(&list), "EnumPins");
  std::vector<ComPtr<IPin>> pins;
  ComPtr<IPin> pin;
  while (list->Next(1, pin.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    PIN_DIRECTION direction{};
    if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted) pins.push_back(pin);
  }
  return pins;
}

// The array and the names in it are ours.
std::vector<LONGLONG> ListChapters(tarvex::IModuleConfig* config) {
  VARIANT value{};
  value.vt = VT_UINT;
  Check(config->GetValue(&tarvex::paramChapterList, &value), "counting chapters");
  std::vector<tarvex::ChapterEntry> chapters(value.ulVal);
  value.vt = VT_PTR;
  value.byref = chapters.data();
  if (!chapters.empty()) Check(config->GetValue(&tarvex::paramChapterList, &value), "reading chapters");
  std::vector<LONGLONG> starts;
  for (const auto& chapter : chapters) {
    std::printf("chapter at %.3f s: %ls\n", static_cast<double>(chapter.start) / 1e7, chapter.name);
    SysFreeString(chapter.name);
    starts.push_back(chapter.start);
  }
  return starts;
}

// Streams are in groups by kind; 2 is sound. Takes the first that is not enabled.
void SwitchSound(IAMStreamSelect* streams) {
  DWORD count = 0;
  Check(streams->Count(&count), "counting streams");
  for (DWORD i = 0; i < count; ++i) {
    DWORD flags = 0;
    DWORD group = 0;
    WCHAR* name = nullptr;
    Check(streams->Info(static_cast<long>(i), nullptr, &flags, nullptr, &group, &name, nullptr, nullptr), "stream");
    const bool other = group == 2 && (flags & AMSTREAMSELECTINFO_ENABLED) == 0;
    if (other) std::printf("sound: %ls\n", name);
    CoTaskMemFree(name);
    if (other) return Check(streams->Enable(static_cast<long>(i), AMSTREAMSELECTENABLE_ENABLE), "switching sound");
  }
}

void Play(const wchar_t* file) {
  ComPtr<IGraphBuilder> graph;
  ComPtr<IBaseFilter> splitter;
  ComPtr<IBaseFilter> source;
  Check(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph), "the graph");
  Check(CoCreateInstance(tarvex::CLSID_MatroskaSplitter, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &splitter),
        "the splitter (is it registered?)");
  Check(graph->AddFilter(splitter.Get(), L"Splitter"), "AddFilter");
  Check(graph->AddSourceFilter(file, L"Source", &source), "opening the file");
  // What the file holds is known once the input is connected; the output pins come with it.
  Check(graph->Connect(Pins(source.Get(), PINDIR_OUTPUT).at(0).Get(), Pins(splitter.Get(), PINDIR_INPUT).at(0).Get()),
        "reading the file");
  const auto streams = Ask<IAMStreamSelect>(splitter, IID_IAMStreamSelect, "IAMStreamSelect");
  SwitchSound(streams.Get());
  // A stream that nothing on this machine renders is left alone.
  for (const auto& pin : Pins(splitter.Get(), PINDIR_OUTPUT)) {
    if (FAILED(graph->Render(pin.Get()))) std::printf("a stream is not rendered\n");
  }
  const auto config = Ask<tarvex::IModuleConfig>(splitter, tarvex::IID_IModuleConfig, "IModuleConfig");
  const std::vector<LONGLONG> chapters = ListChapters(config.Get());
  const auto seeking = Ask<IMediaSeeking>(graph, IID_IMediaSeeking, "IMediaSeeking");
  LONGLONG start = chapters.empty() ? 0 : chapters.back();
  Check(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), "seeking");
  const auto control = Ask<IMediaControl>(graph, IID_IMediaControl, "IMediaControl");
  const auto events = Ask<IMediaEvent>(graph, IID_IMediaEvent, "IMediaEvent");
  Check(control->Run(), "Run");
  long code = 0;
  Check(events->WaitForCompletion(INFINITE, &code), "WaitForCompletion");
  Check(control->Stop(), "Stop");
  std::printf("played from %.3f s\n", static_cast<double>(start) / 1e7);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return std::printf("usage: play_with_chapters FILE\n"), 2;
  Check(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "COM");
  Play(arguments[1]);
  CoUninitialize();
  return 0;
}

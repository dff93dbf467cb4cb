// Opens a file with the splitter, lists its chapters, switches to another sound and plays the last
// chapter. Usage: play_with_chapters FILE. The module must be registered.
#include <dshow.h>
#include <wrl/client.h>

#include <tarvex/chapter_entry.h>
#include <tarvex/class_ids.h>
#include <tarvex/module_config.h>

#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

using Microsoft::WRL::ComPtr;

namespace {

// Names may be in any script: a console takes them as they are, a file or pipe gets UTF-8.
void Print(const std::wstring& line) {
  const std::wstring text = line + L'\n';
  HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
  const int length = static_cast<int>(text.size());
  DWORD mode = 0;
  DWORD written = 0;
  if (GetConsoleMode(out, &mode)) {
    WriteConsoleW(out, text.data(), static_cast<DWORD>(length), &written, nullptr);
    return;
  }
  std::string bytes(text.size() * 3, '\0');
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, &bytes[0], length * 3, nullptr, nullptr);
  WriteFile(out, bytes.data(), static_cast<DWORD>(size), &written, nullptr);
}

// "2.500 s" for a time in 100 ns units.
std::wstring Seconds(LONGLONG time) {
  const std::wstring thousandths = std::to_wstring(1000 + time / 10000 % 1000);
  return std::to_wstring(time / 10000000) + L'.' + thousandths.substr(1) + L" s";
}

// The graph is of no use without any of these steps, so the first failure ends the program.
void Check(HRESULT result, const wchar_t* what) {
  if (SUCCEEDED(result)) return;
  wchar_t code[9]{};
  std::swprintf(code, 9, L"%08lX", static_cast<unsigned long>(result));
  Print(std::wstring(what) + L" failed: " + code);
  std::exit(1);
}

template <class I, class From>
ComPtr<I> Ask(const From& object, const IID& iid, const wchar_t* what) {
  ComPtr<I> result;
  Check(object->QueryInterface(iid, reinterpret_cast<void**>(result.GetAddressOf())), what);
  return result;
}

std::vector<ComPtr<IPin>> Pins(IBaseFilter* filter, PIN_DIRECTION wanted) {
  ComPtr<IEnumPins> list;
  Check(filter->EnumPins(&list), L"EnumPins");
  std::vector<ComPtr<IPin>> pins;
  ComPtr<IPin> pin;
  while (list->Next(1, pin.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    PIN_DIRECTION direction{};
    if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted) pins.push_back(pin);
  }
  return pins;
}

// The splitter reads the file's UTF-8 in the thread's code page. This turns it back; where the page has lost
// something, the name stays as it was given.
std::wstring ChapterName(const tarvex::ChapterEntry& chapter) {
  const std::wstring given(chapter.name, SysStringLen(chapter.name));
  const int length = static_cast<int>(given.size());
  std::string bytes(given.size() * 4, '\0');
  const int size = WideCharToMultiByte(CP_THREAD_ACP, 0, given.data(), length, &bytes[0], length * 4, nullptr, nullptr);
  std::wstring name(static_cast<std::size_t>(size), L'\0');
  const int count = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, &name[0], size);
  return count > 0 ? name.substr(0, static_cast<std::size_t>(count)) : given;
}

// The array and the names in it are ours.
std::vector<LONGLONG> ListChapters(tarvex::IModuleConfig* config) {
  VARIANT value{};
  value.vt = VT_UINT;
  Check(config->GetValue(&tarvex::paramChapterList, &value), L"counting chapters");
  std::vector<tarvex::ChapterEntry> chapters(value.ulVal);
  value.vt = VT_PTR;
  value.byref = chapters.data();
  if (!chapters.empty()) Check(config->GetValue(&tarvex::paramChapterList, &value), L"reading chapters");
  std::vector<LONGLONG> starts;
  for (const auto& chapter : chapters) {
    Print(L"chapter at " + Seconds(chapter.start) + L": " + ChapterName(chapter));
    SysFreeString(chapter.name);
    starts.push_back(chapter.start);
  }
  return starts;
}

// Streams are in groups by kind; 2 is sound. Takes the first that is not enabled.
void SwitchSound(IAMStreamSelect* streams) {
  DWORD count = 0;
  Check(streams->Count(&count), L"counting streams");
  for (DWORD i = 0; i < count; ++i) {
    DWORD flags = 0;
    DWORD group = 0;
    WCHAR* name = nullptr;
    Check(streams->Info(static_cast<long>(i), nullptr, &flags, nullptr, &group, &name, nullptr, nullptr), L"stream");
    const bool other = group == 2 && (flags & AMSTREAMSELECTINFO_ENABLED) == 0;
    if (other) Print(L"sound: " + std::wstring(name));
    CoTaskMemFree(name);
    if (other) return Check(streams->Enable(static_cast<long>(i), AMSTREAMSELECTENABLE_ENABLE), L"switching sound");
  }
}

void Play(const wchar_t* file) {
  ComPtr<IGraphBuilder> graph;
  ComPtr<IBaseFilter> splitter;
  ComPtr<IBaseFilter> source;
  Check(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph), L"the graph");
  Check(CoCreateInstance(tarvex::CLSID_MatroskaSplitter, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &splitter),
        L"the splitter (is it registered?)");
  Check(graph->AddFilter(splitter.Get(), L"Splitter"), L"AddFilter");
  Check(graph->AddSourceFilter(file, L"Source", &source), L"opening the file");
  // What the file holds is known once the input is connected; the output pins come with it.
  Check(graph->Connect(Pins(source.Get(), PINDIR_OUTPUT).at(0).Get(), Pins(splitter.Get(), PINDIR_INPUT).at(0).Get()),
        L"reading the file");
  const auto streams = Ask<IAMStreamSelect>(splitter, IID_IAMStreamSelect, L"IAMStreamSelect");
  SwitchSound(streams.Get());
  // A stream that nothing on this machine renders is left alone.
  for (const auto& pin : Pins(splitter.Get(), PINDIR_OUTPUT)) {
    if (FAILED(graph->Render(pin.Get()))) Print(L"a stream is not rendered");
  }
  // Smart pointers know the interface, and so does IID_PPV_ARGS.
  ComPtr<tarvex::IModuleConfig> config;
  Check(splitter.As(&config), L"IModuleConfig");
  const std::vector<LONGLONG> chapters = ListChapters(config.Get());
  const auto seeking = Ask<IMediaSeeking>(graph, IID_IMediaSeeking, L"IMediaSeeking");
  LONGLONG start = chapters.empty() ? 0 : chapters.back();
  Check(seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning), L"seeking");
  const auto control = Ask<IMediaControl>(graph, IID_IMediaControl, L"IMediaControl");
  const auto events = Ask<IMediaEvent>(graph, IID_IMediaEvent, L"IMediaEvent");
  Check(control->Run(), L"Run");
  long code = 0;
  Check(events->WaitForCompletion(INFINITE, &code), L"WaitForCompletion");
  Check(control->Stop(), L"Stop");
  Print(L"played from " + Seconds(start));
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) {
    Print(L"usage: play_with_chapters FILE");
    return 2;
  }
  Check(CoInitializeEx(nullptr, COINIT_MULTITHREADED), L"COM");
  Play(arguments[1]);
  CoUninitialize();
  return 0;
}

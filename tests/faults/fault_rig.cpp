// See fault_rig.h.
#include "tests/faults/fault_rig.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <set>

#include "filter/interface_ids.h"
#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/media_type.h"
#include "framework/module_lock.h"
#include "framework/thread.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"
#include "tests/faults/fault_points.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kQuick{1000};
constexpr std::chrono::seconds kLongest{10};  // for what must happen, on a busy machine
constexpr LONG kMarker = 1;

const std::vector<std::uint8_t>& BytesOf(const FaultMovie& movie) {
  static std::map<std::string, std::vector<std::uint8_t>> files;
  auto& bytes = files[movie.path];
  if (bytes.empty()) bytes = ReadWholeFile(SourceDir() + "/tests/data/corpus/" + movie.path);
  return bytes;
}

// A sanitizer starts one of its own with the first of the program.
void StartFirstThread() {
  static Thread first;
  static const HRESULT started = first.Start([] {});
  if (SUCCEEDED(started)) first.Join();
}

int Threads() {
  StartFirstThread();
  DIR* folder = opendir("/proc/self/task");
  int count = 0;
  while (readdir(folder) != nullptr) ++count;
  closedir(folder);
  return count;
}

template <class Condition>
bool BecomesTrue(Condition condition) {
  const auto end = Clock::now() + kQuick;
  while (!condition()) {
    if (Clock::now() > end) return false;
    SleepMilliseconds(1);
  }
  return true;
}

}  // namespace

FaultIndices::FaultIndices(std::int64_t total, int wanted) {
  constexpr std::int64_t kPastAll = std::int64_t{1} << 40;
  const char* one = std::getenv("TARVEX_FAULT");
  if (one != nullptr) {
    m_first = std::strtoll(one, nullptr, 10);
    m_stride = kPastAll;
  } else if (std::getenv("TARVEX_ALL_FAULTS") == nullptr) {
    m_stride = std::max<std::int64_t>(total / wanted, 1);
  }
}

void PrintFaultPoints(const std::string& what, long long tried) {
  std::cout << "fault points: " << what << ' ' << tried << '\n';
}

FaultRig::FaultRig(const FaultMovie& movie)
    : m_movie(movie),
      m_bytes(BytesOf(movie)),
      m_nothingIsLeft(movie),
      m_thread(CurrentThreadId()),
      m_source(SourceFilter::FromBytes(m_bytes)),
      m_graph(MakeCom<FaultGraph>(m_downstream)) {
  m_graph->AddFilter(m_source.Get(), OLESTR("Source"));
}

FaultRig::~FaultRig() { TakeDown(); }

FaultRig::NothingIsLeft::NothingIsLeft(const FaultMovie& movie)
    : m_file(movie.path), m_threads(Threads()), m_blocks(LivingBlocks()) {}

FaultRig::NothingIsLeft::~NothingIsLeft() {
  EXPECT_TRUE(BecomesTrue([this] { return Threads() == m_threads; })) << Threads() - m_threads << " threads left";
  EXPECT_TRUE(BecomesTrue([] { return ModuleCanUnload(); }))
      << "objects left: " << ReportLeftObjects([](const char*) {});
  static std::set<std::string> usedBefore;
  if (usedBefore.insert(m_file).second) return;
  EXPECT_TRUE(BecomesTrue([this] { return LivingBlocks() == m_blocks; }))
      << LivingBlocks() - m_blocks << " blocks of memory left";
}

void STDMETHODCALLTYPE FaultRig::TakeText(void* context, const char* text) {
  auto& downstream = *static_cast<Downstream*>(context);
  if (std::strcmp(text, "CMatroskaSplitter::ThreadProc tm_start") == 0) ++downstream.passesBegun;
  if (std::strcmp(text, "CMatroskaSplitter::ThreadProc Process exit") != 0) return;
  ++downstream.passesEnded;
  downstream.happened.Set();
}

template <class Call>
HRESULT FaultRig::Ask(Call call) {
  HRESULT result = E_UNEXPECTED;
  try {
    const MeetsFaults theirs;
    result = call();
  } catch (...) {
    ADD_FAILURE() << "an exception crossed a COM call";
  }
  EXPECT_NE(result, E_UNEXPECTED) << "not a clear result";
  if (FAILED(result)) m_complained = true;
  return result;
}

template <class Call>
void FaultRig::ExpectQuick(const char* what, Call call) {
  const auto begin = Clock::now();
  call();
  EXPECT_LT(Clock::now() - begin, kQuick) << what;
}

void FaultRig::Prepare() {
  Create();
  if (!m_splitter) return;
  Configure();
  if (!Open()) return;
  AskAboutFile();
  Render();
}

void FaultRig::PlayOnce() {
  Play();
  Stop();
}

void FaultRig::Use() {
  Prepare();
  if (!m_splitter || !IsConnected(m_source->Pin())) return;
  Play();
  Seek();
  Stop();
  SwitchStreams();
  PlayOnce();
  ChangeSettings();
}

void FaultRig::Create() {
  ComPtr<IBaseFilter> splitter;
  if (FAILED(Ask([&] { return CreateSplitter(nullptr, IidOf<IBaseFilter>(), splitter.PutVoid()); }))) return;
  m_splitter = splitter;
  // A name that does not fit into the text object itself.
  Ask([&] { return splitter->JoinFilterGraph(m_graph.Get(), OLESTR("Splitter, first of its name")); });
  ASSERT_EQ(m_graph->AddFilter(splitter.Get(), OLESTR("Splitter")), S_OK);
}

void FaultRig::Configure() {
  m_splitter.Query<IModuleLog>()->SetSink(&TakeText, &m_downstream);
  Set(paramSeparatePins, m_movie.separatePins);
}

HRESULT FaultRig::Set(const GUID& parameter, bool on) {
  const auto config = m_splitter.Query<IModuleConfig>();
  VARIANT value{};
  value.vt = VT_BOOL;
  value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
  return Ask([&] { return config->SetValue(&parameter, &value); });
}

bool FaultRig::Open() {
  const auto input = AllPins(m_splitter.Get()).front();
  return SUCCEEDED(Ask([&] { return m_source->Pin()->Connect(input.Get(), nullptr); }));
}

void FaultRig::Note(const void* data, std::size_t size) {
  constexpr std::uint64_t kPrime = 0x100000001B3;
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  for (std::size_t k = 0; k < size; ++k) m_answers = (m_answers ^ bytes[k]) * kPrime;
}

void FaultRig::NoteText(const OLECHAR* text) {
  if (text != nullptr) Note(text, std::char_traits<OLECHAR>::length(text) * sizeof(OLECHAR));
}

void FaultRig::AskAboutFile() {
  const auto select = m_splitter.Query<IAMStreamSelect>();
  DWORD streams = 0;
  select->Count(&streams);
  for (LONG index = 0; index < static_cast<LONG>(streams); ++index) {
    CoTaskMem<OLECHAR> name;
    Ask([&] { return select->Info(index, nullptr, nullptr, nullptr, nullptr, name.Put(), nullptr, nullptr); });
    NoteText(name.Get());
  }
  AskForChapters();
  CAUUID pages{};
  const auto specify = m_splitter.Query<ISpecifyPropertyPages>();
  if (SUCCEEDED(Ask([&] { return specify->GetPages(&pages); }))) CoTaskMemFree(pages.pElems);
  for (const auto& pin : AllPins(m_splitter.Get())) AskAboutPin(pin.Get());
}

void FaultRig::AskForChapters() {
  BStr marker;
  const auto markers = m_splitter.Query<IAMExtendedSeeking>();
  Ask([&] { return markers->GetMarkerName(kMarker, marker.Put()); });
  NoteText(marker.Get());

  const auto config = m_splitter.Query<IModuleConfig>();
  VARIANT value{};
  value.vt = VT_UINT;
  Ask([&] { return config->GetValue(&paramChapterList, &value); });
  std::vector<ChapterEntry> entries(value.ulVal);
  if (entries.empty()) return;
  value.vt = VT_PTR;
  value.byref = entries.data();
  Ask([&] { return config->GetValue(&paramChapterList, &value); });
  for (const ChapterEntry& entry : entries) {
    NoteText(entry.name);
    SysFreeString(entry.name);
  }
}

void FaultRig::AskAboutPin(IPin* pin) {
  CoTaskMem<OLECHAR> id;
  if (FAILED(Ask([&] { return pin->QueryId(id.Put()); }))) return;
  NoteText(id.Get());
  ComPtr<IPin> found;
  Ask([&] { return m_splitter->FindPin(id.Get(), found.Put()); });
  ComPtr<IEnumPins> pins;
  Ask([&] { return m_splitter->EnumPins(pins.Put()); });
  ComPtr<IEnumMediaTypes> types;
  if (FAILED(Ask([&] { return pin->EnumMediaTypes(types.Put()); }))) return;
  ComPtr<IEnumMediaTypes> clone;
  Ask([&] { return types->Clone(clone.Put()); });
  AM_MEDIA_TYPE* type = nullptr;
  if (Ask([&] { return types->Next(1, &type, nullptr); }) != S_OK) return;
  Note(&type->majortype, sizeof(type->majortype));
  Note(&type->subtype, sizeof(type->subtype));
  Note(type->pbFormat, type->cbFormat);
  DeleteMediaType(type);
}

void FaultRig::Render() {
  for (const auto& pin : AllPins(m_splitter.Get())) {
    if (DirectionOf(pin.Get()) != PINDIR_OUTPUT || IsConnected(pin.Get())) continue;
    Ask([&] { return m_graph->Render(pin.Get()); });
  }
}

template <class Call>
void FaultRig::Start(Call call) {
  const int samples = m_downstream.samples;
  const int aborts = m_downstream.aborts;
  if (FAILED(Ask(call))) {
    Stop();
    return;
  }
  WaitForOutcome(aborts);
  if (m_firstPass < 0) m_firstPass = m_downstream.samples - samples;
}

void FaultRig::PauseOnce() {
  Start([this] { return m_graph->Pause(); });
  Stop();
}

void FaultRig::Play() {
  Start([this] { return m_graph->Run(); });
}

// To the middle, so that something is left to deliver.
void FaultRig::Seek() {
  const auto seeking = m_graph.Query<IMediaSeeking>();
  if (!seeking) return;
  LONGLONG duration = 0;
  Ask([&] { return seeking->GetDuration(&duration); });
  LONGLONG middle = duration / 2;
  const int aborts = m_downstream.aborts;
  HRESULT result = E_FAIL;
  ExpectQuick("seek", [&] {
    result = Ask([&] {
      return seeking->SetPositions(&middle, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    });
  });
  OAFilterState state = State_Stopped;
  m_graph->GetState(0, &state);
  if (SUCCEEDED(result) && state != State_Stopped) WaitForOutcome(aborts);
}

void FaultRig::Stop() {
  ExpectQuick("stop", [&] { Ask([&] { return m_graph->Stop(); }); });
}

// Every stream that is there to be switched to.
void FaultRig::SwitchStreams() {
  const auto select = m_splitter.Query<IAMStreamSelect>();
  DWORD streams = 0;
  select->Count(&streams);
  for (LONG index = 0; index < static_cast<LONG>(streams); ++index) {
    Ask([&] { return select->Enable(index, AMSTREAMSELECTENABLE_ENABLE); });
  }
}

// A change that fails has not been made, and can be made later.
void FaultRig::ChangeSettings() {
  const std::size_t pins = AllPins(m_splitter.Get()).size();
  bool present = m_movie.separatePins;
  for (const bool separate : {!m_movie.separatePins, m_movie.separatePins}) {
    if (SUCCEEDED(Set(paramSeparatePins, separate)) || SUCCEEDED(Set(paramSeparatePins, separate))) present = separate;
    VARIANT value{};
    m_splitter.Query<IModuleConfig>()->GetValue(&paramSeparatePins, &value);
    EXPECT_EQ(value.boolVal != 0, present);
    Set(paramAnnexBOutput, separate);
  }
  if (!m_complained) {
    EXPECT_EQ(AllPins(m_splitter.Get()).size(), pins);
  }
}

void FaultRig::WaitForOutcome(int abortsBefore) {
  constexpr DWORD kLook = 20;  // milliseconds
  const auto deadline = Clock::now() + kLongest;
  while (Clock::now() < deadline) {
    if (m_blocked.exchange(false)) {
      if (m_flushByStop) return;
      MeetBlockedRead();
    }
    if (m_downstream.passesEnded == m_downstream.passesBegun) {
      if (m_downstream.aborts > abortsBefore) {
        m_complained = true;
        return;
      }
      if (m_downstream.hasRefused || m_graph->AllEnded()) return;
    }
    m_downstream.happened.Wait(kLook);
  }
  ADD_FAILURE() << "neither an end nor an abort; passes " << m_downstream.passesBegun << " begun, "
                << m_downstream.passesEnded << " ended";
}

void FaultRig::MeetBlockedRead() {
  LONGLONG start = 0;
  const auto seeking = m_graph.Query<IMediaSeeking>();
  ExpectQuick("seek while a read is blocked", [&] {
    Ask([&] {
      return seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    });
  });
}

HRESULT FaultRig::BlockUntilFlushed() {
  constexpr DWORD kOwnFlush = 5;  // milliseconds until the source gives up by itself
  if (CurrentThreadId() == m_thread) {
    SleepMilliseconds(kOwnFlush);
    return VFW_E_WRONG_STATE;
  }
  m_blocked = true;
  m_downstream.happened.Set();
  if (!m_source->WaitForFlush(static_cast<DWORD>(std::chrono::milliseconds(kLongest).count()))) {
    ADD_FAILURE() << "a blocked read was not flushed";
  }
  return VFW_E_WRONG_STATE;
}

void FaultRig::ExpectRecovery() {
  if (m_splitter) CloseFile();
  m_complained = false;
  if (!m_splitter) Create();
  m_downstream.hasRefused = false;
  Configure();
  const bool opened = Open();
  EXPECT_TRUE(opened) << "the file does not open any more";
  if (!opened) return;
  Render();
  m_firstPass = -1;
  PlayOnce();
  EXPECT_FALSE(m_complained) << "the splitter has not recovered";
}

void FaultRig::CloseFile() {
  Ask([&] { return m_graph->Stop(); });
  for (const auto& sink : m_graph->Sinks()) sink->Pin()->Disconnect();
  std::vector<ComPtr<IPin>> pins = AllPins(m_splitter.Get());
  std::reverse(pins.begin(), pins.end());  // the last one, the input, takes the others away
  for (const auto& pin : pins) Ask([&] { return pin->Disconnect(); });
  m_source->Pin()->Disconnect();
}

void FaultRig::TakeDown() {
  if (!m_splitter) return;
  ExpectQuick("taking down", [&] {
    CloseFile();
    m_splitter.Query<IModuleLog>()->SetSink(nullptr, nullptr);
    m_graph->RemoveFilter(m_splitter.Get());
    const MeetsFaults theirs;
    m_splitter.Reset();
  });
}

}  // namespace tarvex::test

// Everything that the filter depends on fails, at every single call and from every call on: memory, threads, the
// reader upstream, the pins downstream. Whatever fails, every call has a clear result and returns, a graph ends or is
// aborted, nothing is lost without a word, nothing is left, and the filter plays again when all is well.
// TARVEX_ALL_FAULTS=1 takes every call, TARVEX_FAULT=12 only the one with this number.
#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <set>

#include "filter/interface_ids.h"
#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/media_type.h"
#include "framework/module_lock.h"
#include "framework/thread.h"
#include "fuzz/cases.h"
#include "fuzz/watch.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"
#include "tests/faults/fault_graph.h"
#include "tests/support/source_dir.h"
#include "tests/support/source_filter.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using fuzz::ArmFaults;
using fuzz::DisarmFaults;
using fuzz::Watched;

struct Movie {
  const char* name;
  const char* path;  ///< in the corpus
  bool separatePins = false;
  bool hasChapters = false;
  bool isCompressed = false;
};
constexpr Movie kMovies[] = {
    {"ChaptersAndCues", "real/subtitleedit/sample_MKV_chapters.mkv", false, true},
    {"ZlibWithoutCues", "gen/enc_zlib.mka", false, false, true},
    {"SubtitlesAndCues", "gen/subs.mkv", true},
    {"TwoSoundsWithoutCues", "gen/flags_names.mkv"},
    {"Laced", "gen/lace_fixed.mka"},
    {"ManyStreams", "gen/multi.mkv", true},  // for the reader; the others take few reads
};

struct Fault {
  const char* name;
  FaultKind kind;
  HRESULT answer = E_FAIL;  ///< of the reader or a sink
  bool blocks = false;      ///< until a seek flushes the reader
};
constexpr Fault kFaults[] = {
    {"OperatorNew", FaultKind::kNew},
    {"Malloc", FaultKind::kMalloc},
    {"CoTaskMemAlloc", FaultKind::kTaskMemory},
    {"SysAllocString", FaultKind::kText},
    {"SampleBlock", FaultKind::kRing},
    {"SampleMemory", FaultKind::kRingMemory},
    {"Thread", FaultKind::kThread},
    {"Inflate", FaultKind::kInflate},
    {"Reader", FaultKind::kReader},
    {"ReaderIsShort", FaultKind::kReader, S_FALSE},
    {"ReaderBlocks", FaultKind::kReader, VFW_E_WRONG_STATE, true},
    {"ReceiveConnection", FaultKind::kReceiveConnection, VFW_E_TYPE_NOT_ACCEPTED},
    {"NotifyAllocator", FaultKind::kNotifyAllocator},
    {"Receive", FaultKind::kReceive},
    {"ReceiveWantsNoMore", FaultKind::kReceive, S_FALSE},
    {"ReceiveRejected", FaultKind::kReceive, VFW_E_SAMPLE_REJECTED},
    {"NewSegment", FaultKind::kNewSegment},
    {"Flush", FaultKind::kFlush},
    {"EndOfStream", FaultKind::kEndOfStream},
};

// Of some objects one is made for good with the first use of a file or thread, so memory is compared from then on.
class NothingIsLeft {
 public:
  explicit NothingIsLeft(const char* file) : m_file(file) {}
  ~NothingIsLeft() {
    EXPECT_TRUE(Eventually([this] { return LivingThreads() == m_threads; })) << "threads are left";
    EXPECT_TRUE(Eventually([] { return ModuleCanUnload(); })) << "objects are left";
    static std::set<std::string> usedBefore;
    if (usedBefore.insert(m_file).second) return;
    EXPECT_TRUE(Eventually([this] { return m_heap.Now() == 0; })) << m_heap.Now() << " bytes of memory left";
  }
  NothingIsLeft(const NothingIsLeft&) = delete;
  NothingIsLeft& operator=(const NothingIsLeft&) = delete;

 private:
  const char* const m_file;
  const std::uint32_t m_threads = LivingThreads();
  const fuzz::HeapCount m_heap;
};

/// One splitter in one graph, used the way an application uses it, while something fails.
class FaultRig {
 public:
  FaultRig(const Movie& movie, const std::vector<std::uint8_t>& bytes, const Fault& fault)
      : m_movie(movie), m_fault(fault), m_nothingIsLeft(movie.path), m_source(SourceFilter::FromBytes(bytes)) {
    m_source->BeforeEachCall([this] { return AnswerRead(); });
    m_graph->AddFilter(m_source.Get(), OLESTR("Source"));
  }
  /// Takes everything down, with the faults that are armed, and checks that nothing is left.
  ~FaultRig() {
    if (!m_splitter) return;
    CloseFile();
    m_splitter.Query<IModuleLog>()->SetSink(nullptr, nullptr);
    m_graph->RemoveFilter(m_splitter.Get());
    const MeetsFaults theirs;
    m_splitter.Reset();
  }
  FaultRig(const FaultRig&) = delete;
  FaultRig& operator=(const FaultRig&) = delete;

  /// Creates the splitter, opens the file, asks it everything, plays, seeks, switches streams, plays again and changes
  /// settings. Goes on after a failure as far as that makes sense.
  void Use() {
    Create();
    if (!m_splitter || !Open()) return;
    AskAboutFile();
    Render();
    Start();
    Seek();
    Stop();
    SwitchStreams();
    Start();
    Stop();
    ChangeSettings();
  }
  /// On the same splitter, when nothing fails any more: the file opens and plays to its end.
  void ExpectRecovery() {
    if (m_splitter) CloseFile();
    complained = m_graph->hasRefused = false;
    if (!m_splitter) Create();
    const bool opened = Open();
    EXPECT_TRUE(opened) << "the file does not open any more";
    if (!opened) return;
    Render();
    firstPass = -1;
    Start();
    Stop();
    EXPECT_FALSE(complained) << "the splitter has not recovered";
  }

  bool complained = false;  ///< a call gave a failure, or the graph was aborted
  int firstPass = -1;       ///< samples that reached the sinks in the first pass; -1 when there was none
  std::size_t answers = 0;  ///< all that the splitter told of the file and its pins before

 private:
  template <class Call>
  HRESULT Ask(Call call) {
    const Watched watched("a call of the splitter");
    HRESULT result = E_UNEXPECTED;
    try {
      const MeetsFaults theirs;
      result = call();
    } catch (...) {
      ADD_FAILURE() << "an exception crossed a COM call";
    }
    EXPECT_NE(result, E_UNEXPECTED) << "not a clear result";
    complained = complained || FAILED(result);
    return result;
  }

  void Create() {
    ComPtr<IBaseFilter> splitter;
    if (FAILED(Ask([&] { return CreateSplitter(nullptr, IidOf<IBaseFilter>(), splitter.PutVoid()); }))) return;
    m_splitter = splitter;
    // A name that does not fit into the text object itself.
    Ask([&] { return splitter->JoinFilterGraph(m_graph.Get(), OLESTR("Splitter, first of its name")); });
    ASSERT_EQ(m_graph->AddFilter(splitter.Get(), OLESTR("Splitter")), S_OK);
    splitter.Query<IModuleLog>()->SetSink(&TakeText, this);
  }
  HRESULT Set(const GUID& parameter, bool on) {
    VARIANT value{};
    value.vt = VT_BOOL;
    value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
    return Ask([&] { return m_splitter.Query<IModuleConfig>()->SetValue(&parameter, &value); });
  }
  bool Open() {
    Set(paramSeparatePins, m_movie.separatePins);
    const auto input = AllPins(m_splitter.Get()).front();
    return SUCCEEDED(Ask([&] { return m_source->Pin()->Connect(input.Get(), nullptr); }));
  }
  void Render() {
    for (const auto& pin : AllPins(m_splitter.Get())) {
      if (DirectionOf(pin.Get()) == PINDIR_OUTPUT && !IsConnected(pin.Get())) {
        Ask([&] { return m_graph->Render(pin.Get()); });
      }
    }
  }

  void Note(const void* data, std::size_t size) {
    answers = answers * 31 + std::hash<std::string_view>{}({static_cast<const char*>(data), size});
  }
  void NoteText(const OLECHAR* text) {
    if (text != nullptr) Note(text, std::char_traits<OLECHAR>::length(text) * sizeof(OLECHAR));
  }
  void AskAboutFile() {
    const auto select = m_splitter.Query<IAMStreamSelect>();
    for (LONG index = 0; index < Streams(); ++index) {
      CoTaskMem<OLECHAR> name;
      Ask([&] { return select->Info(index, nullptr, nullptr, nullptr, nullptr, name.Put(), nullptr, nullptr); });
      NoteText(name.Get());
    }
    BStr marker;
    const auto markers = m_splitter.Query<IAMExtendedSeeking>();
    Ask([&] { return markers->GetMarkerName(1, marker.Put()); });
    NoteText(marker.Get());
    const auto config = m_splitter.Query<IModuleConfig>();
    VARIANT value{};
    value.vt = VT_UINT;
    Ask([&] { return config->GetValue(&paramChapterList, &value); });
    std::vector<ChapterEntry> entries(value.ulVal);
    value.vt = VT_PTR;
    value.byref = entries.data();
    if (!entries.empty()) Ask([&] { return config->GetValue(&paramChapterList, &value); });
    for (const ChapterEntry& entry : entries) {
      NoteText(entry.name);
      SysFreeString(entry.name);
    }
    for (const auto& pin : AllPins(m_splitter.Get())) AskAboutPin(pin.Get());
  }
  void AskAboutPin(IPin* pin) {
    CoTaskMem<OLECHAR> id;
    if (FAILED(Ask([&] { return pin->QueryId(id.Put()); }))) return;
    NoteText(id.Get());
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

  void Start() {
    const int samples = m_graph->Samples();
    const int aborts = m_graph->aborts;
    if (FAILED(Ask([&] { return m_graph->Run(); }))) return Stop();
    WaitForOutcome(aborts);
    if (firstPass < 0) firstPass = m_graph->Samples() - samples;
  }
  void Stop() {
    Ask([&] { return m_graph->Stop(); });
  }
  HRESULT SeekTo(LONGLONG start) {
    const auto seeking = m_graph.Query<IMediaSeeking>();
    return Ask([&] {
      return seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    });
  }
  // To the middle, so that something is left to deliver.
  void Seek() {
    const auto seeking = m_graph.Query<IMediaSeeking>();
    if (!seeking) return;
    LONGLONG duration = 0;
    Ask([&] { return seeking->GetDuration(&duration); });
    const int aborts = m_graph->aborts;
    const HRESULT result = SeekTo(duration / 2);
    OAFilterState state = State_Stopped;
    m_graph->GetState(0, &state);
    if (SUCCEEDED(result) && state != State_Stopped) WaitForOutcome(aborts);
  }
  LONG Streams() const {
    DWORD streams = 0;
    m_splitter.Query<IAMStreamSelect>()->Count(&streams);
    return static_cast<LONG>(streams);
  }
  // Every stream that is there to be switched to.
  void SwitchStreams() {
    const auto select = m_splitter.Query<IAMStreamSelect>();
    for (LONG index = 0; index < Streams(); ++index) {
      Ask([&] { return select->Enable(index, AMSTREAMSELECTENABLE_ENABLE); });
    }
  }
  void ChangeSettings() {
    const std::size_t pins = AllPins(m_splitter.Get()).size();
    for (const bool separate : {!m_movie.separatePins, m_movie.separatePins}) {
      Set(paramSeparatePins, separate);
      Set(paramAnnexBOutput, separate);
    }
    EXPECT_TRUE(complained || AllPins(m_splitter.Get()).size() == pins);
  }

  static void STDMETHODCALLTYPE TakeText(void* context, const char* text) {
    auto& self = *static_cast<FaultRig*>(context);
    if (std::strcmp(text, "CMatroskaSplitter::ThreadProc tm_start") == 0) ++self.m_passesBegun;
    if (std::strcmp(text, "CMatroskaSplitter::ThreadProc Process exit") == 0) ++self.m_passesEnded;
  }
  void WaitForOutcome(int abortsBefore) {
    const Watched watched("an end or an abort");
    for (;; SleepMilliseconds(1)) {
      if (m_blocked.exchange(false)) SeekTo(0);
      if (m_passesEnded != m_passesBegun) continue;
      complained = complained || m_graph->aborts > abortsBefore;
      if (m_graph->aborts > abortsBefore || m_graph->hasRefused || m_graph->AllEnded()) return;
    }
  }

  HRESULT AnswerRead() {
    if (!fuzz::Fails(FaultKind::kReader)) return S_OK;
    if (!m_fault.blocks || CurrentThreadId() == m_thread) return m_fault.answer;  // it would have to flush itself
    m_blocked = true;
    EXPECT_TRUE(m_source->WaitForFlush(kPatience)) << "a blocked read was not flushed";
    return m_fault.answer;
  }

  void CloseFile() {
    Stop();
    for (const auto& sink : m_graph->Sinks()) sink->Pin()->Disconnect();
    std::vector<ComPtr<IPin>> pins = AllPins(m_splitter.Get());
    std::ranges::reverse(pins);  // the last one, the input, takes the others away
    for (const auto& pin : pins) Ask([&] { return pin->Disconnect(); });
    m_source->Pin()->Disconnect();
  }

  const Movie& m_movie;
  const Fault& m_fault;
  const NothingIsLeft m_nothingIsLeft;  // ahead of all that is to go
  const DWORD m_thread = CurrentThreadId();
  ComPtr<SourceFilter> m_source;
  ComPtr<FaultGraph> m_graph = MakeCom<FaultGraph>(m_fault.answer);
  ComPtr<IBaseFilter> m_splitter;
  std::atomic<bool> m_blocked{false};
  std::atomic<int> m_passesBegun{0};
  std::atomic<int> m_passesEnded{0};
};

using Case = std::pair<Movie, Fault>;

class Faults : public testing::TestWithParam<Case> {
 protected:
  Faults() { const Watched startsTheWatch("nothing"); }  // its thread is none that is left

  FaultRig Rig() const { return {m_movie, m_bytes, m_fault}; }

  /// One use with one fault. False when the fault was not met.
  bool Try(const fuzz::FaultPoint& point) {
    FaultRig rig = Rig();
    ArmFaults(point);
    rig.Use();
    if (!fuzz::FaultWasMet()) return false;
    if (point.lasting && m_fault.kind < FaultKind::kReader) return true;  // taken down with the fault
    DisarmFaults();
    const bool isLoss = m_fault.kind < FaultKind::kReader || std::string_view(m_fault.name) == "Reader";
    if (isLoss && !rig.complained) {
      EXPECT_EQ(rig.firstPass, m_samples) << "lost without a word";
      EXPECT_TRUE(rig.answers == m_answers) << "answers that are not right";
    }
    if (m_fault.kind >= FaultKind::kReceive) {
      EXPECT_FALSE(rig.complained) << "the filter that refuses is the one to report it";
    }
    rig.ExpectRecovery();
    EXPECT_EQ(rig.firstPass, m_samples);
    return true;
  }

  const Movie m_movie = GetParam().first;
  const Fault m_fault = GetParam().second;
  const std::vector<std::uint8_t> m_bytes = ReadWholeFile(SourceDir() + "/tests/data/corpus/" + m_movie.path);
  const MeetsNoFaults m_own;
  int m_samples = -1;
  std::size_t m_answers = 0;
};

TEST_P(Faults, EndClearlyAndLeaveNothing) {
  constexpr std::int64_t kWanted = 40;  // fault points of one kind in one file
  std::int64_t calls = 0;
  for (int round = 0; round < 2; ++round) {  // the first one also fills what is kept for good
    FaultRig rig = Rig();
    ArmFaults({.kind = m_fault.kind, .index = INT64_MAX});
    rig.Use();
    calls = DisarmFaults();
    EXPECT_FALSE(rig.complained) << "without a fault";
    m_samples = rig.firstPass;
    m_answers = rig.answers;
  }
  ASSERT_GT(m_samples, 0);
  const unsigned one = fuzz::FromEnvironment("TARVEX_FAULT", UINT_MAX);
  const bool all = fuzz::FromEnvironment("TARVEX_ALL_FAULTS", 0) != 0;
  const std::int64_t stride = one != UINT_MAX ? INT_MAX : all ? 1 : std::max<std::int64_t>(calls / kWanted, 1);
  int met = 0;
  for (const bool lasting : {false, true}) {
    if (lasting && m_fault.blocks) break;
    for (std::int64_t index = one != UINT_MAX ? one : 0; !HasFailure(); index += stride, ++met) {
      const std::string point = m_fault.name + (" " + std::to_string(index)) + (lasting ? " and later" : "");
      SCOPED_TRACE(point);
      const Watched watched(point);
      const bool wasMet = Try({.kind = m_fault.kind, .index = index, .lasting = lasting});
      DisarmFaults();
      if (!wasMet) break;
    }
  }
  EXPECT_GT(met, 0) << "nothing could fail";
  std::cout << "fault points: " << m_fault.name << ' ' << m_movie.name << ' ' << met << '\n';
}

std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (const Movie& movie : kMovies) {
    for (const Fault& fault : kFaults) {
      const bool isThere = (fault.kind != FaultKind::kText || movie.hasChapters) &&
                           (fault.kind != FaultKind::kInflate || movie.isCompressed) &&
                           (fault.kind == FaultKind::kReader || &movie != std::end(kMovies) - 1);
      if (isThere) cases.emplace_back(movie, fault);
    }
  }
  return cases;
}
INSTANTIATE_TEST_SUITE_P(Movies, Faults, testing::ValuesIn(Cases()),
                         [](const auto& one) { return std::string(one.param.first.name) + one.param.second.name; });

}  // namespace
}  // namespace tarvex::test

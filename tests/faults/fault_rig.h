// One splitter in one graph, used the way an application uses it, while something fails. Checks after
// every step what must hold whatever fails: a clear result, an ended graph, a stop within a second, and
// nothing left. A value on the stack of one test.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "tests/faults/fault_ends.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {

struct FaultMovie {
  const char* name;   ///< of the parameterised test
  const char* path;   ///< in the corpus
  bool separatePins;  ///< one pin per stream
};
/// Subtitles, two sounds, cues and none, chapters, zlib, laces; each of a few dozen frames.
inline constexpr FaultMovie kFaultMovies[] = {
    {"ChaptersAndCues", "real/subtitleedit/sample_MKV_chapters.mkv", false},
    {"ZlibWithoutCues", "gen/enc_zlib.mka", false},
    {"SubtitlesAndCues", "gen/subs.mkv", true},
    {"TwoSoundsWithoutCues", "gen/flags_names.mkv", false},
    {"Laced", "gen/lace_fixed.mka", false},
};

/// Which of the calls fail, one a run: every one when TARVEX_ALL_FAULTS is set, and otherwise about so many
/// of `total`; TARVEX_FAULT=12 tries the call with this number alone.
class FaultIndices {
 public:
  FaultIndices(std::int64_t total, int wanted);
  std::int64_t First() const noexcept { return m_first; }
  std::int64_t Stride() const noexcept { return m_stride; }

 private:
  std::int64_t m_first = 0;
  std::int64_t m_stride = 1;
};
/// For the report of the test.
void PrintFaultPoints(const std::string& what, long long tried);

class FaultRig {
 public:
  explicit FaultRig(const FaultMovie& movie);
  /// Takes everything down, with the faults that are armed, and checks that nothing is left.
  ~FaultRig();
  FaultRig(const FaultRig&) = delete;
  FaultRig& operator=(const FaultRig&) = delete;

  Downstream& Sinks() noexcept { return m_downstream; }
  SourceFilter& Source() noexcept { return *m_source; }

  /// Creates the splitter, opens the file, asks it everything, plays, seeks, switches streams, plays
  /// again. Goes on after a failure as far as that makes sense.
  void Use();
  /// The same as far as the start of playing.
  void Prepare();
  /// Plays to an end or an abort, and stops.
  void PlayOnce();
  /// The same without more than pausing, which delivers as well: running would start what failed again.
  void PauseOnce();
  /// On the same splitter, when nothing fails any more: the file opens and plays to its end.
  void ExpectRecovery();

  /// A call gave a failure, or the graph was aborted.
  bool Complained() const noexcept { return m_complained; }
  void ForgetComplaints() { m_complained = false; }
  /// That reached the sinks in the first pass. -1 when there was none.
  int SamplesOfFirstPass() const noexcept { return m_firstPass; }

  /// Of all that the splitter told of the file and its pins before the first pass.
  std::uint64_t DigestOfAnswers() const noexcept { return m_answers; }

  /// For a read that waits for a flush, on the thread that reads. What it must answer.
  HRESULT BlockUntilFlushed();
  /// Who flushes when the worker is blocked: a seek, or the stop.
  void FlushByStop() { m_flushByStop = true; }

 private:
  /// Checks at its end that everything is as it was at its beginning. The first use of a file also makes
  /// what the program keeps for good, so its memory is not compared.
  class NothingIsLeft {
   public:
    explicit NothingIsLeft(const FaultMovie& movie);
    ~NothingIsLeft();
    NothingIsLeft(const NothingIsLeft&) = delete;
    NothingIsLeft& operator=(const NothingIsLeft&) = delete;

   private:
    const char* const m_file;
    const int m_threads;
    const std::int64_t m_blocks;
  };
  template <class Call>
  HRESULT Ask(Call call);
  template <class Call>
  void ExpectQuick(const char* what, Call call);
  void Create();
  void Configure();
  bool Open();
  void AskAboutFile();
  void AskAboutPin(IPin* pin);
  void AskForChapters();
  void Note(const void* data, std::size_t size);
  void NoteText(const OLECHAR* text);
  void Render();
  void Play();
  template <class Call>
  void Start(Call call);
  void Seek();
  void Stop();
  void SwitchStreams();
  void ChangeSettings();
  HRESULT Set(const GUID& parameter, bool on);
  void WaitForOutcome(int abortsBefore);
  void MeetBlockedRead();
  void CloseFile();
  void TakeDown();
  static void STDMETHODCALLTYPE TakeText(void* context, const char* text);

  const FaultMovie& m_movie;
  const std::vector<std::uint8_t>& m_bytes;
  const NothingIsLeft m_nothingIsLeft;  // ahead of all that is to go
  const DWORD m_thread;
  Downstream m_downstream;
  ComPtr<SourceFilter> m_source;
  ComPtr<FaultGraph> m_graph;
  ComPtr<IBaseFilter> m_splitter;
  bool m_complained = false;
  bool m_flushByStop = false;
  int m_firstPass = -1;
  std::uint64_t m_answers = 0;
  std::atomic<bool> m_blocked{false};
};

}  // namespace tarvex::test

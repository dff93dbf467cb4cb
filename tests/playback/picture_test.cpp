// Movies as a player plays them: RenderFile finds the registered module, and the platform decodes and shows
// what it delivers. The screen must show the very pictures that ffmpeg decodes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "framework/com_ptr.h"
#include "framework/text_conversion.h"
#include "tests/pages/page_picture.h"
#include "tests/playback/plain_format_filter.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kPictures = 30;
constexpr REFERENCE_TIME kPictureTime = 1'000'000;  // 100 ns units; ten pictures a second
constexpr LONG kPatienceOfGraph = 10'000;           // milliseconds

struct Movie {
  const char* name;
  const OLECHAR* videoDecoder;
  const OLECHAR* audioDecoder;
  bool swapped;  ///< Wine 8 shows this codec with red and blue exchanged, whoever demuxed it
};

std::string MoviePath(const std::string& file) {
  const char* folder = std::getenv("TARVEX_MOVIES");
  return SystemPath((folder == nullptr ? SourceDir() + "/build/test-movies" : folder) + "/" + file);
}

// As ffmpeg decodes it.
Picture DecodedPicture(const Movie& movie, int index) {
  std::ifstream file(MoviePath(movie.name + std::string(".pictures")), std::ios::binary);
  Picture picture{kWidth, kHeight, std::vector<std::uint8_t>(std::size_t{kWidth} * kHeight * 4)};
  const auto size = static_cast<std::streamsize>(picture.pixels.size());
  file.seekg(index * size);
  file.read(reinterpret_cast<char*>(picture.pixels.data()), size);
  EXPECT_EQ(file.gcount(), size);
  for (std::size_t at = 0; movie.swapped && at < picture.pixels.size(); at += 4) {
    std::swap(picture.pixels[at], picture.pixels[at + 2]);
  }
  return picture;
}

// Mean over all colour values, 0 to 255.
double Difference(const Picture& a, const Picture& b) {
  if (a.width != b.width || a.height != b.height) return 255;
  double sum = 0;
  for (std::size_t at = 0; at < a.pixels.size(); ++at) {
    if (at % 4 != 3) sum += std::abs(a.pixels[at] - b.pixels[at]);
  }
  return sum / (3.0 * kWidth * kHeight);
}

// The renderer's window belongs to the thread that made the renderer.
void HandleMessagesFor(DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) DispatchMessageW(&message);
  }
}

BOOL CALLBACK TakeVideoWindow(HWND window, LPARAM context) {
  DWORD process = 0;
  RECT rect{};
  GetWindowThreadProcessId(window, &process);
  GetClientRect(window, &rect);
  const bool fits = process == GetCurrentProcessId() && IsWindowVisible(window) != FALSE && rect.right == kWidth &&
                    rect.bottom == kHeight;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the platform hands a context on as an integer
  if (fits) *reinterpret_cast<HWND*>(context) = window;
  return fits ? FALSE : TRUE;
}

HWND VideoWindow() {
  HWND found = nullptr;
  EnumWindows(&TakeVideoWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

class Playback : public ::testing::TestWithParam<Movie> {
 protected:
  void SetUp() override {
    m_graph = CreateFilterGraph();
    m_control = m_graph.Query<IMediaControl>();
    // The platform's default renderer mixes pictures, and does not get on with these decoders.
    ComPtr<IBaseFilter> renderer;
    ASSERT_EQ(CoCreateInstance(CLSID_VideoRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, renderer.PutVoid()),
              S_OK);
    ASSERT_EQ(m_graph->AddFilter(renderer.Get(), L"Video Renderer"), S_OK);
    ASSERT_EQ(m_graph->AddFilter(MakeCom<PlainFormatFilter>().Get(), L"Plain format"), S_OK);
    const WideString path = WideFromUtf8(MoviePath(GetParam().name + std::string(".mkv")));
    ASSERT_EQ(m_graph->RenderFile(path.c_str(), nullptr), S_OK);
  }

  void TearDown() override {
    if (m_control) m_control->Stop();
  }

  bool HasFilter(const OLECHAR* name) const {
    ComPtr<IBaseFilter> filter;
    return m_graph->FindFilterByName(name, filter.Put()) == S_OK;
  }

  void PauseAt(int picture) {
    LONGLONG position = picture * kPictureTime;
    const auto seeking = m_graph.Query<IMediaSeeking>();
    ASSERT_EQ(seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning),
              S_OK);
    ASSERT_TRUE(SUCCEEDED(m_control->Pause()));
    OAFilterState state = 0;
    ASSERT_EQ(m_control->GetState(kPatienceOfGraph, &state), S_OK);
  }

  // The window is painted a little after the sample came.
  void ExpectOnScreen(int index) {
    const Picture decoded = DecodedPicture(GetParam(), index);
    Picture shown;
    double difference = 255;
    for (LONG waited = 0; waited < kPatienceOfGraph && difference > 4; waited += 50) {
      HandleMessagesFor(50);
      if (HWND window = VideoWindow()) shown = PictureOf(window, true);
      difference = Difference(shown, decoded);
    }
    if (shown.width != 0) KeepPicture(shown, std::string("playback-") + GetParam().name + "-" + std::to_string(index));
    EXPECT_LT(difference, 4) << "picture " << index;
    EXPECT_GT(Difference(decoded, DecodedPicture(GetParam(), (index + 10) % kPictures)), 6)
        << "pictures cannot be told apart";
  }

  ComPtr<IGraphBuilder> m_graph;
  ComPtr<IMediaControl> m_control;
};

TEST_P(Playback, ShowsThePicturesThatAreInTheFile) {
  EXPECT_TRUE(HasFilter(L"Tarvex Matroska Splitter"));
  EXPECT_TRUE(HasFilter(GetParam().videoDecoder));
  EXPECT_TRUE(HasFilter(GetParam().audioDecoder));
  PauseAt(0);
  ExpectOnScreen(0);
  PauseAt(15);
  ExpectOnScreen(15);
}

TEST_P(Playback, PlaysPicturesAndSoundToTheEnd) {
  ASSERT_TRUE(SUCCEEDED(m_control->Run()));
  const auto events = m_graph.Query<IMediaEvent>();
  LONG code = 0;
  for (LONG waited = 0; waited < kPatienceOfGraph && code == 0; waited += 50) {
    HandleMessagesFor(50);
    events->WaitForCompletion(0, &code);
  }
  EXPECT_EQ(code, EC_COMPLETE);
  ExpectOnScreen(kPictures - 1);
}

INSTANTIATE_TEST_SUITE_P(Movies, Playback,
                         testing::Values(Movie{"cinepak", L"AVI Decompressor", L"MP3 Decoder DMO", false},
                                         Movie{"msvideo1", L"AVI Decompressor", L"ACM Wrapper", true}),
                         [](const auto& movie) { return std::string(movie.param.name); });

}  // namespace
}  // namespace tarvex::test

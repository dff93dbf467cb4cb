// A movie as a player plays it: RenderFile finds the registered module, and the platform decodes and shows what it
// delivers. The screen must show the very pictures that ffmpeg decodes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/text_conversion.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kPictures = 50;
constexpr REFERENCE_TIME kPictureTime = 1'000'000;  // 100 ns units; ten pictures a second
constexpr LONG kPatienceOfGraph = 10'000;           // milliseconds

std::string MoviePath(const std::string& file) {
  const char* folder = std::getenv("TARVEX_MOVIES");
  return SystemPath((folder == nullptr ? SourceDir() + "/build/test-movies" : folder) + "/" + file);
}

/// The colours of every sixth point in every sixth row.
template <class ColourAt>
std::vector<int> Points(ColourAt colourAt) {
  std::vector<int> points;
  for (int y = 0; y < kHeight; y += 6) {
    for (int x = 0; x < kWidth; x += 6) {
      const COLORREF colour = colourAt(x, y);
      for (const int part : {GetRValue(colour), GetGValue(colour), GetBValue(colour)}) points.push_back(part);
    }
  }
  return points;
}

// As ffmpeg decodes it: four bytes for a point, blue first.
std::vector<int> DecodedPoints(int index) {
  constexpr std::size_t kSize = std::size_t{kWidth} * kHeight * 4;
  std::ifstream file(MoviePath("sample.pictures"), std::ios::binary);
  std::vector<std::uint8_t> bytes(kSize);
  file.seekg(index * static_cast<std::streamoff>(kSize));
  EXPECT_TRUE(file.read(reinterpret_cast<char*>(bytes.data()), kSize));
  return Points([&](int x, int y) {
    const std::uint8_t* point = &bytes[static_cast<std::size_t>(y * kWidth + x) * 4];
    return RGB(point[2], point[1], point[0]);
  });
}

// The renderer's window lies in the corner.
std::vector<int> PointsOnScreen() {
  HDC screen = GetDC(nullptr);
  std::vector<int> points = Points([screen](int x, int y) { return GetPixel(screen, x, y); });
  ReleaseDC(nullptr, screen);
  return points;
}

/// Mean over all colour values, 0 to 255.
double Difference(const std::vector<int>& a, const std::vector<int>& b) {
  double sum = 0;
  for (std::size_t at = 0; at < a.size(); ++at) sum += std::abs(a[at] - b[at]);
  return sum / static_cast<double>(a.size());
}

// The renderer's window belongs to the thread that made the renderer, and is painted a little after the sample came.
template <class Condition>
bool IsSoon(Condition isTrue) {
  const ULONGLONG end = GetTickCount64() + kPatienceOfGraph;
  while (!isTrue()) {
    if (GetTickCount64() > end) return false;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) DispatchMessageW(&message);
  }
  return true;
}

void ExpectOnScreen(int index) {
  const std::vector<int> decoded = DecodedPoints(index);
  EXPECT_TRUE(IsSoon([&] { return Difference(PointsOnScreen(), decoded) < 2; })) << "picture " << index;
  EXPECT_GT(Difference(decoded, DecodedPoints((index + 10) % kPictures)), 6) << "pictures cannot be told apart";
}

void Play() {
  const ComPtr<IGraphBuilder> graph = CreateFilterGraph();
  const std::string sample = SystemPath(SourceDir() + "/tests/data/sample.mkv");
  ASSERT_EQ(graph->RenderFile(WideFromUtf8(sample).c_str(), nullptr), VFW_S_PARTIAL_RENDER);
  ComPtr<IBaseFilter> filter;
  for (const OLECHAR* name : {L"MP3 Decoder DMO", L"Tarvex Matroska Splitter"}) {
    EXPECT_EQ(graph->FindFilterByName(name, filter.Put()), S_OK) << Utf8FromWide(name);
  }
  WideString path(MAX_PATH, L'\0');
  GetModuleFileNameW(GetModuleHandleW(L"tarvex.dll"), path.data(), MAX_PATH);
  std::cout << "module " << Utf8FromWide(path.c_str()) << std::endl;
  ComPtr<IVideoWindow> window;
  ASSERT_EQ(graph->QueryInterface(IID_IVideoWindow, window.PutVoid()), S_OK);
  ASSERT_EQ(window->put_WindowStyle(static_cast<LONG>(WS_POPUP)), S_OK);
  ASSERT_EQ(window->SetWindowPosition(0, 0, kWidth, kHeight), S_OK);
  const auto control = graph.Query<IMediaControl>();
  for (const int picture : {0, 15}) {
    LONGLONG position = picture * kPictureTime;
    ASSERT_EQ(graph.Query<IMediaSeeking>()->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                                                         AM_SEEKING_NoPositioning),
              S_OK);
    ASSERT_TRUE(SUCCEEDED(control->Pause()));
    OAFilterState state = 0;
    ASSERT_EQ(control->GetState(kPatienceOfGraph, &state), S_OK);
    ExpectOnScreen(picture);
    // Streams 1 and 2 are sound. The graph renders the other one anew, and is where it was.
    EXPECT_EQ(filter.Query<IAMStreamSelect>()->Enable(picture == 0 ? 2 : 1, AMSTREAMSELECTENABLE_ENABLE), S_OK);
    EXPECT_EQ(control->GetState(kPatienceOfGraph, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    ExpectOnScreen(picture);
  }
  ASSERT_TRUE(SUCCEEDED(control->Run()));
  LONG code = 0;
  EXPECT_TRUE(IsSoon([&] { return graph.Query<IMediaEvent>()->WaitForCompletion(0, &code) == S_OK; }));
  EXPECT_EQ(code, EC_COMPLETE);
  ExpectOnScreen(kPictures - 1);
  EXPECT_TRUE(SUCCEEDED(control->Stop()));
}

// The packages' tests compare where the module is.
TEST(Playback, ShowsThePicturesThatAreInTheFileAndEndsAndTheModuleIsUnloaded) {
  Play();
  EXPECT_TRUE(IsSoon([] {
    CoFreeUnusedLibrariesEx(0, 0);
    return GetModuleHandleW(L"tarvex.dll") == nullptr;
  }));
}

}  // namespace
}  // namespace tarvex::test

// IModuleConfig: parameters, and the settings saved with a graph.
#include <functional>
#include <sstream>

#include "framework/unknown.h"
#include "include/tarvex/module_config.h"
#include "pins/formats/media_guids.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

// {5B2E1C7C-0C6F-4E77-9E0C-6E1B8F3D0A77}: no parameter.
constexpr GUID kNoParameter = {0x5B2E1C7C, 0x0C6F, 0x4E77, {0x9E, 0x0C, 0x6E, 0x1B, 0x8F, 0x3D, 0x0A, 0x77}};

/// Bytes in memory; a write answers what it is told to.
class MemoryStream final : public UnknownImpl<IStream> {
 public:
  explicit MemoryStream(const std::string& bytes = {})
      : UnknownImpl("MemoryStream", nullptr), content(bytes, std::ios::in | std::ios::out | std::ios::app) {}

  HRESULT STDMETHODCALLTYPE Read(void* out, ULONG count, ULONG* read) override {
    content.read(static_cast<char*>(out), count);
    *read = static_cast<ULONG>(content.gcount());
    return *read == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG count, ULONG* written) override {
    content.write(static_cast<const char*>(data), count);
    *written = count;
    return afterEachWrite ? afterEachWrite() : S_OK;
  }

  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  std::stringstream content;
  std::function<HRESULT()> afterEachWrite;  ///< the write's answer
};

class Settings : public GraphTest {
 protected:
  void SetUp() override { m_config = Ask<IModuleConfig>(); }
  void TearDown() override {
    m_config.Reset();
    GraphTest::TearDown();
  }

  HRESULT SetBool(const GUID& parameter, int setting) {
    VARIANT value{};
    value.vt = VT_BOOL;
    value.boolVal = static_cast<VARIANT_BOOL>(setting);
    return m_config->SetValue(&parameter, &value);
  }
  int GetBool(const GUID& parameter) {
    VARIANT value{};
    value.boolVal = 7;
    EXPECT_EQ(m_config->GetValue(&parameter, &value), S_OK);
    EXPECT_EQ(value.vt, VT_BOOL);
    return value.boolVal;
  }
  HRESULT Load(const std::string& bytes) { return m_config->Load(MakeCom<MemoryStream>(bytes).Get()); }

  ComPtr<IModuleConfig> m_config;
};

// What values there are is compared with every file of the corpus elsewhere.
TEST_F(Settings, AreOffAtFirstAndReadAsOnesAndWhatIsNoneIsRefused) {
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
  for (const GUID& parameter : {paramAnnexBOutput, paramSeparatePins}) {
    EXPECT_EQ(GetBool(parameter), 0);
    EXPECT_EQ(SetBool(parameter, 0xFFFF), S_OK);
    EXPECT_EQ(GetBool(parameter), 1);
    EXPECT_EQ(SetBool(parameter, 0), S_OK);
    EXPECT_EQ(GetBool(parameter), 0);
  }
  EXPECT_EQ(m_config->IsDirty(), S_OK);
  VARIANT value{};
  value.vt = VT_R8;
  for (const GUID& parameter : {kNoParameter, paramChapterList, paramDocType}) {
    EXPECT_EQ(m_config->SetValue(&parameter, &value), E_NOTIMPL);
  }
  EXPECT_EQ(m_config->GetValue(&paramPosition, &value), E_NOTIMPL);
  EXPECT_EQ(QueryFor<IModuleConfig>(CreateSplitter().Get())->SetValue(&paramPosition, &value), VFW_E_NOT_IN_GRAPH);
  EXPECT_EQ(m_config->GetValue(&paramDocType, &value), E_FAIL) << "nothing is open";
  EXPECT_EQ(m_config->GetValue(&paramChapterList, &value), E_INVALIDARG) << "neither a number nor room for a list";
}

TEST_F(Settings, SeparatePinsReplacesThePinsOfAnOpenFileThatIsStopped) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const ComPtr<IPin> former = Output(0);
  ASSERT_TRUE(SUCCEEDED(Splitter()->Pause()));
  EXPECT_EQ(SetBool(paramSeparatePins, 1), VFW_E_NOT_STOPPED);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  EXPECT_EQ(Graph().OutputPins().size(), 3U);
  Splitter()->Stop();
  for (const auto& [setting, pins] : {std::pair{1, 8U}, {0, 3U}}) {
    EXPECT_EQ(SetBool(paramSeparatePins, setting), S_OK);
    EXPECT_EQ(Graph().OutputPins().size(), pins);
  }
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
  PIN_INFO info{};
  EXPECT_TRUE(FAILED(former->QueryPinInfo(&info))) << "a pin that was replaced still claims its filter";
}

TEST_F(Settings, H264FormIsThatOfTheNextConnection) {
  const auto isByteStream = [this] {
    const CMediaType type = TypeOf(Output(0).Get());
    const bool named = type.FormatAs<MPEG2VIDEOINFO>()->hdr.bmiHeader.biCompression == FourCc("H264");
    EXPECT_EQ(type.subtype, named ? kSubtypeH264ByteStream : SubtypeOf(FourCc("AVC1")));
    return named;
  };
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Graph().ConnectSink(Output(0).Get(), SinkKind::kCounting), S_OK);
  EXPECT_FALSE(isByteStream());
  EXPECT_EQ(SetBool(paramAnnexBOutput, 1), S_OK);
  EXPECT_TRUE(isByteStream());
  CMediaType connected;
  ASSERT_EQ(Output(0)->ConnectionMediaType(&connected), S_OK);
  EXPECT_EQ(connected.subtype, SubtypeOf(FourCc("AVC1"))) << "what was agreed with the peer is kept";
  // Pins made from now on have it as well, whether for this file or for the next.
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  EXPECT_TRUE(isByteStream());
  EXPECT_EQ(Graph().CloseSource(), S_OK);
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  EXPECT_TRUE(isByteStream());
  EXPECT_EQ(SetBool(paramAnnexBOutput, 0), S_OK);
  EXPECT_FALSE(isByteStream());
}

// What a graph file holds: the version as text, then a byte for each setting.
std::string SavedBytes(char annexB, char separate, std::string_view version = "00000000000 ") {
  std::string bytes;
  for (const char letter : version) bytes.append({letter, '\0'});
  return bytes.append({annexB, separate});
}

TEST_F(Settings, AreSavedAsVersionAndTwoBytesAndLoadedAgainOrNotAtAll) {
  SetBool(paramSeparatePins, 1);
  const auto stream = MakeCom<MemoryStream>();
  EXPECT_EQ(m_config->Save(stream.Get(), FALSE), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_OK) << "the caller did not ask to clear it";
  EXPECT_EQ(stream->content.str(), SavedBytes(0, 1));
  stream->afterEachWrite = [] { return E_FAIL; };
  EXPECT_TRUE(FAILED(m_config->Save(stream.Get(), TRUE)));
  stream->afterEachWrite = [this] { return SetBool(paramSeparatePins, 1); };
  EXPECT_EQ(m_config->Save(stream.Get(), TRUE), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_OK) << "a change that comes while a save writes is still to be saved";
  stream->afterEachWrite = nullptr;
  EXPECT_EQ(m_config->Save(stream.Get(), TRUE), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
  EXPECT_EQ(Load(SavedBytes(1, 0)), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);

  for (const std::size_t length : {0U, 23U, 25U}) {
    EXPECT_TRUE(FAILED(Load(SavedBytes(0, 1).substr(0, length)))) << length;
  }
  for (const char* version : {"00000000001 ", "0000000000x ", "000000000000", "99999999999 "}) {
    EXPECT_TRUE(FAILED(Load(SavedBytes(0, 1, version)))) << version;
  }
  EXPECT_EQ(GetBool(paramAnnexBOutput), 1);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
}

}  // namespace
}  // namespace tarvex::test

// IModuleConfig: parameters, and the settings saved with a graph.
#include <functional>

#include "include/tarvex/module_config.h"
#include "pins/formats/media_guids.h"
#include "tests/contract/contract_fixture.h"
#include "tests/contract/memory_stream.h"

namespace tarvex::test {
namespace {

// {5B2E1C7C-0C6F-4E77-9E0C-6E1B8F3D0A77}: no parameter.
constexpr GUID kNoParameter = {0x5B2E1C7C, 0x0C6F, 0x4E77, {0x9E, 0x0C, 0x6E, 0x1B, 0x8F, 0x3D, 0x0A, 0x77}};

VARIANT EmptyVariant(VARTYPE type = VT_EMPTY) {
  VARIANT value{};
  value.vt = type;
  return value;
}

class Settings : public GraphTest {
 protected:
  void SetUp() override { m_config = Ask<IModuleConfig>(); }
  void TearDown() override {
    m_config.Reset();
    GraphTest::TearDown();
  }

  HRESULT SetBool(const GUID& parameter, int setting) {
    VARIANT value = EmptyVariant(VT_BOOL);
    value.boolVal = static_cast<VARIANT_BOOL>(setting);
    return m_config->SetValue(&parameter, &value);
  }
  int GetBool(const GUID& parameter) {
    VARIANT value = EmptyVariant();
    value.boolVal = 7;
    EXPECT_EQ(m_config->GetValue(&parameter, &value), S_OK);
    EXPECT_EQ(value.vt, VT_BOOL);
    return value.boolVal;
  }
  std::size_t OutputPinCount() { return Graph().OutputPins().size(); }

  ComPtr<IModuleConfig> m_config;
};

TEST_F(Settings, AreOffAtFirstAndReadAsOnesAndWhatIsNoneIsRefused) {
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
  for (const GUID& parameter : {paramAnnexBOutput, paramSeparatePins}) {
    EXPECT_EQ(GetBool(parameter), 0);
    EXPECT_EQ(SetBool(parameter, 0), S_OK);
    EXPECT_EQ(m_config->IsDirty(), S_OK) << "even without a change";
    EXPECT_EQ(SetBool(parameter, 0xFFFF), S_OK);
    EXPECT_EQ(GetBool(parameter), 1);
    EXPECT_EQ(SetBool(parameter, 0), S_OK);
    EXPECT_EQ(GetBool(parameter), 0);
  }
  VARIANT value = EmptyVariant(VT_I8);
  for (const GUID& parameter : {kNoParameter, paramChapterList, paramDocType}) {
    EXPECT_EQ(m_config->SetValue(&parameter, &value), E_NOTIMPL);
  }
  EXPECT_EQ(m_config->GetValue(&kNoParameter, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->GetValue(&paramPosition, &value), E_NOTIMPL);
  EXPECT_TRUE(FAILED(QueryFor<IModuleConfig>(CreateSplitter().Get())->SetValue(&paramPosition, &value))) << "no graph";
}

TEST_F(Settings, SeparatePinsReplacesThePinsOfAnOpenFileThatIsStopped) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  const ComPtr<IPin> former = Output(0);
  ASSERT_TRUE(SUCCEEDED(Splitter()->Pause()));
  EXPECT_EQ(SetBool(paramSeparatePins, 1), VFW_E_NOT_STOPPED);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  EXPECT_EQ(OutputPinCount(), 3u);
  Splitter()->Stop();
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  EXPECT_EQ(OutputPinCount(), 8u);
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
  EXPECT_EQ(SetBool(paramSeparatePins, 0), S_OK);
  EXPECT_EQ(OutputPinCount(), 3u);
  PIN_INFO info{};
  EXPECT_TRUE(FAILED(former->QueryPinInfo(&info))) << "a pin that was replaced still claims its filter";
}

bool IsByteStream(const CMediaType& type) {
  const auto* info = type.FormatAs<MPEG2VIDEOINFO>();
  const bool byteStream = info->hdr.bmiHeader.biCompression == FourCc("H264");
  EXPECT_EQ(info->hdr.bmiHeader.biCompression, byteStream ? FourCc("H264") : FourCc("AVC1"));
  EXPECT_EQ(type.subtype, byteStream ? kSubtypeH264ByteStream : SubtypeOf(FourCc("AVC1")));
  return byteStream;
}

TEST_F(Settings, H264FormIsThatOfTheNextConnection) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  const ComPtr<IPin> pin = Output(0);
  ASSERT_EQ(Graph().ConnectSink(pin.Get(), SinkKind::kCounting), S_OK);
  EXPECT_FALSE(IsByteStream(TypeOf(pin.Get())));
  EXPECT_EQ(SetBool(paramAnnexBOutput, 1), S_OK);
  EXPECT_TRUE(IsByteStream(TypeOf(pin.Get())));
  CMediaType connected;
  ASSERT_EQ(pin->ConnectionMediaType(&connected), S_OK);
  EXPECT_FALSE(IsByteStream(connected)) << "what was agreed with the peer is kept";
  // Pins made from now on have it as well, whether for this file or for the next.
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  EXPECT_TRUE(IsByteStream(TypeOf(Output(0).Get())));
  EXPECT_EQ(Graph().CloseSource(), S_OK);
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  EXPECT_TRUE(IsByteStream(TypeOf(Output(0).Get())));
  EXPECT_EQ(SetBool(paramAnnexBOutput, 0), S_OK);
  EXPECT_FALSE(IsByteStream(TypeOf(Output(0).Get())));
}

// What they answer is compared with every file of the corpus elsewhere.
TEST_F(Settings, ChapterListAndDocTypeAnswerByTheCallersType) {
  VARIANT value = EmptyVariant(VT_R8);
  EXPECT_EQ(m_config->GetValue(&paramDocType, &value), E_FAIL) << "nothing is open";
  ASSERT_EQ(Graph().Open(CorpusFile("opus.webm")), S_OK);
  EXPECT_EQ(m_config->GetValue(&paramDocType, &value), S_OK);
  EXPECT_TRUE(value.ulVal == 1 && value.vt == VT_R8);
  for (const VARTYPE type : {VT_PTR, VT_BOOL}) {
    value = EmptyVariant(static_cast<VARTYPE>(type));
    EXPECT_EQ(m_config->GetValue(&paramChapterList, &value), E_INVALIDARG);
  }
}

// What a graph file holds: the version as text, then a byte for each setting.
std::vector<std::uint8_t> SavedBytes(std::uint8_t annexB, std::uint8_t separate, const char* version = "00000000000 ") {
  std::vector<std::uint8_t> bytes;
  for (; *version != 0; ++version) bytes.insert(bytes.end(), {static_cast<std::uint8_t>(*version), 0});
  bytes.insert(bytes.end(), {annexB, separate});
  return bytes;
}

TEST_F(Settings, AreSavedAsVersionAndTwoBytesAndLoadedAgain) {
  SetBool(paramSeparatePins, 1);
  const auto stream = MakeCom<MemoryStream>();
  EXPECT_EQ(m_config->Save(stream.Get(), FALSE), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_OK) << "the caller did not ask to clear it";
  stream->bytes.clear();
  EXPECT_EQ(m_config->Save(stream.Get(), TRUE), S_OK);
  EXPECT_EQ(stream->bytes, SavedBytes(0, 1));
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
  ULARGE_INTEGER size{};
  EXPECT_EQ(m_config->GetSizeMax(&size), S_OK);
  EXPECT_EQ(size.QuadPart, 24u);
  EXPECT_EQ(m_config->Load(MakeCom<MemoryStream>(SavedBytes(1, 0)).Get()), S_OK);
  EXPECT_EQ(GetBool(paramAnnexBOutput), 1);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
}

class ChangingStream final : public MemoryStream {
 public:
  HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG count, ULONG* written) override {
    const HRESULT result = MemoryStream::Write(data, count, written);
    afterEachWrite();
    return result;
  }
  std::function<void()> afterEachWrite;
};

TEST_F(Settings, AChangeThatComesWhileASaveWritesIsStillToBeSaved) {
  const auto stream = MakeCom<ChangingStream>();
  stream->afterEachWrite = [&] { SetBool(paramAnnexBOutput, 1); };
  EXPECT_EQ(m_config->Save(stream.Get(), TRUE), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_OK);
}

TEST_F(Settings, AStreamThatEndsEarlyOrIsDamagedOrTooNewOrFullChangesNothing) {
  SetBool(paramAnnexBOutput, 0);
  for (const std::size_t length : {0U, 23U, 24U, 25U}) {
    std::vector<std::uint8_t> cut = SavedBytes(1, 1);
    cut.resize(length);
    EXPECT_TRUE(FAILED(m_config->Load(MakeCom<MemoryStream>(cut).Get()))) << length;
  }
  for (const char* version : {"00000000001 ", "0000000000x ", "000000000000", "99999999999 "}) {
    EXPECT_TRUE(FAILED(m_config->Load(MakeCom<MemoryStream>(SavedBytes(1, 1, version)).Get()))) << version;
  }
  EXPECT_EQ(GetBool(paramAnnexBOutput), 0);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  const auto stream = MakeCom<MemoryStream>();
  stream->capacity = 25;
  EXPECT_TRUE(FAILED(m_config->Save(stream.Get(), TRUE)));
  EXPECT_EQ(m_config->IsDirty(), S_OK);
}

}  // namespace
}  // namespace tarvex::test

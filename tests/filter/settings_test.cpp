// IModuleConfig: parameters, and the settings saved with a graph.
#include <array>

#include "framework/bstr.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "pins/creator/media_guids.h"
#include "tests/filter/filter_fixture.h"
#include "tests/filter/memory_stream.h"

namespace tarvex::test {
namespace {

// {5B2E1C7C-0C6F-4E77-9E0C-6E1B8F3D0A77}: no parameter.
constexpr GUID kNoParameter = {0x5B2E1C7C, 0x0C6F, 0x4E77, {0x9E, 0x0C, 0x6E, 0x1B, 0x8F, 0x3D, 0x0A, 0x77}};

VARIANT EmptyVariant(VARTYPE type = VT_EMPTY) {
  VARIANT value{};
  value.vt = type;
  return value;
}

class Settings : public FilterTest {
 protected:
  void SetUp() override { m_config = Ask<IModuleConfig>(); }
  void TearDown() override {
    m_config.Reset();
    FilterTest::TearDown();
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

TEST_F(Settings, AreOffAtFirst) {
  EXPECT_EQ(GetBool(paramAnnexBOutput), 0);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
}

TEST_F(Settings, TrueOfAnyFormIsReadAsOne) {
  for (const GUID& parameter : {paramAnnexBOutput, paramSeparatePins}) {
    EXPECT_EQ(SetBool(parameter, 0xFFFF), S_OK);
    EXPECT_EQ(GetBool(parameter), 1);
    EXPECT_EQ(SetBool(parameter, 0), S_OK);
    EXPECT_EQ(GetBool(parameter), 0);
  }
}

TEST_F(Settings, EverySetMarksDirtyEvenWithoutAChange) {
  EXPECT_EQ(SetBool(paramSeparatePins, 0), S_OK);
  EXPECT_EQ(m_config->IsDirty(), S_OK);
}

TEST_F(Settings, UnknownAndOneWayParametersAreNotImplemented) {
  VARIANT value = EmptyVariant();
  EXPECT_EQ(m_config->SetValue(&kNoParameter, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->GetValue(&kNoParameter, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->SetValue(&paramChapterList, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->SetValue(&paramDocType, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->GetValue(&paramPosition, &value), E_NOTIMPL);
  EXPECT_EQ(m_config->Reserved1(), E_NOTIMPL);
  EXPECT_EQ(m_config->Reserved2(), E_NOTIMPL);
}

TEST_F(Settings, NullArgumentsAreErrors) {
  VARIANT value = EmptyVariant();
  EXPECT_EQ(m_config->SetValue(nullptr, &value), E_POINTER);
  EXPECT_EQ(m_config->GetValue(&paramAnnexBOutput, nullptr), E_POINTER);
}

TEST_F(Settings, SeparatePinsRebuildsThePinsOfAnOpenFile) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  EXPECT_EQ(OutputPinCount(), 3u);
  const ComPtr<IPin> former = Graph().OutputPins().front();
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  EXPECT_EQ(OutputPinCount(), 8u);
  EXPECT_EQ(SetBool(paramSeparatePins, 0), S_OK);
  EXPECT_EQ(OutputPinCount(), 3u);

  PIN_INFO info{};
  EXPECT_TRUE(FAILED(former->QueryPinInfo(&info))) << "a pin that was replaced still claims its filter";
}

TEST_F(Settings, SeparatePinsDisconnectsWhatItReplaces) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  for (const auto& sink : Graph().Sinks()) EXPECT_FALSE(IsConnected(sink->Pin()));
}

TEST_F(Settings, SeparatePinsIsRefusedWhileTheFilterIsActive) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  ASSERT_EQ(Splitter()->Pause(), S_OK);
  EXPECT_EQ(SetBool(paramSeparatePins, 1), VFW_E_NOT_STOPPED);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
  EXPECT_EQ(OutputPinCount(), 3u);
  Splitter()->Stop();
}

MediaTypePtr OfferedType(IPin* pin) {
  ComPtr<IEnumMediaTypes> types;
  AM_MEDIA_TYPE* type = nullptr;
  if (SUCCEEDED(pin->EnumMediaTypes(types.Put()))) types->Next(1, &type, nullptr);
  return MediaTypePtr(type);
}

bool IsByteStream(const AM_MEDIA_TYPE* type) {
  const CMediaType copy(*type);
  const auto* info = copy.FormatAs<MPEG2VIDEOINFO>();
  const bool byteStream = info->hdr.bmiHeader.biCompression == FourCc("H264");
  EXPECT_EQ(info->hdr.bmiHeader.biCompression, byteStream ? FourCc("H264") : FourCc("AVC1"));
  EXPECT_EQ(copy.subtype, byteStream ? kSubtypeH264ByteStream : SubtypeOf(FourCc("AVC1")));
  return byteStream;
}

TEST_F(Settings, H264FormIsThatOfTheNextConnection) {
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  const ComPtr<IPin> pin = Graph().OutputPins().front();
  ASSERT_EQ(Graph().ConnectSink(pin.Get(), SinkKind::kCounting), S_OK);
  EXPECT_FALSE(IsByteStream(OfferedType(pin.Get()).get()));
  EXPECT_EQ(SetBool(paramAnnexBOutput, 1), S_OK);
  EXPECT_TRUE(IsByteStream(OfferedType(pin.Get()).get()));
  CMediaType connected;
  ASSERT_EQ(pin->ConnectionMediaType(&connected), S_OK);
  EXPECT_FALSE(IsByteStream(&connected)) << "what was agreed with the peer is kept";
  // Pins made from now on have it as well, whether for this file or for the next.
  EXPECT_EQ(SetBool(paramSeparatePins, 1), S_OK);
  EXPECT_TRUE(IsByteStream(OfferedType(Graph().OutputPins().front().Get()).get()));
  EXPECT_EQ(Graph().CloseSource(), S_OK);
  ASSERT_EQ(Graph().Open(CorpusFile("multi.mkv")), S_OK);
  EXPECT_TRUE(IsByteStream(OfferedType(Graph().OutputPins().front().Get()).get()));
  EXPECT_EQ(SetBool(paramAnnexBOutput, 0), S_OK);
  EXPECT_FALSE(IsByteStream(OfferedType(Graph().OutputPins().front().Get()).get()));
}

TEST_F(Settings, ChapterListAnswersByTheCallersType) {
  ASSERT_EQ(Graph().Open(CorpusFile("chapters_edges.mkv")), S_OK);
  VARIANT value = EmptyVariant(VT_UINT);
  ASSERT_EQ(m_config->GetValue(&paramChapterList, &value), S_OK);
  ASSERT_EQ(value.ulVal, 5u);

  std::array<ChapterEntry, 5> chapters{};
  value = EmptyVariant(VT_PTR);
  value.byref = chapters.data();
  ASSERT_EQ(m_config->GetValue(&paramChapterList, &value), S_OK);
  std::vector<BStr> names(chapters.size());  // owners: the names are ours now
  for (std::size_t i = 0; i < chapters.size(); ++i) *names[i].Put() = chapters[i].name;
  EXPECT_EQ(Utf8FromWide(names[0].View()), "first child");
  EXPECT_EQ(Utf8FromWide(names[4].View()), "hidden");
  EXPECT_EQ(chapters[1].start, 1234567);
  EXPECT_EQ(chapters[1].end, 2000000);

  value = EmptyVariant(VT_PTR);
  EXPECT_EQ(m_config->GetValue(&paramChapterList, &value), E_INVALIDARG);
  value = EmptyVariant(VT_BOOL);
  EXPECT_EQ(m_config->GetValue(&paramChapterList, &value), E_INVALIDARG);
}

TEST_F(Settings, DocTypeIsANumberForTheTwoKnownOnes) {
  VARIANT value = EmptyVariant();
  EXPECT_EQ(m_config->GetValue(&paramDocType, &value), E_FAIL);  // nothing is open
  const std::array<std::pair<const char*, ULONG>, 2> known = {{{"multi.mkv", 0}, {"opus.webm", 1}}};
  for (const auto& [file, number] : known) {
    ASSERT_EQ(Graph().Open(CorpusFile(file)), S_OK);
    value = EmptyVariant(VT_R8);
    value.ulVal = 7;
    EXPECT_EQ(m_config->GetValue(&paramDocType, &value), S_OK);
    EXPECT_EQ(value.ulVal, number);
    EXPECT_EQ(value.vt, VT_R8);
    Graph().CloseSource();
  }
  ASSERT_EQ(Graph().Open(CorpusFile("doctype_other.mkv")), S_OK);
  EXPECT_EQ(m_config->GetValue(&paramDocType, &value), E_FAIL);
}

// What a graph file holds: the version as text, then a byte for each setting.
std::vector<std::uint8_t> SavedBytes(std::uint8_t annexB, std::uint8_t separate, char version = '0') {
  std::vector<std::uint8_t> bytes;
  for (const char digit : std::string("0000000000") + version + " ") {
    bytes.push_back(static_cast<std::uint8_t>(digit));
    bytes.push_back(0);
  }
  bytes.push_back(annexB);
  bytes.push_back(separate);
  return bytes;
}

TEST_F(Settings, AreSavedAsVersionAndTwoBytes) {
  SetBool(paramSeparatePins, 1);
  const auto stream = MakeCom<MemoryStream>();
  EXPECT_EQ(m_config->Save(stream.Get(), TRUE), S_OK);
  EXPECT_EQ(stream->bytes, SavedBytes(0, 1));
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
  ULARGE_INTEGER size{};
  EXPECT_EQ(m_config->GetSizeMax(&size), S_OK);
  EXPECT_EQ(size.QuadPart, 24u);
}

TEST_F(Settings, AreLoadedAsSaved) {
  EXPECT_EQ(m_config->Load(MakeCom<MemoryStream>(SavedBytes(1, 1)).Get()), S_OK);
  EXPECT_EQ(GetBool(paramAnnexBOutput), 1);
  EXPECT_EQ(GetBool(paramSeparatePins), 1);
  EXPECT_EQ(m_config->IsDirty(), S_FALSE);
}

TEST_F(Settings, AStreamThatEndsEarlyOrIsTooNewChangesNothing) {
  for (const std::size_t length : {std::size_t{0}, std::size_t{23}, std::size_t{24}, std::size_t{25}}) {
    std::vector<std::uint8_t> bytes = SavedBytes(1, 1);
    bytes.resize(length);
    EXPECT_TRUE(FAILED(m_config->Load(MakeCom<MemoryStream>(bytes).Get()))) << length;
  }
  EXPECT_TRUE(FAILED(m_config->Load(MakeCom<MemoryStream>(SavedBytes(1, 1, '1')).Get())));
  EXPECT_EQ(GetBool(paramAnnexBOutput), 0);
  EXPECT_EQ(GetBool(paramSeparatePins), 0);
}

TEST_F(Settings, AFullStreamFailsTheSaveAndStaysDirty) {
  SetBool(paramAnnexBOutput, 1);
  const auto stream = MakeCom<MemoryStream>();
  stream->capacity = 25;
  EXPECT_TRUE(FAILED(m_config->Save(stream.Get(), TRUE)));
  EXPECT_EQ(stream->bytes.size(), 25u);
  EXPECT_EQ(m_config->IsDirty(), S_OK);
}

TEST_F(Settings, PositionSeeksTheGraphAndNeedsOne) {
  const ComPtr<IBaseFilter> alone = CreateSplitter();
  VARIANT value = EmptyVariant(VT_I8);
  EXPECT_TRUE(FAILED(QueryFor<IModuleConfig>(alone.Get())->SetValue(&paramPosition, &value)));
}

}  // namespace
}  // namespace tarvex::test

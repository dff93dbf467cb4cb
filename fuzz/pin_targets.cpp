// The pure steps of the pins: media types, and start codes.
#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/message_error.h"
#include "fuzz/targets.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/formats/h264_form.h"
#include "pins/output/annex_b_converter.h"
#include "scanner/ebml_scanner.h"
#include "scanner/source/read_ahead_reader.h"
#include "tests/support/ebml_writer.h"
#include "tests/support/memory_reader.h"

namespace tarvex::fuzz {

namespace {

using namespace test;  // NOLINT: the writer's vocabulary

constexpr std::array<std::string_view, 26> kCodecs = {"V_MPEG4/ISO/AVC",
                                                      "V_MPEG4/ISO/ASP",
                                                      "V_MPEG1",
                                                      "V_MPEG2",
                                                      "V_VP8",
                                                      "V_THEORA",
                                                      "V_MS/VFW/FOURCC",
                                                      "A_AC3",
                                                      "A_DTS",
                                                      "A_TRUEHD",
                                                      "A_MPEG/L3",
                                                      "A_AAC",
                                                      "A_AAC/MPEG4/LC/SBR",
                                                      "A_FLAC",
                                                      "A_VORBIS",
                                                      "A_PCM/INT/LIT",
                                                      "A_PCM/FLOAT/IEEE",
                                                      "A_TTA1",
                                                      "A_WAVPACK4",
                                                      "A_REAL/COOK",
                                                      "A_MS/ACM",
                                                      "S_TEXT/UTF8",
                                                      "S_TEXT/ASS",
                                                      "S_VOBSUB",
                                                      "S_TEXT/ASCII",
                                                      "A_REAL/14_4"};

/// Takes values from the front of an input; zero when it is used up.
class Reader {
 public:
  explicit Reader(Input input) : m_rest(input) {}
  std::uint8_t Byte() {
    if (m_rest.empty()) return 0;
    const std::uint8_t value = m_rest.front();
    m_rest = m_rest.subspan(1);
    return value;
  }
  std::uint64_t Number(int bytes) {
    std::uint64_t value = 0;
    for (; bytes > 0; --bytes) value = value << 8 | Byte();
    return value;
  }
  Input Take(std::size_t count) {
    const Input taken = m_rest.first(std::min(count, m_rest.size()));
    m_rest = m_rest.subspan(taken.size());
    return taken;
  }
  Input Rest() const { return m_rest; }

 private:
  Input m_rest;
};

ByteString TrackOf(Reader& input) {
  const std::string_view codec = kCodecs[input.Byte() % kCodecs.size()];
  const std::uint64_t type = codec[0] == 'V' ? 1 : codec[0] == 'A' ? 2 : 17;
  const ByteString video = Element(
      id::kVideo, Join({Unsigned(id::kPixelWidth, input.Number(4)), Unsigned(id::kPixelHeight, input.Number(4))}));
  const ByteString audio =
      Element(id::kAudio, Join({Float(id::kSamplingFrequency, static_cast<double>(input.Number(6))),
                                Unsigned(id::kChannels, input.Number(3))}));
  const ByteString duration = Unsigned(id::kDefaultDuration, input.Number(8));
  const Input codecPrivate = input.Rest();
  return Element(
      id::kTrackEntry,
      Join({Unsigned(id::kTrackNumber, 1), Unsigned(id::kTrackType, type), Text(id::kCodecId, codec), duration, video,
            audio, Element(id::kCodecPrivate, ByteString(codecPrivate.begin(), codecPrivate.end()))}));
}

/// Builds the record of each track while the file is opened, as the filter does.
class Creator : public CMatroskaCallback {
 public:
  explicit Creator(CEbmlScanner& scanner) : m_scanner(scanner) {}
  void OnTrack(std::uint32_t heapIndex) override { m_creator.CreatePin(*m_scanner.TrackAt(heapIndex)); }
  bool ProcessEvents() override { return false; }
  bool OnData(const FrameInfo& /*frame*/) override { return true; }
  COutPinsCreator& Records() { return m_creator; }

 private:
  CEbmlScanner& m_scanner;
  COutPinsCreator m_creator;
};

}  // namespace

void FuzzMediaTypes(Input track) {
  Reader input(track);
  MemoryReader file(MatroskaFile(Join({Element(id::kInfo, {}), Element(id::kTracks, TrackOf(input))})));
  const auto readAhead = MakeCom<ReadAheadReader>(&file);
  CEbmlScanner scanner;
  Creator creator(scanner);
  scanner.SetCallback(&creator);
  try {
    scanner.CanProcess(readAhead.Get());
    creator.Records().SetH264Form(true);
    TrackPinInfo record;
    if (!creator.Records().GetTrackInfoByNumber(1, record)) return;
    if (auto converter = AnnexBConverter::For(record.mediaType)) {
      FrameInfo frame;
      frame.keyFrame = true;
      frame.data = track.data();
      frame.size = static_cast<std::uint32_t>(track.size());
      converter->Convert(frame);
    }
  } catch (const MessageError&) {  // a refusal is an answer
  }
}

void FuzzAnnexB(Input frame) {
  Reader input(frame);
  const unsigned lengthSize = input.Byte() % 4 + 1U;
  const bool key = input.Byte() % 2 != 0;
  const Input sets = input.Take(input.Byte());
  const std::vector<std::uint8_t> exact(input.Rest().begin(), input.Rest().end());
  AnnexBConverter converter(lengthSize, sets);
  FrameInfo info;
  info.keyFrame = key;
  info.data = exact.data();
  info.size = static_cast<std::uint32_t>(exact.size());
  const FrameInfo converted = converter.Convert(info);
  // At most a start code for every length, and the prefix.
  if (converted.size > std::size_t{info.size} * 4 + sets.size() * 3 + 16) __builtin_trap();
}

}  // namespace tarvex::fuzz

#include "tests/playback/plain_format_filter.h"

#include <cstring>

#include "host/graph/tap_input_pin.h"
#include "host/graph/tap_output_pin.h"

// After windows.h, which it depends on.
#include <dvdmedia.h>

namespace tarvex::test {
namespace {

class NoObserver : public host::SampleObserver {
 public:
  void OnSegment(REFERENCE_TIME, REFERENCE_TIME, double) override {}
  void OnSample(const host::SampleView&) override {}
  void OnEndOfStream() override {}
};

class VideoInfo2Input : public host::TapInputPin {
 public:
  using TapInputPin::TapInputPin;

  // Nothing else: whatever takes every type is given the file reader's bytes as well.
  HRESULT CheckMediaType(const CMediaType* type) override {
    const bool fits = type->majortype == MEDIATYPE_Video && type->formattype == FORMAT_VideoInfo2 &&
                      type->pbFormat != nullptr && type->cbFormat >= sizeof(VIDEOINFOHEADER2);
    return fits ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }
};

class VideoInfoOutput : public host::TapOutputPin {
 public:
  VideoInfoOutput(host::TapFilter* filter, CCritSec* lock) : TapOutputPin(filter, lock), m_filter(filter) {}

  HRESULT CheckMediaType(const CMediaType* type) override {
    return type->formattype == FORMAT_VideoInfo ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
  }

  HRESULT GetMediaType(int position, CMediaType* type) override {
    const HRESULT result = TapOutputPin::GetMediaType(position, type);
    if (result != S_OK) return result;
    const auto* from = reinterpret_cast<const VIDEOINFOHEADER2*>(m_filter->InputPin()->CurrentMediaType().pbFormat);
    VIDEOINFOHEADER plain{};
    plain.rcSource = from->rcSource;
    plain.rcTarget = from->rcTarget;
    plain.dwBitRate = from->dwBitRate;
    plain.AvgTimePerFrame = from->AvgTimePerFrame;
    plain.bmiHeader = from->bmiHeader;
    type->formattype = FORMAT_VideoInfo;
    std::memcpy(type->AllocFormatBuffer(sizeof plain), &plain, sizeof plain);
    return S_OK;
  }

 private:
  host::TapFilter* const m_filter;
};

}  // namespace

PlainFormatFilter::PlainFormatFilter() : TapFilter(std::make_shared<NoObserver>()) {
  m_output.Reset();
  m_input = OwnedPin<host::TapInputPin>(new VideoInfo2Input(this, &m_filterLock, std::make_shared<NoObserver>()));
  m_output = OwnedPin<host::TapOutputPin>(new VideoInfoOutput(this, &m_filterLock));
}

}  // namespace tarvex::test

#include "host/graph/sample_observer.h"

#include "framework/media_type.h"

namespace tarvex::host {

SampleView ViewSample(IMediaSample* sample) {
  SampleView view;
  REFERENCE_TIME start = 0;
  REFERENCE_TIME stop = 0;
  const HRESULT timed = sample->GetTime(&start, &stop);
  if (SUCCEEDED(timed)) view.start = start;
  if (timed == S_OK) view.stop = stop;
  view.sync = sample->IsSyncPoint() == S_OK;
  view.discontinuity = sample->IsDiscontinuity() == S_OK;
  view.preroll = sample->IsPreroll() == S_OK;
  AM_MEDIA_TYPE* type = nullptr;
  view.typeChange = sample->GetMediaType(&type) == S_OK;
  const MediaTypePtr owner(type);
  BYTE* data = nullptr;
  const LONG length = sample->GetActualDataLength();
  if (length > 0 && SUCCEEDED(sample->GetPointer(&data))) view.data = {data, static_cast<std::size_t>(length)};
  return view;
}

}  // namespace tarvex::host

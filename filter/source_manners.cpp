// Asking the source for its class.
#include "filter/source_manners.h"

#include "framework/com_ptr.h"

namespace tarvex {

SourceReads ReadsTakenBy(IPin* sourcePin) noexcept {
  PIN_INFO info{};
  if (FAILED(sourcePin->QueryPinInfo(&info))) return SourceReads::kOneAtATime;
  const auto filter = ComPtr<IBaseFilter>::Attach(info.pFilter);
  CLSID id{};
  const bool isPlatforms = filter && SUCCEEDED(filter->GetClassID(&id)) && id == CLSID_AsyncReader;
  return isPlatforms ? SourceReads::kSeveralAtATime : SourceReads::kOneAtATime;
}

}  // namespace tarvex

// What pin creation needs from the filter: where pins go and what they are built with. Implemented
// by the filter; called on the thread that opens the file.
#pragma once

#include <cstdint>

#include "framework/com_ptr.h"
#include "framework/platform/platform.h"

namespace tarvex {

class CBaseFilter;
class CCritSec;
class CMatroskaOutputPin;
class PinHost;

class PinOwner {
 public:
  virtual CBaseFilter* Filter() = 0;      ///< the filter that new pins belong to; not counted
  virtual CCritSec* FilterLock() = 0;     ///< the lock handed to every pin
  virtual PinHost* Host() = 0;            ///< what new pins talk to; not counted
  virtual bool AnnexBOutput() const = 0;  ///< H.264 pins start in byte-stream form

  /// Adds a pin at the end of the filter's list, which keeps a reference. A null pin is refused.
  virtual void AppendOutputPin(ComPtr<CMatroskaOutputPin> pin) = 0;

  /// Switches the pin of the stream's kind to the stream with this index.
  virtual HRESULT EnableStream(std::uint32_t streamIndex) = 0;

 protected:
  PinOwner() = default;
  PinOwner(const PinOwner&) = default;
  PinOwner& operator=(const PinOwner&) = default;
  ~PinOwner() = default;
};

}  // namespace tarvex

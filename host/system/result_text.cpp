#include "host/system/result_text.h"

#include <fmt/format.h>

namespace tarvex::host {

namespace {

struct NamedResult {
  HRESULT result;
  const char* name;
};

constexpr NamedResult kResults[] = {
    {E_FAIL, "E_FAIL"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {E_NOINTERFACE, "E_NOINTERFACE"},
    {E_NOTIMPL, "E_NOTIMPL"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {REGDB_E_CLASSNOTREG, "REGDB_E_CLASSNOTREG"},
    {VFW_E_CANNOT_CONNECT, "VFW_E_CANNOT_CONNECT"},
    {VFW_E_CANNOT_RENDER, "VFW_E_CANNOT_RENDER"},
    {VFW_E_INVALIDMEDIATYPE, "VFW_E_INVALIDMEDIATYPE"},
    {VFW_E_NO_ACCEPTABLE_TYPES, "VFW_E_NO_ACCEPTABLE_TYPES"},
    {VFW_E_NO_ALLOCATOR, "VFW_E_NO_ALLOCATOR"},
    {VFW_E_NO_AUDIO_HARDWARE, "VFW_E_NO_AUDIO_HARDWARE"},
    {VFW_E_NO_DECOMPRESSOR, "VFW_E_NO_DECOMPRESSOR"},
    {VFW_E_TYPE_NOT_ACCEPTED, "VFW_E_TYPE_NOT_ACCEPTED"},
    {VFW_E_UNSUPPORTED_AUDIO, "VFW_E_UNSUPPORTED_AUDIO"},
    {VFW_E_UNSUPPORTED_STREAM, "VFW_E_UNSUPPORTED_STREAM"},
    {VFW_E_WRONG_STATE, "VFW_E_WRONG_STATE"},
    {VFW_S_AUDIO_NOT_RENDERED, "VFW_S_AUDIO_NOT_RENDERED"},
    {VFW_S_PARTIAL_RENDER, "VFW_S_PARTIAL_RENDER"},
    {VFW_S_VIDEO_NOT_RENDERED, "VFW_S_VIDEO_NOT_RENDERED"},
};

}  // namespace

std::string ResultText(HRESULT result) {
  std::string number = fmt::format("0x{:08X}", static_cast<std::uint32_t>(result));
  for (const NamedResult& entry : kResults) {
    if (entry.result == result) return fmt::format("{} ({})", entry.name, number);
  }
  return number;
}

std::string FailureText(HRESULT result) { return "a filter of the graph failed with " + ResultText(result); }

}  // namespace tarvex::host

// Names of result codes. A free function; any thread.
#pragma once

#include <string>

#include "framework/platform/platform.h"

namespace tarvex::host {

/// "VFW_E_CANNOT_CONNECT (0x80040217)", or the number alone for codes that have no name here.
std::string ResultText(HRESULT result);

/// Why a graph gave up with this code.
std::string FailureText(HRESULT result);

}  // namespace tarvex::host

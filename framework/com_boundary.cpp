// From an exception to a result code.
#include "framework/com_boundary.h"

#include <exception>
#include <new>

#include "framework/log.h"
#include "framework/message_error.h"

namespace tarvex {

HRESULT ResultOfCurrentException() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const MessageError& error) {
    LogText(error.what());
    return E_FAIL;
  } catch (const std::exception& error) {
    LogText(error.what());
    return E_UNEXPECTED;
  } catch (...) {
    LogText("unknown exception");
    return E_UNEXPECTED;
  }
}

}  // namespace tarvex

// COM on a thread of ours. On the stack of the thread's procedure, around all that the thread calls and owns.
#pragma once

#include "framework/platform/platform.h"

namespace tarvex {

/// The calling thread is in the multithreaded apartment from construction to destruction: what we call may make
/// COM objects, as it does on the platform's own streaming threads. Where COM does not start, that is logged and
/// the thread goes on without.
class [[nodiscard]] ThreadApartment {
 public:
  ThreadApartment() noexcept;
  ~ThreadApartment();
  ThreadApartment(const ThreadApartment&) = delete;
  ThreadApartment& operator=(const ThreadApartment&) = delete;

 private:
  const bool m_entered;
};

}  // namespace tarvex

// Strings in task memory.
#include "framework/co_task_mem.h"

#include <algorithm>

namespace tarvex {

CoTaskMem<OLECHAR> TaskString(std::basic_string_view<OLECHAR> text) {
  auto copy = CoTaskMem<OLECHAR>::Allocate(text.size() + 1);
  std::copy(text.begin(), text.end(), copy.Get());
  copy[text.size()] = OLECHAR{};
  return copy;
}

}  // namespace tarvex

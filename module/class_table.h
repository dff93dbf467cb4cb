// The classes that the module creates: the table behind the class factory and registration. Constant data; any thread.
#pragma once

#include <span>

#include "framework/class_factory.h"

namespace tarvex {

/// In the order in which they are registered. The property pages follow the filter.
std::span<const FactoryTemplate> ModuleClasses() noexcept;

}  // namespace tarvex

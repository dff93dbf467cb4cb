// What keeps the module loaded: living objects and server locks. One count for the whole module;
// callable from any thread.
#pragma once

#include "framework/platform/platform.h"

namespace tarvex {

/// Counts one object for as long as it lives. A base or member of every COM object. The name must be a
/// literal; builds with TARVEX_DEBUG_CHECKS list the names that are left.
class ModuleObject {
 public:
  explicit ModuleObject(const char* name);
  ~ModuleObject();
  ModuleObject(const ModuleObject&) = delete;
  ModuleObject& operator=(const ModuleObject&) = delete;

 private:
  [[maybe_unused]] const char* m_name;
};

/// A client's lock on the server: true adds one, false takes one away.
void LockModule(bool lock) noexcept;

/// No object and no lock is alive.
bool ModuleCanUnload() noexcept;

/// Writes one line per living object to `write` in builds with TARVEX_DEBUG_CHECKS; answers how many
/// objects live. For unloading and the ends of tests.
LONG ReportLeftObjects(void (*write)(const char* text)) noexcept;

}  // namespace tarvex

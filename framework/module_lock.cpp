// The module's counts of living objects and server locks.
#include "framework/module_lock.h"

#include <atomic>

#ifdef TARVEX_DEBUG_CHECKS
#include <cstdio>
#include <map>

#include "framework/critical_section.h"
#endif

namespace tarvex {

namespace {

std::atomic<LONG> g_objects{0};
std::atomic<LONG> g_locks{0};

#ifdef TARVEX_DEBUG_CHECKS
struct Living {
  CCritSec lock{"living objects", LockRank::kLivingObjects};
  std::map<const ModuleObject*, const char*> names;
};

// Never destroyed: objects may outlive the module's static ones.
Living& TheLiving() {
  static auto* living = new Living;
  return *living;
}
#endif

}  // namespace

ModuleObject::ModuleObject(const char* name) : m_name(name) {
#ifdef TARVEX_DEBUG_CHECKS
  const CAutoLock hold(TheLiving().lock);
  TheLiving().names.emplace(this, name);
#endif
  ++g_objects;
}

ModuleObject::~ModuleObject() {
#ifdef TARVEX_DEBUG_CHECKS
  const CAutoLock hold(TheLiving().lock);
  TheLiving().names.erase(this);
#endif
  --g_objects;
}

void LockModule(bool lock) noexcept { g_locks += lock ? 1 : -1; }

bool ModuleCanUnload() noexcept { return g_objects == 0 && g_locks == 0; }

LONG ReportLeftObjects([[maybe_unused]] void (*write)(const char* text)) noexcept {
#ifdef TARVEX_DEBUG_CHECKS
  const CAutoLock hold(TheLiving().lock);
  for (const auto& [object, name] : TheLiving().names) {
    char text[200];
    std::snprintf(text, sizeof(text), "left: %s", name);
    write(text);
  }
#endif
  return g_objects;
}

}  // namespace tarvex

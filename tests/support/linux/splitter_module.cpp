// splitter_module.h for Linux: the module's class table, linked in.
#include "tests/support/splitter_module.h"

#include "framework/class_factory.h"
#include "framework/module_lock.h"
#include "module/class_table.h"

namespace tarvex::test {

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  return GetClassObjectFrom(ModuleClasses(), clsid, iid, out);
}

bool ModuleIsIdle() { return ModuleCanUnload(); }

}  // namespace tarvex::test

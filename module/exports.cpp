// The module's exported functions. Called by COM, regsvr32 and hosts, on any thread.

#include "framework/class_factory.h"
#include "framework/module_lock.h"
#include "framework/register_server.h"
#include "module/class_table.h"
#include "module/stream_type_keys.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  return tarvex::GetClassObjectFrom(tarvex::ModuleClasses(), clsid, iid, out);
}

STDAPI DllCanUnloadNow() { return tarvex::ModuleCanUnload() ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
  tarvex::WriteStreamTypeKeys();
  return tarvex::AMovieDllRegisterServer2(tarvex::ModuleClasses(), TRUE);
}

STDAPI DllUnregisterServer() {
  tarvex::DeleteStreamTypeKeys();
  return tarvex::AMovieDllRegisterServer2(tarvex::ModuleClasses(), FALSE);
}

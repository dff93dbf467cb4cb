/* A host in C: the structures and operation tables of the public headers have the layout that COM gives them. */
#include <stddef.h>
#include <tarvex/chapter_entry.h>
#include <tarvex/class_ids.h>
#include <tarvex/module_config.h>
#include <tarvex/module_log.h>

#define SLOT(table, operation, number) \
  _Static_assert(offsetof(table, operation) == (number) * sizeof(void*), #operation)

_Static_assert(sizeof(IModuleConfig) == sizeof(void*), "one pointer to the operations");
_Static_assert(offsetof(ChapterEntry, end) - offsetof(ChapterEntry, start) == 8, "two times of eight bytes");
SLOT(IModuleConfigVtbl, GetClassID, 3);
SLOT(IModuleConfigVtbl, GetSizeMax, 7);
SLOT(IModuleConfigVtbl, SetValue, 8);
SLOT(IModuleConfigVtbl, GetValue, 9);
_Static_assert(sizeof(IModuleConfigVtbl) == 12 * sizeof(void*), "twelve operations");
SLOT(IModuleLogVtbl, SetSink, 3);

HRESULT Ask(IUnknown* object, const GUID* parameter, VARIANT* value);
HRESULT Ask(IUnknown* object, const GUID* parameter, VARIANT* value) {
  IModuleConfig* config = NULL;
  HRESULT result = object->lpVtbl->QueryInterface(object, &IID_IModuleConfig, (void**)&config);
  if (FAILED(result)) return result;
  result = config->lpVtbl->GetValue(config, parameter, value);
  config->lpVtbl->Release(config);
  return result;
}

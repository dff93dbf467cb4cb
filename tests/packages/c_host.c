/*
 * A host in C: sets and reads a setting of the registered filter and hears what it logs, through the headers of
 * the package. Prints what it saw; sdk.sh knows what that should be.
 */
#include <stdio.h>
#include <tarvex/class_ids.h>
#include <tarvex/module_config.h>
#include <tarvex/module_log.h>

static void STDMETHODCALLTYPE CountText(void* context, const char* text) {
  if (text != NULL) ++*(int*)context;
}

static void UseSettings(IModuleConfig* config) {
  VARIANT value;
  HRESULT result;
  VariantInit(&value);
  V_VT(&value) = VT_BOOL;
  V_BOOL(&value) = VARIANT_TRUE;
  printf("set %08lX\n", (unsigned long)config->lpVtbl->SetValue(config, &paramAnnexBOutput, &value));
  VariantInit(&value);
  result = config->lpVtbl->GetValue(config, &paramAnnexBOutput, &value);
  printf("get %08lX %d\n", (unsigned long)result, V_BOOL(&value));
  printf("position %08lX\n", (unsigned long)config->lpVtbl->GetValue(config, &paramPosition, &value));
  printf("dirty %08lX\n", (unsigned long)config->lpVtbl->IsDirty(config));
}

int main(void) {
  IModuleConfig* config = NULL;
  IModuleLog* log = NULL;
  int texts = 0;
  HRESULT result = CoInitializeEx(NULL, COINIT_MULTITHREADED);
  if (FAILED(result)) return 1;
  result = CoCreateInstance(&CLSID_MatroskaSplitter, NULL, CLSCTX_INPROC_SERVER, &IID_IModuleConfig, (void**)&config);
  if (FAILED(result)) return 1;
  UseSettings(config);
  result = config->lpVtbl->QueryInterface(config, &IID_IModuleLog, (void**)&log);
  if (FAILED(result)) return 1;
  printf("listen %08lX\n", (unsigned long)log->lpVtbl->SetSink(log, CountText, &texts));
  printf("leave %08lX\n", (unsigned long)log->lpVtbl->SetSink(log, NULL, NULL));
  log->lpVtbl->Release(log);
  printf("left %lu\n", (unsigned long)config->lpVtbl->Release(config));
  CoUninitialize();
  return 0;
}

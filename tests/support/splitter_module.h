// The module under test as its clients meet it: a class object, instances and the question whether it
// can be unloaded. The Windows build loads the real tarvex.dll and knows nothing of its insides; the
// Linux build has the same code linked in. Any thread.
#pragma once

#include "framework/com_ptr.h"
#include "framework/platform/platform.h"

namespace tarvex::test {

/// An interface of the module's class object for `clsid`.
HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out);

/// A new splitter, by way of its class factory.
HRESULT CreateSplitter(IUnknown* outer, REFIID iid, void** out);
/// The same, not aggregated; throws std::runtime_error when there is none.
ComPtr<IBaseFilter> CreateSplitter();

/// No object of the module and no lock on it is left.
bool ModuleIsIdle();
/// The same in the end: a thread that was let go may still be on its way out.
bool ModuleBecomesIdle();

}  // namespace tarvex::test

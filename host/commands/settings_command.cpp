#include "host/commands/settings_command.h"

#include <string>
#include <utility>
#include <vector>

#include "framework/co_task_mem.h"
#include "host/system/console.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"
#include "include/tarvex/module_config.h"

namespace tarvex::host {

namespace {

/// Makes a class that is not registered known to COM in this process.
class ClassRegistration {
 public:
  ClassRegistration(REFCLSID clsid, IUnknown* factory) {
    const HRESULT result =
        CoRegisterClassObject(clsid, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_registration);
    if (FAILED(result)) throw HostError(ExitCode::kInternal, "no class for a page: " + ResultText(result));
  }
  ~ClassRegistration() {
    if (m_registration != 0) CoRevokeClassObject(m_registration);
  }
  ClassRegistration(ClassRegistration&& other) noexcept : m_registration(std::exchange(other.m_registration, 0)) {}
  ClassRegistration(const ClassRegistration&) = delete;
  ClassRegistration& operator=(const ClassRegistration&) = delete;

 private:
  DWORD m_registration = 0;
};

std::vector<CLSID> PagesOf(IBaseFilter* splitter) {
  const auto specify = QueryFor<ISpecifyPropertyPages>(splitter);
  CAUUID pages{};
  CoTaskMem<GUID> ids;
  const HRESULT result = specify ? specify->GetPages(&pages) : E_NOINTERFACE;
  if (FAILED(result)) throw HostError(ExitCode::kInternal, "the splitter has no pages: " + ResultText(result));
  *ids.Put() = pages.pElems;
  return {ids.Get(), ids.Get() + pages.cElems};
}

void ShowFrame(IBaseFilter* splitter, std::vector<CLSID> pages) {
  IUnknown* object = splitter;
  const HRESULT result =
      OleCreatePropertyFrame(nullptr, 0, 0, L"Tarvex Matroska Splitter", 1, &object, static_cast<ULONG>(pages.size()),
                             pages.data(), LOCALE_USER_DEFAULT, 0, nullptr);
  if (FAILED(result)) throw HostError(ExitCode::kInternal, "the pages cannot be shown: " + ResultText(result));
}

bool IsOn(IBaseFilter* splitter, const GUID& parameter) {
  ComPtr<IModuleConfig> config;
  VARIANT value{};
  return SUCCEEDED(splitter->QueryInterface(IID_IModuleConfig, config.PutVoid())) &&
         SUCCEEDED(config->GetValue(&parameter, &value)) && value.boolVal != 0;
}

std::string Line(const char* name, bool on) { return std::string(name) + (on ? ": on\n" : ": off\n"); }

}  // namespace

void RunSettings(const SettingsOptions& options) {
  const GraphSession session(options.session);
  const std::vector<CLSID> pages = PagesOf(session.Splitter());
  std::vector<ClassRegistration> registrations;
  for (const CLSID& page : pages) {
    if (const auto factory = session.Module().Factory(page)) registrations.emplace_back(page, factory.Get());
  }
  ShowFrame(session.Splitter(), pages);
  WriteOutput(Line("Annex B output", IsOn(session.Splitter(), paramAnnexBOutput)) +
              Line("separate pins", IsOn(session.Splitter(), paramSeparatePins)));
}

}  // namespace tarvex::host

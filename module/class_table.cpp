// The table of classes.
#include "module/class_table.h"

#include "filter/filter_registration.h"
#include "filter/matroska_splitter.h"
#include "include/tarvex/class_ids.h"
#ifdef _WIN32
#include "pages/about_prop_page.h"
#include "pages/property_prop_page.h"
#endif

namespace tarvex {

namespace {

const FactoryTemplate kClasses[] = {
    {.name = kFilterName,
     .clsid = &CLSID_MatroskaSplitter,
     .create = &CMatroskaSplitter::CreateInstance,
     .setup = &kSplitterSetup},
#ifdef _WIN32
    {.name = OLESTR("MKV Splitter property page"),
     .clsid = &CLSID_MatroskaSettingsPage,
     .create = &CPropertyPropPage::CreateInstance},
    {.name = OLESTR("MKV Splitter about page"),
     .clsid = &CLSID_MatroskaAboutPage,
     .create = &CAboutPropPage::CreateInstance},
#endif
};

}  // namespace

std::span<const FactoryTemplate> ModuleClasses() noexcept { return kClasses; }

}  // namespace tarvex

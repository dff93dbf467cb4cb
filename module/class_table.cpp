// The table of classes.
#include "module/class_table.h"

#include "filter/filter_registration.h"
#include "filter/matroska_splitter.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

namespace {

const FactoryTemplate kClasses[] = {
    {.name = kFilterName,
     .clsid = &CLSID_MatroskaSplitter,
     .create = &CMatroskaSplitter::CreateInstance,
     .setup = &kSplitterSetup},
};

}  // namespace

std::span<const FactoryTemplate> ModuleClasses() noexcept { return kClasses; }

}  // namespace tarvex

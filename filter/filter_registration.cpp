// The filter's entry for the filter mapper.
#include "filter/filter_registration.h"

#include "include/tarvex/class_ids.h"

namespace tarvex {

namespace {

const PinTypeSetup kInputTypes[] = {{&MEDIATYPE_Stream, &GUID_NULL}};

const PinSetup kPins[] = {{
    .name = OLESTR("Input"),
    .rendered = false,
    .output = false,
    .zero = false,
    .many = false,
    .connectsToFilter = &GUID_NULL,
    .types = kInputTypes,
}};

}  // namespace

const FilterSetup kSplitterSetup = {
    .clsid = &CLSID_MatroskaSplitter,
    .name = kFilterName,
    .merit = kFilterMerit,
    .pins = kPins,
};

}  // namespace tarvex

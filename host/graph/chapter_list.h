// The chapters that a splitter offers, through both of its interfaces. A free function; application
// threads.
#pragma once

#include "framework/com_ptr.h"
#include "host/report/info_report.h"

namespace tarvex::host {

/// The chapters as IAMExtendedSeeking gives them; empty without any.
std::vector<MarkerReport> MarkersOf(IBaseFilter* splitter);

/// Fills chapters, markers and seek capabilities; leaves empty what the splitter does not offer.
void AddChapters(IBaseFilter* splitter, InfoReport& report);

}  // namespace tarvex::host

// The registry entries that make the graph builder read Matroska files through the platform's file
// source. Written and deleted at registration, on the thread that registers.
#pragma once

namespace tarvex {

/// Failures are not reported: the filter works without these entries, for a host that adds it itself.
void WriteStreamTypeKeys() noexcept;
void DeleteStreamTypeKeys() noexcept;

}  // namespace tarvex

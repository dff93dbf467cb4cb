// Measurements as JSON, for the runner. A free function over values.
#pragma once

#include <nlohmann/json.hpp>

#include "benchmarks/play/measurement.h"

namespace tarvex::bench {

/// Milliseconds, bytes and counts; what was not measured is missing.
nlohmann::ordered_json MeasurementJson(const Measurement& measured);

}  // namespace tarvex::bench

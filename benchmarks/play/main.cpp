// Plays Matroska files through the splitter as fast as they go and prints what that took, as JSON: one
// object a line for each time. Every output pin has a sink behind its queue's thread.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "benchmarks/play/measurement_json.h"

namespace tarvex::bench {
namespace {

struct Options {
  MeasureOptions measure;
  unsigned repeat = 1;
};

void AddOptions(CLI::App& app, Options& options) {
  app.add_option("file", options.measure.file, "the Matroska file")->required();
  const auto set = [&options](Extent extent) { return [&options, extent] { options.measure.extent = extent; }; };
  app.add_flag_callback("--open", set(Extent::kOpen), "only connect the source, which opens the file");
  app.add_flag_callback("--first", set(Extent::kFirst), "stop after the first sample");
  app.add_flag_callback("--raw", set(Extent::kRaw), "no splitter: read the file in blocks of 1 MiB");
  app.add_flag("--separate-pins", options.measure.separatePins, "a pin for every track, not one for every kind");
  app.add_option("--seek", options.measure.seeks, "seek to these seconds, one after another")->delimiter(',');
  app.add_option("--spread-seeks", options.measure.spreadSeeks, "seek so many times, all over the file");
  app.add_option("--read-delay", options.measure.readDelay, "microseconds that each read takes besides");
  app.add_option("--repeat", options.repeat, "times to do it all; default 1");
  app.add_flag_callback(
      "--platform-source", [&options] { options.measure.source = SourceKind::kPlatform; },
      "the platform's own file source, whose reads are not counted");
}

int Run(int argc, char** argv) {
  Options options;
  CLI::App app("Plays a Matroska file through the splitter into sinks and prints what that took.");
  app.allow_windows_style_options(false);  // a path may begin with a slash
  AddOptions(app, options);
  CLI11_PARSE(app, argc, argv);
  const bool seeks = !options.measure.seeks.empty() || options.measure.spreadSeeks != 0;
  if (seeks) options.measure.extent = Extent::kSeeks;
  EnterApartment();
  for (unsigned k = 0; k < options.repeat; ++k) {
    std::printf("%s\n", MeasurementJson(Measure(options.measure)).dump().c_str());
    std::fflush(stdout);
  }
  return 0;
}

}  // namespace
}  // namespace tarvex::bench

int main(int argc, char** argv) {
  try {
    return tarvex::bench::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
  }
}

// See measurement.h.
#include "benchmarks/play/measurement.h"

#include <algorithm>
#include <stdexcept>

namespace tarvex::bench {
namespace {

constexpr DWORD kPatience = 2 * 60 * 1000;  // milliseconds
constexpr double kUnitsPerSecond = 1e7;

double MillisecondsBetween(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

ReadCount operator-(const ReadCount& a, const ReadCount& b) { return {a.calls - b.calls, a.bytes - b.bytes}; }

CpuTimes operator-(const CpuTimes& a, const CpuTimes& b) { return {a.user - b.user, a.system - b.system}; }

// Steps of a fraction that no small number of them comes back to.
std::vector<double> SpreadTargets(double duration, unsigned count) {
  constexpr double kGoldenFraction = 0.6180339887498949;
  std::vector<double> targets;
  double place = 0.5;
  for (unsigned k = 0; k < count; ++k) {
    targets.push_back(place * duration);
    place += kGoldenFraction;
    if (place >= 1) place -= 1;
  }
  return targets;
}

MeasuredSeek MeasureSeek(Playback& playback, double target) {
  const ReadCount before = playback.Reads();
  const auto start = Clock::now();
  playback.Seek(static_cast<LONGLONG>(target * kUnitsPerSecond));
  if (!playback.Monitor().WaitForFirst(kPatience)) throw std::runtime_error("no sample after a seek");
  const PlayMonitor::First first = playback.Monitor().FirstSample();
  return {target, MillisecondsBetween(start, first.time), first.reads - before};
}

void MeasureSeeks(Playback& playback, const MeasureOptions& options, Measurement& measured) {
  std::vector<double> targets = options.seeks;
  const double duration = static_cast<double>(playback.Duration()) / kUnitsPerSecond;
  for (const double target : SpreadTargets(duration, options.spreadSeeks)) targets.push_back(target);
  for (const double target : targets) measured.seeks.push_back(MeasureSeek(playback, target));
}

void MeasureStart(Playback& playback, const MeasureOptions& options, Clock::time_point start, Measurement& measured) {
  playback.ConnectSinks(options.extent == Extent::kWhole ? SinkManner::kFlowing : SinkManner::kHolding);
  playback.Run();
  if (!playback.Monitor().WaitForFirst(kPatience)) throw std::runtime_error("no sample came");
  const PlayMonitor::First first = playback.Monitor().FirstSample();
  measured.first = MillisecondsBetween(start, first.time);
  measured.firstReads = first.reads;
}

void MeasureRest(Playback& playback, const MeasureOptions& options, Clock::time_point start, Measurement& measured) {
  if (options.extent == Extent::kSeeks) MeasureSeeks(playback, options, measured);
  if (options.extent != Extent::kWhole) return;
  if (!playback.Monitor().WaitForEnd(kPatience)) throw std::runtime_error("the end never came");
  measured.ended = MillisecondsBetween(start, playback.Monitor().EndTime());
}

// The reads of a splitter that had nothing else to do.
void MeasureRaw(const MeasureOptions& options, Measurement& measured) {
  constexpr LONG kBlock = 1024 * 1024;
  const auto before = Clock::now();
  const OpenedFile file = OpenFile(options.file);
  const auto start = Clock::now();
  measured.made = MillisecondsBetween(before, start);
  LONGLONG length = 0;
  LONGLONG available = 0;
  if (FAILED(file.reader->Length(&length, &available))) throw std::runtime_error("the file has no length");
  std::vector<BYTE> block(kBlock);
  for (LONGLONG position = 0; position < length; position += kBlock) {
    const LONG size = static_cast<LONG>(std::min<LONGLONG>(kBlock, length - position));
    if (FAILED(file.reader->SyncRead(position, size, block.data()))) throw std::runtime_error("reading failed");
    measured.allReads.calls += 1;
    measured.allReads.bytes += static_cast<std::uint64_t>(size);
  }
  measured.ended = MillisecondsBetween(start, Clock::now());
}

constexpr std::ptrdiff_t kRingBytes = 10'485'600;

void CollectPins(const Playback& playback, Measurement& measured) {
  for (std::size_t k = 0; k < playback.Sinks().size(); ++k) {
    const SinkCount& count = playback.Sinks()[k]->Count();
    measured.pins.push_back({playback.PinNames()[k], count.samples, count.bytes});
    // Large frames lie where they were read to, all over the heap. What such a pin's ring takes cannot be told then.
    if (count.behindHighest - count.lowest <= kRingBytes) {
      measured.ringBytes += ResidentBytes(count.lowest, count.behindHighest);
    }
  }
}

void MeasurePlayback(const MeasureOptions& options, Measurement& measured) {
  const auto before = Clock::now();
  Playback playback(options.file, options.source, options.separatePins, std::chrono::microseconds(options.readDelay));
  const auto start = Clock::now();
  measured.made = MillisecondsBetween(before, start);
  playback.Open();
  measured.opened = MillisecondsBetween(start, Clock::now());
  measured.openReads = playback.Reads();
  measured.heapOpened = HeapBytes();
  if (options.extent != Extent::kOpen) {
    MeasureStart(playback, options, start, measured);
    MeasureRest(playback, options, start, measured);
  }
  measured.allReads = playback.Reads();
  measured.heapFirst = HeapBytes();
  CollectPins(playback, measured);
  measured.cpu = ProcessTimes();
  measured.peakBytes = PeakResidentBytes();
}

}  // namespace

Measurement Measure(const MeasureOptions& options) {
  Measurement measured;
  ResetPeakResident();
  measured.startBytes = PeakResidentBytes();
  measured.heapBefore = HeapBytes();
  const CpuTimes cpuBefore = ProcessTimes();
  if (options.extent == Extent::kRaw) {
    MeasureRaw(options, measured);
    measured.cpu = ProcessTimes();
    measured.peakBytes = PeakResidentBytes();
  } else {
    MeasurePlayback(options, measured);
  }
  measured.cpu = measured.cpu - cpuBefore;
  return measured;
}

}  // namespace tarvex::bench

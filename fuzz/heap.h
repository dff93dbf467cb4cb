// The memory of a program that links this: what it holds, how much it ever held, how often it was asked for, and calls
// that fail on purpose. The linker leads malloc and its like here; the C++ operators are replaced. Free functions and
// values; any thread.
#pragma once

#include <cstdint>

namespace tarvex::fuzz {

/// The heap of all threads, from construction on. One at a time.
class HeapCount {
 public:
  HeapCount() noexcept;
  /// Bytes above what was held at the construction: now, and at most.
  std::int64_t Now() const noexcept;
  std::int64_t Peak() const noexcept;
  /// How often memory was asked for.
  std::uint64_t Allocations() const noexcept;

 private:
  std::int64_t m_held;
  std::uint64_t m_allocations;
};

enum class FaultKind {
  kNew,         ///< operator new throws std::bad_alloc
  kMalloc,      ///< malloc and its like of the container libraries answer null
  kTaskMemory,  ///< CoTaskMemAlloc
  kText,        ///< SysAllocStringLen
  kRing,        ///< the addresses of the block behind a pin's samples
  kRingMemory,  ///< more of the memory behind them
  kThread,      ///< no thread can be created
  kInflate,     ///< zlib has no memory
  // Of the filter's neighbours, which ask by themselves.
  kReader,
  kReceiveConnection,
  kNotifyAllocator,
  kReceive,
  kNewSegment,
  kFlush,
  kEndOfStream
};

/// Calls of one kind are counted from 0.
struct FaultPoint {
  FaultKind kind = FaultKind::kNew;
  std::int64_t index = 0;
  bool lasting = false;  ///< all later calls fail as well
};

/// Counts from now on, and fails what `point` says.
void ArmFaults(const FaultPoint& point);
/// Everything works again. How many calls of the kind there were.
std::int64_t DisarmFaults();
/// A call has failed since ArmFaults.
bool FaultWasMet();
/// For who stands before a function that can fail: whether this call of it does.
bool Fails(FaultKind kind) noexcept;

/// While it lives, faults that are armed meet this thread, or do not. They meet every thread at first.
class [[nodiscard]] MeetsFaults {
 public:
  explicit MeetsFaults(bool on = true) noexcept;
  ~MeetsFaults();
  MeetsFaults(const MeetsFaults&) = delete;
  MeetsFaults& operator=(const MeetsFaults&) = delete;

 private:
  const bool m_before;
};
class [[nodiscard]] MeetsNoFaults : public MeetsFaults {
 public:
  MeetsNoFaults() noexcept : MeetsFaults(false) {}
};

}  // namespace tarvex::fuzz

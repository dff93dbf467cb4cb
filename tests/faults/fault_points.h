// Makes what the filter gets from the system fail: at one call, or from one on. The linker sends every
// such call of this program here. Threads of the filter meet faults whenever they are armed; a test's
// own thread, and what the filter calls back, only where they say so.
#pragma once

#include <cstdint>
#include <string>

namespace tarvex::test {

enum class FaultKind {
  kNew,         ///< operator new throws std::bad_alloc
  kMalloc,      ///< malloc and calloc of the container libraries answer null
  kTaskMemory,  ///< CoTaskMemAlloc
  kText,        ///< SysAllocStringLen
  kRing,        ///< the addresses of the block behind a pin's samples
  kRingMemory,  ///< more of the memory behind them
  kThread,      ///< no thread can be created
  kInflate      ///< zlib has no memory
};
inline constexpr FaultKind kAllFaultKinds[] = {FaultKind::kNew,    FaultKind::kMalloc, FaultKind::kTaskMemory,
                                               FaultKind::kText,   FaultKind::kRing,   FaultKind::kRingMemory,
                                               FaultKind::kThread, FaultKind::kInflate};
const char* NameOf(FaultKind kind);

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

/// While it lives, faults that are armed meet this thread.
class [[nodiscard]] MeetsFaults {
 public:
  explicit MeetsFaults(bool on = true);
  ~MeetsFaults();
  MeetsFaults(const MeetsFaults&) = delete;
  MeetsFaults& operator=(const MeetsFaults&) = delete;

 private:
  const bool m_before;
};
/// While it lives, they do not.
class [[nodiscard]] MeetsNoFaults : public MeetsFaults {
 public:
  MeetsNoFaults() : MeetsFaults(false) {}
};

/// Blocks of every kind of memory that were taken where faults are met, and not given back.
std::int64_t LivingBlocks();

}  // namespace tarvex::test

// The one order in which the locks of this code base are taken. Builds with TARVEX_DEBUG_CHECKS check it
// with every lock taken; see framework/platform/lock_order.h. Each lock is given its rank where it is declared.
#pragma once

namespace tarvex {

/// Places in the order, first to last. A thread takes a lock only while all locks that it holds have earlier ranks, and
/// holds one lock of a rank at a time. A lock that it holds already it may take again at any time.
enum class LockRank : int {
  // Held while graph and filters are called, so before every lock of theirs.
  kController = 0,    ///< who commands a graph: tests, benchmarks
  kStreamSwitch = 1,  ///< a switch of a connected pin, which stops and renders the graph
  kGraph = 2,         ///< the graph's own, under which it calls filters; one of ours in tests only

  // State of filters: a connection is made from upstream to downstream, each filter holding its own.
  kUpstreamFilter = 10,
  kFilter = 11,         ///< the splitter's state, connections, settings and pin list
  kPosition = 12,       ///< a change of the play range, flushes, and once more the pin list
  kWorkerControl = 13,  ///< a decision about the worker and the command that follows from it
  kDownstreamFilter = 14,
  kLastFilter = 15,
  kVisited = 16,  ///< of what we call and what calls nothing itself: a sink's record, a graph's events

  // From here on the holder calls no other filter and waits for nothing but the lock's own condition.
  kPinStream = 20,   ///< a pin's queue and sample buffer, and the state of its stream
  kConnection = 21,  ///< a pin's peer, whose references are counted under it
  kLeaf = 22,        ///< whatever is touched for a moment: queue, allocator, channel, positions, gate

  // Taken wherever an object is made or something is logged.
  kLivingObjects = 30,
  kLogSetup = 31,
  kLog = 32,
  kLogSink = 33,  ///< of a sink, which runs under the log's lock
  kEvent = 40,    ///< an event may be set anywhere
};

/// The first rank of locks that are held for a moment only.
inline constexpr LockRank kFirstMomentary = LockRank::kPinStream;

/// A lock's name and place, in builds that check the order; nothing in others.
class LockLabel {
#ifdef TARVEX_DEBUG_CHECKS
 public:
  constexpr LockLabel(const char* name, LockRank rank) noexcept : m_name(name), m_rank(rank) {}
  const char* Name() const noexcept { return m_name; }
  LockRank Rank() const noexcept { return m_rank; }

 private:
  const char* m_name;
  LockRank m_rank;
#else
 public:
  constexpr LockLabel(const char* /*name*/, LockRank /*rank*/) noexcept {}
#endif
};

}  // namespace tarvex

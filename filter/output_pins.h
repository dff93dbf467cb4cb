// The filter's output pins: which there are, and what is said to all of them. Owned by the filter; used by application
// threads and by the worker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "framework/critical_section.h"
#include "framework/owned_pin.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/matroska_output_pin.h"
#include "pins/output/shared_by_pins.h"

namespace tarvex {

/// The list changes with the filter lock and the position lock held and no worker alive. Whoever holds one of the two,
/// or the worker's control lock while there is a worker, may read it; so may the worker, which takes none of them:
/// controllers wait for it with any of them held.
class OutputPins {
 public:
  using List = std::vector<OwnedPin<CMatroskaOutputPin>>;

  /// Both locks, taken in their order, and so the proof that they are held.
  class [[nodiscard]] Locks {
   public:
    explicit Locks(const SharedByPins& shared);

   private:
    CAutoLock m_filterLock;
    CAutoLock m_positionLock;
  };

  explicit OutputPins(const SharedByPins& shared) : m_shared(shared) {}

  // No worker, filter stopped, filter lock held.
  /// In place of those there are: one pin per track, or one per kind of track. All of them or, when something throws,
  /// none.
  void Create(COutPinsCreator& creator, bool onePerTrack);
  /// Disconnects all and lets them go.
  void RemoveAll();

  const List& All() const noexcept { return m_pins; }
  /// The first that carries this track, or a track of this type; null when none does. Not counted.
  CMatroskaOutputPin* FindByTrack(std::uint32_t trackNumber) const;
  CMatroskaOutputPin* FindByType(std::uint32_t trackType) const;
  bool AnyConnected() const;

  // To every connected pin, in order.
  void BeginFlush() const;
  void EndFlush() const;
  /// Worker, or while it delivers nothing.
  void EndOfStream() const;

  // To every pin.
  /// Worker only.
  void BeforeWait() const;
  void CancelWaits(bool on) const;
  void DropHeld() const;
  void SetH264Form(bool byteStream) const;
  /// Ends all queues at once, since each may have to wait for downstream. No worker.
  void EndQueues() const noexcept;

 private:
  /// The one place where the list changes. Gives the former one.
  List Exchange(const Locks& proof, List pins);
  bool EndEveryPin() const;
  static void DisconnectBothEnds(CMatroskaOutputPin& pin);

  const SharedByPins m_shared;
  List m_pins;  // no entry is empty
};

}  // namespace tarvex

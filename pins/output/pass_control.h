// What output pins ask of the worker that feeds them, and nothing more. Implemented in filter/; called by pins on the
// worker, and on application and queue threads for a seek.
#pragma once

namespace tarvex {

class PassControl {
 public:
  /// Drops what is on its way downstream and ends the worker's pass; on the worker itself it only drops. True: the
  /// worker was delivering, and Resume is to follow. With the position lock held.
  [[nodiscard]] virtual bool Interrupt() = 0;
  /// The worker delivers again, from the new range on, unless it was stopped meanwhile. With the position lock held.
  virtual void Resume() = 0;

  /// Wakes the queues of all pins, since the worker is about to wait: a queue's thread is not woken for each sample.
  /// Nothing on other threads.
  virtual void BeforeWait() = 0;

 protected:
  PassControl() = default;
  PassControl(const PassControl&) = default;
  PassControl& operator=(const PassControl&) = default;
  ~PassControl() = default;
};

/// The worker's pass is interrupted from construction to destruction, if there is one. With the position lock held.
class [[nodiscard]] PassInterruption {
 public:
  explicit PassInterruption(PassControl& pass) : m_pass(pass), m_isToResume(pass.Interrupt()) {}
  ~PassInterruption() {
    if (m_isToResume) m_pass.Resume();
  }
  PassInterruption(const PassInterruption&) = delete;
  PassInterruption& operator=(const PassInterruption&) = delete;

 private:
  PassControl& m_pass;
  const bool m_isToResume;
};

}  // namespace tarvex

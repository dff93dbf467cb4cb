#include "scanner/source/serial_reader.h"

namespace tarvex {

/// Waits for the calling thread's turn to read, and gives it up at its end.
class SerialReader::Turn {
 public:
  explicit Turn(SerialReader& reader) : m_reader(reader) {
    const CAutoLock hold(m_reader.m_lock);
    const unsigned before = m_reader.m_flushes;
    const auto isOver = [&] { return !m_reader.m_isReading || m_reader.m_flushes != before; };
    m_reader.m_changed.WaitUntil(m_reader.m_lock, INFINITE, isOver);
    m_isOurs = !m_reader.m_isReading && m_reader.m_flushes == before;
    if (m_isOurs) m_reader.m_isReading = true;
  }
  ~Turn() {
    if (!m_isOurs) return;
    const CAutoLock hold(m_reader.m_lock);
    m_reader.m_isReading = false;
    m_reader.m_changed.WakeAll();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  explicit operator bool() const noexcept { return m_isOurs; }

 private:
  SerialReader& m_reader;
  bool m_isOurs = false;
};

SerialReader::SerialReader(IAsyncReader* upstream) : UnknownImpl("SerialReader", nullptr), m_upstream(upstream) {}

HRESULT SerialReader::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader && out != nullptr) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT SerialReader::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  const Turn turn(*this);
  return turn ? m_upstream->SyncRead(llPosition, lLength, pBuffer) : VFW_E_WRONG_STATE;
}

HRESULT SerialReader::EndFlush() {
  constexpr DWORD kPatience = 100;  // milliseconds; not every reader's flush ends reads
  {
    const CAutoLock hold(m_lock);
    m_changed.WaitUntil(m_lock, kPatience, [this] { return !m_isReading; });
  }
  return m_upstream->EndFlush();
}

HRESULT SerialReader::BeginFlush() {
  {
    const CAutoLock hold(m_lock);
    ++m_flushes;
    m_changed.WakeAll();
  }
  return m_upstream->BeginFlush();
}

}  // namespace tarvex

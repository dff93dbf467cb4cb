// A file source for test graphs: one output pin over a MemoryReader. Being no source of the platform's, it takes one
// read at a time: two end the process. Owned through ComPtr; the reader side runs on the reader's threads, the
// settings may change at any time.
#pragma once

#include <string>

#include "tests/support/memory_reader.h"
#include "tests/support/plain_filter.h"

namespace tarvex::test {

/// All bytes of a file; throws std::runtime_error when it cannot be read.
std::vector<std::uint8_t> ReadWholeFile(const std::string& path);

class SourcePin : public PlainPin, public MemoryReader {
 public:
  SourcePin(PlainFilter& filter, Parts parts, LONGLONG length)
      : PlainPin(filter, PINDIR_OUTPUT), MemoryReader(std::move(parts), length) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return PlainPin::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return PlainPin::Release(); }
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return MemoryReader::BeginFlush(); }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return MemoryReader::EndFlush(); }
  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
};

class SourceFilter : public PlainFilter {
 public:
  static ComPtr<SourceFilter> FromFile(const std::string& path) { return FromBytes(ReadWholeFile(path)); }
  static ComPtr<SourceFilter> FromBytes(std::vector<std::uint8_t> bytes);
  using Parts = MemoryReader::Parts;
  static ComPtr<SourceFilter> FromParts(Parts parts, LONGLONG size);

  SourcePin* Pin() noexcept { return &m_pin; }

  /// Asked ahead of every read and every question for the length. A failure is the answer; S_FALSE makes
  /// a read give half of its bytes. To be set before anybody reads.
  void BeforeEachCall(std::function<HRESULT()> fault) { m_pin.fault = std::move(fault); }
  LONGLONG Size() const noexcept { return m_pin.size; }
  /// So many bytes have come, of a file that is `estimate` long as it seems. A read of others waits for them or for a
  /// flush, as that of a file on its way does, and the length is called an estimate.
  void Arrive(LONGLONG size, LONGLONG estimate = 0);
  /// For BeforeEachCall.
  bool WaitForFlush(DWORD milliseconds) { return m_pin.flushing.Wait(milliseconds); }
  int Reads() const noexcept { return static_cast<int>(m_pin.reads); }

 private:
  SourceFilter(Parts parts, LONGLONG size)
      : PlainFilter(LockRank::kUpstreamFilter), m_pin(*this, std::move(parts), size) {}
  PlainPin& OnlyPin() noexcept override { return m_pin; }

  SourcePin m_pin;
};

}  // namespace tarvex::test

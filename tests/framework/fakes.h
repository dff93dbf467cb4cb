// Small filters and pins for the tests of the framework: a filter that owns whatever
// pins a test gives it, an output pin, and an input pin that records what it receives.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/base_output_pin.h"
#include "framework/event.h"
#include "framework/mem_allocator.h"
#include "framework/owned_pin.h"

namespace tarvex::test {

inline constexpr GUID kTestFilterId = {0x11223344, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

class TestFilter : public CBaseFilter {
 public:
  explicit TestFilter(LockRank rank = LockRank::kFilter)
      : CBaseFilter("TestFilter", nullptr, &lock, kTestFilterId), lock("TestFilter", rank) {}

  int GetPinCount() override { return static_cast<int>(m_pins.size()); }
  CBasePin* GetPin(int index) override { return m_pins.at(static_cast<std::size_t>(index)).Get(); }

  template <class T>
  T* Add(T* pin) {
    m_pins.emplace_back(static_cast<CBasePin*>(pin));
    IncrementPinVersion();
    return pin;
  }
  void RemoveAll() {
    m_pins.clear();
    IncrementPinVersion();
  }

  CCritSec lock;

 private:
  std::vector<OwnedPin<CBasePin>> m_pins;
};

class TestOutputPin : public CBaseOutputPin {
 public:
  explicit TestOutputPin(TestFilter& filter) : CBaseOutputPin("TestOutputPin", &filter, &filter.lock, OLESTR("Out")) {}

  HRESULT CheckMediaType(const CMediaType* /*type*/) override { return S_OK; }
  HRESULT GetMediaType(int position, CMediaType* type) override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
};

/// Everything that reached the pin, as short words: "s:7" for a sample whose first byte is 7, "eos",
/// "segment:start", "flush", "endflush".
class TestInputPin : public CBaseInputPin {
 public:
  explicit TestInputPin(TestFilter& filter) : CBaseInputPin("TestInputPin", &filter, &filter.lock, OLESTR("In")) {}

  HRESULT CheckMediaType(const CMediaType* /*type*/) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

  std::vector<std::string> Words();
  /// Waits until this many words are there.
  bool WaitForWords(std::size_t count);

  /// Called for every sample with its first byte; the answer is Receive's.
  std::function<HRESULT(int)> onSample = [](int) { return S_OK; };
  /// Called in BeginFlush, on the flushing thread.
  std::function<void()> onFlush = [] {};
  std::atomic<int> batches{0};

 private:
  void Note(std::string word);

  CCritSec m_wordsLock{"words", LockRank::kVisited};
  CConditionVariable m_noted;
  std::vector<std::string> m_words;
};

/// Filter and input pin downstream, running, with an allocator to take samples from.
class Downstream {
 public:
  Downstream();
  ~Downstream();

  /// A sample whose first byte is `mark`; the caller owns the reference.
  IMediaSample* Sample(int mark);
  /// Samples that are out.
  LONG Out() { return allocator->Out(); }

  class CountingAllocator : public CMemAllocator {
   public:
    LONG Out() {
      const CAutoLock hold(Lock());
      return LentCount();
    }
  };

  ComPtr<TestFilter> upstreamFilter;
  ComPtr<TestFilter> filter;
  TestOutputPin* output;
  TestInputPin* input;
  ComPtr<CountingAllocator> allocator;
};

}  // namespace tarvex::test

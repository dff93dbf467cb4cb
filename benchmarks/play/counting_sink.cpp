// See counting_sink.h.
#include "benchmarks/play/counting_sink.h"

#include <algorithm>

namespace tarvex::bench {
namespace {

// {B0B8C9A4-64B6-4E2B-8B3F-7D1E3C2A9F55}
constexpr GUID kSinkClass = {0xB0B8C9A4, 0x64B6, 0x4E2B, {0x8B, 0x3F, 0x7D, 0x1E, 0x3C, 0x2A, 0x9F, 0x55}};

}  // namespace

CountingSink::CountingSink(PlayMonitor& monitor, SinkManner manner)
    : CBaseFilter("CountingSink", nullptr, &m_filterLock, kSinkClass),
      m_pin(new CountingSinkPin(this, &m_filterLock, monitor, manner)) {}

CountingSink::~CountingSink() = default;

CBasePin* CountingSink::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

// What is held is let go before the filter lock is waited for.
HRESULT STDMETHODCALLTYPE CountingSink::Stop() {
  m_pin->LetGo();
  return CBaseFilter::Stop();
}

IPin* CountingSink::Input() const noexcept { return m_pin.Get(); }

const SinkCount& CountingSink::Count() const noexcept { return m_pin->Count(); }

CountingSinkPin::CountingSinkPin(CountingSink* filter, CCritSec* lock, PlayMonitor& monitor, SinkManner manner)
    : CBaseInputPin("CountingSinkPin", filter, lock, OLESTR("In")), m_monitor(monitor), m_manner(manner) {}

HRESULT CountingSinkPin::CheckMediaType(const CMediaType* /*type*/) { return S_OK; }

HRESULT CountingSinkPin::Active() {
  Begin();
  return CBaseInputPin::Active();
}

void CountingSinkPin::Begin() {
  m_isFirst = true;
  m_released.Clear();
}

HRESULT STDMETHODCALLTYPE CountingSinkPin::Receive(IMediaSample* pSample) {
  const HRESULT result = CBaseInputPin::Receive(pSample);
  if (result != S_OK) return result;
  Take(pSample);
  if (m_isFirst.load(std::memory_order_relaxed) && m_isFirst.exchange(false)) {
    m_monitor.OnFirstSample();
    if (m_manner == SinkManner::kHolding) m_released.Wait();
  }
  return S_OK;
}

void CountingSinkPin::Take(IMediaSample* sample) {
  const LONG size = sample->GetActualDataLength();
  ++m_count.samples;
  BYTE* data = nullptr;
  if (size <= 0 || FAILED(sample->GetPointer(&data))) return;
  m_count.bytes += static_cast<std::uint64_t>(size);
  m_touched += data[0];
  m_touched += data[size - 1];
  if (m_count.lowest == nullptr || data < m_count.lowest) m_count.lowest = data;
  m_count.behindHighest = std::max<const BYTE*>(m_count.behindHighest, data + size);
}

HRESULT STDMETHODCALLTYPE CountingSinkPin::EndOfStream() {
  m_monitor.OnEnd();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CountingSinkPin::BeginFlush() {
  const HRESULT result = CBaseInputPin::BeginFlush();
  m_monitor.OnFlush();
  LetGo();
  return result;
}

HRESULT STDMETHODCALLTYPE CountingSinkPin::EndFlush() {
  Begin();
  return CBaseInputPin::EndFlush();
}

}  // namespace tarvex::bench

// See fakes.h.
#include "tests/framework/fakes.h"

#include <gtest/gtest.h>

namespace tarvex::test {

HRESULT TestOutputPin::GetMediaType(int position, CMediaType* type) {
  if (position > 0) return VFW_S_NO_MORE_ITEMS;
  *type = CMediaType(MEDIATYPE_Video);
  return S_OK;
}

HRESULT TestOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  request->cBuffers = 2;
  request->cbBuffer = 64;
  ALLOCATOR_PROPERTIES actual{};
  return allocator->SetProperties(request, &actual);
}

void TestInputPin::Note(std::string word) {
  const CAutoLock hold(m_wordsLock);
  m_words.push_back(std::move(word));
  m_noted.WakeAll();
}

HRESULT STDMETHODCALLTYPE TestInputPin::Receive(IMediaSample* pSample) {
  const HRESULT hr = CBaseInputPin::Receive(pSample);
  if (hr != S_OK) return hr;
  BYTE* bytes = nullptr;
  pSample->GetPointer(&bytes);
  const int mark = bytes[0];
  Note("s:" + std::to_string(mark));
  return onSample(mark);
}

HRESULT STDMETHODCALLTYPE TestInputPin::ReceiveMultiple(IMediaSample** pSamples, LONG nSamples,
                                                        LONG* nSamplesProcessed) {
  ++batches;
  return CBaseInputPin::ReceiveMultiple(pSamples, nSamples, nSamplesProcessed);
}

HRESULT STDMETHODCALLTYPE TestInputPin::EndOfStream() {
  Note("eos");
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TestInputPin::BeginFlush() {
  const HRESULT hr = CBaseInputPin::BeginFlush();
  Note("flush");
  onFlush();
  return hr;
}

HRESULT STDMETHODCALLTYPE TestInputPin::EndFlush() {
  Note("endflush");
  return CBaseInputPin::EndFlush();
}

HRESULT STDMETHODCALLTYPE TestInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME /*tStop*/, double /*dRate*/) {
  Note("segment:" + std::to_string(tStart));
  return S_OK;
}

std::vector<std::string> TestInputPin::Words() {
  const CAutoLock hold(m_wordsLock);
  return m_words;
}

bool TestInputPin::WaitForWords(std::size_t count) {
  const CAutoLock hold(m_wordsLock);
  return m_noted.WaitUntil(m_wordsLock, 10000, [&] { return m_words.size() >= count; });
}

Downstream::Downstream()
    : upstreamFilter(MakeCom<TestFilter>()),
      filter(MakeCom<TestFilter>(LockRank::kLastFilter)),
      output(upstreamFilter->Add(new TestOutputPin(*upstreamFilter))),
      input(filter->Add(new TestInputPin(*filter))),
      allocator(MakeCom<CountingAllocator>()) {
  EXPECT_EQ(output->Connect(input, nullptr), S_OK);
  EXPECT_EQ(filter->Pause(), S_OK);
  ALLOCATOR_PROPERTIES request{64, 16, 1, 0};
  ALLOCATOR_PROPERTIES actual{};
  EXPECT_EQ(allocator->SetProperties(&request, &actual), S_OK);
  EXPECT_EQ(allocator->Commit(), S_OK);
}

Downstream::~Downstream() {
  filter->Stop();
  output->Disconnect();
  input->Disconnect();
  allocator->Decommit();
}

IMediaSample* Downstream::Sample(int mark) {
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
  BYTE* bytes = nullptr;
  sample->GetPointer(&bytes);
  bytes[0] = static_cast<BYTE>(mark);
  return sample.Detach();
}

}  // namespace tarvex::test

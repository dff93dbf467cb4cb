// The output pin's identity, its connection, and the life of its queue. Application threads.
#include "pins/output/matroska_output_pin.h"

#include <utility>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/formats/h264_form.h"
#include "pins/limits.h"

namespace tarvex {

namespace {

constexpr LONG kQueueBatch = 200;
constexpr LONG kQueueList = 200;

}  // namespace

CMatroskaOutputPin::CMatroskaOutputPin(const char* objectName, Kind kind, CBaseFilter* filter, CCritSec* lock,
                                       PinHost* host, HRESULT* /*result*/, const WideString& name)
    : CBaseOutputPin(objectName, filter, lock, name.c_str()),
      m_host(host),
      m_kind(kind),
      m_timeFormat(TIME_FORMAT_MEDIA_TIME) {}

CMatroskaOutputPin::~CMatroskaOutputPin() = default;

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IMediaSeeking) return GiveInterface(static_cast<IMediaSeeking*>(this), out);
  return CBaseOutputPin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::Disconnect() {
  if (const auto filter = HoldFilter(); filter) m_host->ClearSeekingOwner();
  return CBaseOutputPin::Disconnect();
}

HRESULT CMatroskaOutputPin::SetTrack(const TrackPinInfo& track) {
  if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
  return ComBoundary([&] {
    TrackPinInfo copy = track;
    const CAutoLock hold(m_recordLock);
    std::swap(m_track, copy);
    m_trackNumber = m_track.trackNumber;
    m_trackType = m_track.trackType;
    IncrementTypeVersion();
    return S_OK;
  });
}

void CMatroskaOutputPin::SetH264Form(bool byteStream) {
  if (m_kind != Kind::kVideo) return;
  const CAutoLock hold(m_recordLock);
  tarvex::SetH264Form(m_track.mediaType, byteStream);
  IncrementTypeVersion();
}

TrackPinInfo CMatroskaOutputPin::Track() const {
  const CAutoLock hold(m_recordLock);
  return m_track;
}

HRESULT CMatroskaOutputPin::CheckMediaType(const CMediaType* type) {
  const CAutoLock hold(m_recordLock);
  return m_track.mediaType == *type ? S_OK : S_FALSE;
}

HRESULT CMatroskaOutputPin::GetMediaType(int position, CMediaType* type) {
  if (position > 0) return VFW_S_NO_MORE_ITEMS;
  return ComBoundary([&] {
    const CAutoLock hold(m_recordLock);
    *type = m_track.mediaType;
    return S_OK;
  });
}

HRESULT CMatroskaOutputPin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) {
  *allocator = nullptr;
  return ComBoundary([&] {
    const auto buffer = MakeCom<CSampleBuffer>();
    ALLOCATOR_PROPERTIES request{};
    HRESULT hr = DecideBufferSize(buffer.Get(), &request);
    if (SUCCEEDED(hr)) hr = peer->NotifyAllocator(buffer.Get(), TRUE);
    if (FAILED(hr)) return hr;
    ComPtr<IMemAllocator>(buffer).CopyTo(allocator);
    const CAutoLock hold(m_streamLock);
    m_sampleBuffer = buffer;
    m_routeChanged = true;
    return S_OK;
  });
}

HRESULT CMatroskaOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  request->cBuffers = limits::kRingBuffers;
  request->cbBuffer = limits::kRingBufferBytes;
  request->cbAlign = 1;
  request->cbPrefix = 0;
  ALLOCATOR_PROPERTIES actual{};
  return allocator->SetProperties(request, &actual);
}

HRESULT CMatroskaOutputPin::BreakConnect() {
  const HRESULT hr = CBaseOutputPin::BreakConnect();
  if (FAILED(hr)) return hr;
  ComPtr<CSampleBuffer> last;  // released after the lock
  const CAutoLock hold(m_streamLock);
  m_sampleBuffer.Swap(last);
  m_routeChanged = true;
  return S_OK;
}

HRESULT CMatroskaOutputPin::Active() {
  DropHeld();
  ResetForSeek();
  HRESULT hr = S_OK;
  if (IsConnected()) {
    hr = CBaseOutputPin::Active();
    if (SUCCEEDED(hr)) {
      hr = CreateOutputQueue();
      if (FAILED(hr)) {
        CBaseOutputPin::Inactive();
        return hr;
      }
    }
  }
  LogText("CMatroskaOutputPin::Active");
  return hr;
}

HRESULT CMatroskaOutputPin::CreateOutputQueue() {
  return ComBoundary([&] {
    HRESULT hr = S_OK;
    auto queue = std::make_shared<COutputQueue>(GetConnected(), &hr, kQueueBatch, kQueueList);
    if (FAILED(hr)) queue.reset();
    ExchangeQueue(std::move(queue));
    return hr;
  });
}

HRESULT CMatroskaOutputPin::Inactive() {
  const HRESULT hr = CBaseOutputPin::Inactive();
  ExchangeQueue(nullptr);
  {
    const CAutoLock hold(m_streamLock);
    m_endOfStream = EndOfStreamState::kOpen;
  }
  DropHeld();
  LogText("CMatroskaOutputPin::Inactive");
  return hr;
}

// The former queue ends without the lock, since its end may take a moment and call downstream.
void CMatroskaOutputPin::ExchangeQueue(std::shared_ptr<COutputQueue> queue) {
  {
    const CAutoLock hold(m_streamLock);
    m_pOutputQ.swap(queue);
    m_routeChanged = true;
  }
  // A call in progress on another thread may keep it for a moment longer; what waits must not go on.
  if (queue) queue->Reset();
}

std::shared_ptr<COutputQueue> CMatroskaOutputPin::Queue() const {
  const CAutoLock hold(m_streamLock);
  return m_pOutputQ;
}

ComPtr<CSampleBuffer> CMatroskaOutputPin::Buffer() const {
  const CAutoLock hold(m_streamLock);
  return m_sampleBuffer;
}

}  // namespace tarvex

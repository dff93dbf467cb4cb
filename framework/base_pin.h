// The base of a pin: connection, media type agreement, identity, and its membership in a filter.
// Created by its filter; its methods run on application threads and, for the stream calls, on
// streaming threads.
#pragma once

#include <atomic>

#include "framework/base_filter.h"
#include "framework/com_ptr.h"
#include "framework/media_type.h"
#include "framework/unknown.h"

namespace tarvex {

class CEnumMediaTypes;

/// How long a pin lives. A filter makes pins while a file is opened and drops them when it is closed,
/// and an application may hold a pin across that. So a pin has its own memory and its own count:
/// - every reference an application (or ComPtr) holds on a pin also holds its filter, as long as the
///   pin belongs to it: whoever holds a pin holds a working one;
/// - the filter's own hold is an OwnedPin, which does not count on the filter (that would be a circle);
/// - when the filter lets go of its OwnedPin, the pin leaves the filter: the outer references stop
///   holding the filter, and from then on the pin answers VFW_E_NOT_CONNECTED (QueryPinInfo:
///   VFW_E_NOT_IN_GRAPH) and touches neither filter nor lock.
/// A method that needs the filter asks for it with HoldFilter, or runs inside a PinScope, which also
/// takes the filter's lock. Both keep the filter alive for their own life.
class CBasePin : public UnknownImpl<IPin, IQualityControl> {
 public:
  /// `filter` and `lock` (the filter's) are not counted; `name` is also the pin's identifier.
  CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name, PIN_DIRECTION direction);
  ~CBasePin() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
  ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

  // IPin. Connect tries, in order: the caller's type if complete, the types of the receiving pin, our
  // own. Refusals, in order of testing: E_POINTER, VFW_E_NOT_CONNECTED (pin without filter),
  // VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED, then what negotiation answers.
  HRESULT STDMETHODCALLTYPE Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
  /// S_FALSE when not connected; VFW_E_NOT_STOPPED.
  HRESULT STDMETHODCALLTYPE Disconnect() override;
  HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pPin) override;
  HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* pInfo) override;
  HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* pPinDir) override;
  HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* Id) override;
  HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** ppEnum) override;
  HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** apPin, ULONG* nPin) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

  // IQualityControl
  HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* pSelf, Quality q) override;
  HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* piqc) override;

  // Called by the filter with its lock held.
  virtual HRESULT Active() { return S_OK; }
  virtual HRESULT Inactive() { return S_OK; }
  virtual HRESULT Run(REFERENCE_TIME /*start*/) { return S_OK; }

  /// S_OK accepts; any other result refuses.
  virtual HRESULT CheckMediaType(const CMediaType* type) = 0;
  /// Stores the type agreed upon.
  virtual HRESULT SetMediaType(const CMediaType* type);
  /// The type at this position of the pin's own list; VFW_S_NO_MORE_ITEMS past the end. The base has none.
  virtual HRESULT GetMediaType(int position, CMediaType* type);
  /// Changes whenever the pin's own list does.
  virtual LONG GetMediaTypeVersion() { return m_typeVersion; }

  /// The peer is acceptable at all; the base asks for the opposite direction.
  virtual HRESULT CheckConnect(IPin* peer);
  /// Undoes CheckConnect and CompleteConnect; also called when a connection fails half way.
  virtual HRESULT BreakConnect() { return S_OK; }
  /// The type is agreed; a failure undoes the connection.
  virtual HRESULT CompleteConnect(IPin* /*peer*/) { return S_OK; }

  /// Any thread.
  bool IsConnected() const noexcept { return m_isConnected; }
  /// The connected peer, or null. Not counted; for the filter with its lock held.
  IPin* GetConnected() const noexcept { return m_connected.Get(); }
  const WideString& Name() const noexcept { return m_name; }
  PIN_DIRECTION Direction() const noexcept { return m_dir; }
  const CMediaType& CurrentMediaType() const noexcept { return m_mt; }

  /// The filter with a reference held, or null for a pin that has left it. Any thread.
  ComPtr<CBaseFilter> HoldFilter();

  // For OwnedPin only: a reference that does not count on the filter, and the end of membership.
  void OwnerAddRef() noexcept;
  void OwnerRelease() noexcept;
  void LeaveFilter() noexcept;

 protected:
  /// Keeps the filter alive and its lock held. False when the pin has left its filter.
  class PinScope {
   public:
    explicit PinScope(CBasePin& pin);
    ~PinScope();
    PinScope(const PinScope&) = delete;
    PinScope& operator=(const PinScope&) = delete;
    explicit operator bool() const noexcept { return m_locked; }

   private:
    ComPtr<CBaseFilter> m_filter;
    CCritSec* m_lock;
    bool m_locked = false;
  };

  /// The filter without a reference: for calls that come from the filter itself. Null after leaving.
  CBaseFilter* Filter() const noexcept { return m_pFilter; }
  bool IsStopped() const noexcept;
  void IncrementTypeVersion() noexcept { ++m_typeVersion; }

  /// One attempt with one complete type.
  virtual HRESULT AttemptConnection(IPin* receiver, const CMediaType* type);
  /// All types of one enumerator that agree with `filter` (null: any).
  virtual HRESULT TryMediaTypes(IPin* receiver, const CMediaType* filter, IEnumMediaTypes* types);
  virtual HRESULT AgreeMediaType(IPin* receiver, const CMediaType* type);
  /// Disconnect with the lock held and the state not looked at.
  virtual HRESULT DisconnectInternal();

  /// Stores the peer, or null for none. With the filter's lock held.
  void SetConnected(ComPtr<IPin> peer) noexcept;

  CCritSec* const m_pLock;  // the filter's; not to be touched after leaving
  CMediaType m_mt;          // of the connection; written with the filter's lock held, by SetMediaType

 private:
  HRESULT ConnectAs(IPin* receiver, const CMediaType& type);
  HRESULT ReceiveAs(IPin* connector, const CMediaType& type);

  const PIN_DIRECTION m_dir;
  const WideString m_name;
  std::atomic<LONG> m_typeVersion{1};

  // Taken for a moment around every change of the connection, so that a query about it needs no
  // filter lock: a streaming thread may ask while a state change holds that one. Not the same as the
  // next, since the peer's reference count is touched under it.
  mutable CCritSec m_connectionLock{"CBasePin connection", LockRank::kConnection};
  ComPtr<IPin> m_connected;  // also under the filter's lock
  std::atomic<bool> m_isConnected{false};

  CCritSec m_membershipLock{"CBasePin membership", LockRank::kLeaf};
  std::atomic<CBaseFilter*> m_pFilter;  // not counted; written under m_membershipLock
  ULONG m_references = 0;               // all of them; under m_membershipLock
  ULONG m_outerReferences = 0;          // those that hold the filter too
};

}  // namespace tarvex

// Seeking for filters that only hand requests on towards the source: the platform's own object, made
// part of one of ours. Owned by the filter or pin that offers it; any thread.
#pragma once

#include "framework/com_ptr.h"
#include "framework/critical_section.h"

namespace tarvex::host {

class SeekingPassThru {
 public:
  /// Where the owner stands in the graph.
  enum class Place { kMiddle, kEnd };

  /// `owner` is the object that offers IMediaSeeking, `input` the input pin whose peer is asked; neither
  /// is counted.
  SeekingPassThru(IUnknown* owner, IPin* input, Place place) noexcept
      : m_owner(owner), m_input(input), m_place(place) {}

  /// IMediaSeeking and IMediaPosition; E_NOINTERFACE for all others, and for these too where the
  /// platform lacks the object.
  HRESULT Query(REFIID iid, void** out);

 private:
  void Create();

  IUnknown* const m_owner;
  IPin* const m_input;
  const Place m_place;

  CCritSec m_lock{"SeekingPassThru", LockRank::kController};
  ComPtr<IUnknown> m_inner;  // under m_lock; made for the first query, when the owner is counted already
};

}  // namespace tarvex::host

// Reads and changes of a pin's record, each whole.
#include "pins/output/track_record.h"

#include <utility>

#include "pins/formats/h264_form.h"

namespace tarvex {

void TrackRecord::Set(const TrackPinInfo& track) {
  TrackPinInfo copy = track;
  const CAutoLock lock(m_lock);
  std::swap(m_track, copy);
  m_number = m_track.trackNumber;
  m_type = m_track.trackType;
}

void TrackRecord::SetH264Form(bool byteStream) noexcept {
  const CAutoLock lock(m_lock);
  tarvex::SetH264Form(m_track.mediaType, byteStream);
}

TrackPinInfo TrackRecord::Copy() const {
  const CAutoLock lock(m_lock);
  return m_track;
}

CMediaType TrackRecord::MediaType() const {
  const CAutoLock lock(m_lock);
  return m_track.mediaType;
}

bool TrackRecord::HasMediaType(const CMediaType& type) const {
  const CAutoLock lock(m_lock);
  return m_track.mediaType == type;
}

}  // namespace tarvex

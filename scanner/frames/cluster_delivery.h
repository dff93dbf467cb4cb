// Splitting a Cluster into frames. Made by the scanner for one pass; runs on the worker thread.
#pragma once

#include <ebml/EbmlElement.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include <cstdint>
#include <span>
#include <vector>

#include "scanner/elements/cluster_clock.h"
#include "scanner/elements/element_visitor.h"
#include "scanner/file/matroska_info.h"
#include "scanner/frames/frame_receiver.h"

namespace tarvex {

class ElementWalker;

/// SimpleBlocks that lie next to each other in the window are delivered some at a time, so that room for their frames
/// can be found in one go; before each of them it is asked whether to stop.
class ClusterDelivery final : private ElementVisitor {
 public:
  /// Both stay while this is used.
  ClusterDelivery(const CMatroskaInfo& info, FrameReceiver& receiver)
      : m_info(info), m_receiver(receiver), m_timecodeScale(info.TimecodeScale()), m_clock(m_timecodeScale) {}

  /// Reads `cluster`, at whose data `walker` stands, and delivers its children. Null is refused. False: stop.
  bool DeliverCluster(ElementWalker& walker, libmatroska::KaxCluster* cluster);
  /// False: stop.
  bool DeliverSimpleBlock(libmatroska::KaxSimpleBlock& block);
  /// Blocks, durations and references of one group; the last block counts.
  /// False: stop.
  bool DeliverBlockGroupBlocks(std::span<libebml::EbmlElement* const> children);

 private:
  // ElementVisitor
  bool Show(libebml::EbmlElement& child) override;
  bool BeforeReading() override { return m_goesOn = m_goesOn && DeliverGathered(); }

  bool IsToStop() const;
  bool DeliverChild(libebml::EbmlElement& child);
  bool DeliverBlockGroup(const libmatroska::KaxBlockGroup& group);
  void AddFrames(libmatroska::KaxInternalBlock& block, const std::uint8_t* data, bool keyFrame, std::uint64_t duration);
  void AddSimpleBlock(libmatroska::KaxSimpleBlock& block, const std::uint8_t* data);
  bool DeliverGathered();
  bool DeliverAdded();

  const CMatroskaInfo& m_info;
  FrameReceiver& m_receiver;
  const std::uint64_t m_timecodeScale;
  ClusterClock m_clock;
  bool m_goesOn = true;
  std::vector<libebml::EbmlElement*> m_groupChildren;  // kept for its room
  std::vector<FrameInfo> m_frames;                     // not delivered yet
  std::vector<std::size_t> m_blockEnds;                // in those
  std::uint64_t m_bytesGathered = 0;
};

}  // namespace tarvex

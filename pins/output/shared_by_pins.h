// What all output pins of a filter have in common. The filter owns the objects and gives them to each pin.
#pragma once

namespace tarvex {

class CBaseFilter;
class FrameMemory;
class PassControl;
class PlayPositions;
class SegmentGate;

/// None is counted, and a pin may outlive them. So it uses them only while the filter is sure to live: in calls of
/// the filter and of its worker, and in calls of applications after HoldFilter.
struct SharedByPins {
  CBaseFilter& filter;
  PlayPositions& positions;
  SegmentGate& gate;
  PassControl& pass;
  FrameMemory& memory;
};

}  // namespace tarvex

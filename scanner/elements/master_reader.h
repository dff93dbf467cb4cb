// Reading a master element with everything below it. Owned by the element walker; runs on the thread
// that drives the scanner and moves the byte source's position.
#pragma once

#include <ebml/EbmlMaster.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "scanner/elements/borrowed_block.h"
#include "scanner/elements/element_search.h"
#include "scanner/elements/element_visitor.h"
#include "scanner/elements/known_ids.h"
#include "scanner/source/async_callback.h"
#include "scanner/source/byte_window.h"

namespace tarvex {

/// Gives what libebml's own reading gives, with these differences. It keeps no unknown elements, voids and checksums.
/// It leaves out an element that the end of the stream cuts. It keeps to the limits, whatever the stream holds. A
/// Cluster in the midst of damaged elements ends the reading, where libebml would pass it.
class MasterReader {
 public:
  enum class Frames : std::uint8_t {
    kRead,
    kLeaveOut,  ///< most blocks get only their heads; what stands for their frames is undefined
  };

  /// False: show no more.
  using Visitor = std::function<bool(libebml::EbmlElement&)>;

  MasterReader(CAsyncCallback& source, ByteWindow& window, KnownIdTables& ids)
      : m_source(source), m_window(window), m_ids(ids) {}

  /// What the entries of a list in a header may have: bytes of data, one and all together.
  struct DataLimits {
    std::int64_t ofEntry = 0;
    std::int64_t ofAll = 0;
  };

  /// Reads the children of `master`, which is no Cluster, in place of those it has. What would take more memory than a
  /// header may is passed over. Answers the position of an element that belongs further up, if such a one ended the
  /// reading.
  std::optional<std::uint64_t> Read(libebml::EbmlMaster& master);
  /// Shows each child in turn instead of keeping it, so that a long list costs no memory. The SimpleBlocks of a Cluster
  /// are shown as they lie in the window: a frame's bytes are not copied, and stay until BeforeReading.
  std::optional<std::uint64_t> ReadEach(libebml::EbmlMaster& master, Frames frames, ElementVisitor& visitor);
  std::optional<std::uint64_t> ReadEach(libebml::EbmlMaster& master, Frames frames, const Visitor& visit);
  /// The same for a list in a header. Entries that would take more memory than they may are left out, which the log
  /// says once.
  std::optional<std::uint64_t> ReadEntries(libebml::EbmlMaster& master, const DataLimits& limits,
                                           ElementVisitor& visitor);

 private:
  /// How the reading of one level ended.
  struct LevelEnd {
    int upperLevel = 0;  // above 0: at an element that belongs so much further up
    std::uint64_t position = 0;
  };
  struct Level;

  std::optional<std::uint64_t> ReadOutermost(libebml::EbmlMaster& master, ElementVisitor* visitor);
  LevelEnd ReadLevel(libebml::EbmlMaster& master, ElementVisitor* visitor);
  bool HasMemory(const Level& level);
  bool BeforeReading(const Level& level);
  std::span<const std::uint8_t> ClusterBytes(const Level& level, std::uint64_t position, std::uint64_t atLeast);
  std::optional<LevelEnd> ReadBlockInPlace(Level& level, std::uint64_t position);
  LevelEnd ReadChild(Level& level, FoundElement found);
  LevelEnd ReadValue(Level& level, FoundElement found);
  LevelEnd ReadMasterChild(Level& level, FoundElement found);
  LevelEnd WithoutSwallowed(Level& level, std::uint64_t begin, LevelEnd end);
  void ReadData(FoundElement& found);
  bool ReadBlockHead(FoundElement& found);
  void Take(Level& level, ElementPtr element);
  void Show(const Level& level, libebml::EbmlElement& element);
  void LeaveOut(const Level& level);
  void BeginEntry();
  bool Fits(const libebml::EbmlElement& element) const;

  CAsyncCallback& m_source;
  ByteWindow& m_window;
  KnownIdTables& m_ids;
  Frames m_frames = Frames::kRead;
  BorrowedBlock m_block;  // the one that is shown
  int m_depth = 0;
  bool m_stopped = false;
  std::int64_t m_memory = 0;          // bytes that the objects of this entry may still take
  std::int64_t m_entryData = 0;       // bytes of data that it may still have
  std::int64_t m_data = 0;            // bytes of data that this entry and all behind it may still have
  std::uint64_t m_shown = 0;          // of the list that is read
  DataLimits m_dataLimits;            // of the list that is read
  bool m_isHeader = false;            // data counts, not only the objects
  bool m_isTooMuch = false;           // this entry
  bool m_hasLeftOut = false;          // any
  std::uint64_t m_searchedAgain = 0;  // bytes
};

}  // namespace tarvex

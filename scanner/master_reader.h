// Reading a master element with everything below it. Owned by the element walker; runs on the thread
// that drives the scanner and moves the byte source's position.
#pragma once

#include <ebml/EbmlMaster.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "scanner/async_callback.h"
#include "scanner/borrowed_block.h"
#include "scanner/byte_window.h"
#include "scanner/element_search.h"
#include "scanner/known_ids.h"

namespace tarvex {

/// Gives what libebml's own reading gives, except that it keeps no unknown elements, voids and checksums,
/// leaves out an element that the end of the stream cuts, and keeps to the limits whatever the stream holds. What
/// damage looks like does not hide the next Cluster: that ends the reading where libebml would pass it.
class CMasterReader {
 public:
  enum class Frames : std::uint8_t {
    kRead,
    kLeaveOut,  ///< most blocks get only their heads; what stands for their frames is undefined
  };

  /// False: shown enough.
  using Visitor = std::function<bool(libebml::EbmlElement&)>;

  CMasterReader(CAsyncCallback& source, CByteWindow& window, CKnownIdTables& ids)
      : m_source(source), m_window(window), m_ids(ids) {}

  /// Gives `master`, which is no Cluster, its children, in place of those it has; what would take more
  /// memory than a header may is passed over. Where the element stands that ended it, when that was one
  /// that belongs further up.
  std::optional<std::uint64_t> Read(libebml::EbmlMaster& master);
  /// Shows each child in turn instead of keeping it, so that a long list costs no memory. The SimpleBlocks of a Cluster
  /// are shown as they lie in the window: a frame's bytes are not copied.
  std::optional<std::uint64_t> ReadEach(libebml::EbmlMaster& master, Frames frames, const Visitor& visit);

 private:
  /// How the reading of one level ended.
  struct LevelEnd {
    int upperLevel = 0;  // above 0: at an element that belongs so much further up
    std::uint64_t position = 0;
  };
  struct Level;

  std::optional<std::uint64_t> ReadOutermost(libebml::EbmlMaster& master, const Visitor* visit);
  LevelEnd ReadLevel(libebml::EbmlMaster& master, const Visitor* visit);
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
  bool Fits(const libebml::EbmlElement& element) const;
  std::int64_t MemoryOf(const libebml::EbmlElement& element) const;

  CAsyncCallback& m_source;
  CByteWindow& m_window;
  CKnownIdTables& m_ids;
  Frames m_frames = Frames::kRead;
  CBorrowedBlock m_block;  // the one that is shown
  int m_depth = 0;
  std::int64_t m_memory = 0;  // bytes that elements may still take
  bool m_stopped = false;
  bool m_countsData = false;          // data counts, not only the objects
  std::uint64_t m_searchedAgain = 0;  // bytes
};

}  // namespace tarvex

// Reading a master element with everything below it. Owned by the element walker; runs on the thread
// that drives the scanner and moves the byte source's position.
#pragma once

#include <ebml/EbmlMaster.h>

#include <cstdint>
#include <functional>
#include <optional>

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
  using Portion = std::function<bool()>;

  CMasterReader(CAsyncCallback& source, CByteWindow& window, CKnownIdTables& ids)
      : m_source(source), m_window(window), m_ids(ids) {}

  /// Gives `master`, which is no Cluster, its children, in place of those it has; what would take more
  /// memory than a header may is passed over. Where the element stands that ended it, when that was one
  /// that belongs further up.
  std::optional<std::uint64_t> Read(libebml::EbmlMaster& master);
  /// Shows each child in turn instead of keeping it, so that a long list costs no memory.
  std::optional<std::uint64_t> ReadEach(libebml::EbmlMaster& master, Frames frames, const Visitor& visit);
  /// Gives a Cluster its children and calls `portion`. When they would take too much memory at a time it is
  /// called several times, each time with the next of them, until it answers false.
  std::optional<std::uint64_t> ReadCluster(libebml::EbmlMaster& cluster, const Portion& portion);

  /// Reads the bytes of `master` in one piece, so that nothing is read from the stream when ReadEach follows
  /// at once. False when they are too many, are not all there, or have no known number.
  bool Load(const libebml::EbmlMaster& master);

 private:
  /// How the reading of one level ended.
  struct LevelEnd {
    int upperLevel = 0;  // above 0: at an element that belongs so much further up
    std::uint64_t position = 0;
  };
  struct Level;

  std::optional<std::uint64_t> ReadOutermost(libebml::EbmlMaster& master, const Visitor* visit, const Portion* portion);
  LevelEnd ReadLevel(libebml::EbmlMaster& master, const Visitor* visit, const Portion* portion);
  bool MayGoOn(const Level& level);
  std::optional<LevelEnd> ReadLoadedBlock(Level& level, std::uint64_t position);
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
  CBorrowedBlock m_block;   // the one that is shown
  bool m_isLoaded = false;  // the next master's bytes are
  int m_depth = 0;
  std::int64_t m_memory = 0;  // bytes that elements may still take
  bool m_stopped = false;
  bool m_countsData = false;          // data counts, not only the objects
  std::uint64_t m_searchedAgain = 0;  // bytes
};

}  // namespace tarvex

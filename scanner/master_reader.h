// Reading a master element with everything below it. Owned by the element walker; runs on the thread
// that drives the scanner and moves the byte source's position.
#pragma once

#include <ebml/EbmlMaster.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "scanner/async_callback.h"
#include "scanner/byte_window.h"
#include "scanner/element_search.h"
#include "scanner/known_ids.h"

namespace tarvex {

/// Gives what libebml's own reading gives, except that it keeps no unknown elements, voids and checksums,
/// leaves out an element that the end of the stream cuts, and is bounded whatever the stream declares. What
/// damage looks like does not hide the next Cluster: that ends the reading where libebml would pass it.
class CMasterReader {
 public:
  /// Masters nest no deeper: Chapters, an edition and 201 atoms.
  static constexpr int kMaxDepth = 203;
  /// As many elements are kept below one master; what follows is passed over.
  static constexpr std::uint32_t kMaxElements = 1u << 20;

  enum class Frames : std::uint8_t {
    kRead,
    kLeaveOut,  ///< unlaced blocks get only their heads; what stands for their frames is undefined
  };

  using Visitor = std::function<void(libebml::EbmlElement&)>;

  CMasterReader(CAsyncCallback& source, CByteWindow& window, CKnownIdTables& ids)
      : m_source(source), m_window(window), m_ids(ids) {}

  /// Gives `master` its children, in place of those it has. Where the element stands that ended it, when
  /// that was one that belongs further up.
  std::optional<std::uint64_t> Read(libebml::EbmlMaster& master, Frames frames);
  /// Shows each child in turn instead of keeping it, so that a long list costs no memory.
  std::optional<std::uint64_t> ReadEach(libebml::EbmlMaster& master, const Visitor& visit);

 private:
  /// How the reading of one level ended.
  struct LevelEnd {
    int upperLevel = 0;  // above 0: at an element that belongs so much further up
    std::uint64_t position = 0;
  };
  struct Level;

  std::optional<std::uint64_t> ReadOutermost(libebml::EbmlMaster& master, const Visitor& take);
  LevelEnd ReadLevel(libebml::EbmlMaster& master, const Visitor* visit);
  LevelEnd ReadChild(Level& level, FoundElement found);
  LevelEnd ReadValue(Level& level, FoundElement found);
  LevelEnd ReadMasterChild(Level& level, FoundElement found);
  LevelEnd WithoutSwallowed(Level& level, std::uint64_t begin, LevelEnd end);
  void ReadData(FoundElement& found);
  bool ReadBlockHead(FoundElement& found);
  void Take(Level& level, ElementPtr element);

  CAsyncCallback& m_source;
  CByteWindow& m_window;
  CKnownIdTables& m_ids;
  Frames m_frames = Frames::kRead;
  int m_depth = 0;
  std::uint32_t m_elements = 0;
  std::uint64_t m_searchedAgain = 0;  // bytes
};

}  // namespace tarvex

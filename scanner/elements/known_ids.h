// The identifiers that mean something at one place of the element tree: those of the place itself, the
// global ones, and those of every level above. Values, used by one thread at a time.
#pragma once

#include <ebml/EbmlElement.h>

#include <bitset>
#include <cstdint>
#include <map>
#include <vector>

namespace tarvex {

class KnownIds {
 public:
  /// Voids are left out: they are passed like unknown elements.
  explicit KnownIds(const libebml::EbmlSemanticContext& context);

  /// False: no known identifier begins with this byte.
  bool MayBeginWith(std::uint8_t byte) const { return m_firstBytes[byte]; }
  /// `id` with its length marker.
  bool Contains(std::uint32_t id) const;

 private:
  void AddLevel(const libebml::EbmlSemanticContext& context);
  void Add(const libebml::EbmlId& id);

  std::vector<std::uint32_t> m_ids;
  std::bitset<256> m_firstBytes;
};

/// The identifiers of every place that was searched so far.
class KnownIdTables {
 public:
  /// Stays where it is.
  const KnownIds& For(const libebml::EbmlSemanticContext& context) {
    return m_tables.try_emplace(&context, context).first->second;
  }

 private:
  std::map<const libebml::EbmlSemanticContext*, KnownIds> m_tables;
};

}  // namespace tarvex

#include "scanner/elements/known_ids.h"

#include <ebml/EbmlVoid.h>

#include <algorithm>

namespace tarvex {

KnownIds::KnownIds(const libebml::EbmlSemanticContext& context) {
  for (const auto* level = &context; level != nullptr; level = EBML_CTX_PARENT(*level)) {
    AddLevel(*level);
    AddLevel(level->GetGlobalContext());
    if (EBML_CTX_MASTER(*level) != nullptr) Add(EBML_INFO_ID(*EBML_CTX_MASTER(*level)));
  }
}

void KnownIds::AddLevel(const libebml::EbmlSemanticContext& context) {
  for (std::size_t index = 0; index < EBML_CTX_SIZE(context); ++index) Add(EBML_CTX_IDX_ID(context, index));
}

void KnownIds::Add(const libebml::EbmlId& id) {
  const std::uint32_t value = EBML_ID_VALUE(id);
  if (id == EBML_ID(libebml::EbmlVoid) || Contains(value)) return;
  m_ids.push_back(value);
  m_firstBytes.set(value >> (8 * (EBML_ID_LENGTH(id) - 1)));
}

bool KnownIds::Contains(std::uint32_t id) const { return std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end(); }

}  // namespace tarvex

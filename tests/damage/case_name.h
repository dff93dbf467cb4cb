// The name of the case that is being tried, which is shown when the program crashes or is ended by a
// sanitizer: there may be millions of them. One at a time in a program.
#pragma once

#include <cstdint>

namespace tarvex::test {

/// "FILE: KIND NUMBER". The texts are shortened where they are too long.
void NameCase(const char* file, const char* kind, std::uint64_t number) noexcept;
/// The text, which changes with the case.
const char* CaseName() noexcept;

}  // namespace tarvex::test

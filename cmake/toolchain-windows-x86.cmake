# 32-bit Windows with Debian's cross compiler. Windows callers keep the stack aligned to 4 bytes only,
# so every function realigns it before it may use vector registers.
set(TARVEX_TRIPLET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR X86)
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)

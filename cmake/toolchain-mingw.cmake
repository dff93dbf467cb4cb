# What both Windows toolchain files share. The -posix flavour is used because the -win32 flavour of
# version 12 lacks std::mutex, which GoogleTest needs. Everything is linked statically, so that the
# module and the host depend on system DLLs only.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${TARVEX_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARVEX_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${TARVEX_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TARVEX_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# The libraries this project links, as imported targets:
#   tarvex::ebml tarvex::matroska tarvex::gtest        built by deps.sh into build/deps/<preset>
#   tarvex::zlib                                       Debian package, static for Windows
#   tarvex::gcrypt                                     Debian package; not for Windows, which has its own
#   CLI11::CLI11 nlohmann_json::nlohmann_json          headers of Debian packages; {fmt} is in third_party/
# The cache is found from the checkout, not from the build folder, so private build folders share it.
set(TARVEX_DEPENDENCIES script CACHE STRING "script: cmake/deps.sh, on Debian. packages: what find_package finds")
set_property(CACHE TARVEX_DEPENDENCIES PROPERTY STRINGS script packages)
if(TARVEX_DEPENDENCIES STREQUAL "packages")
  include(TarvexPackages)
  return()
endif()
set(TARVEX_TESTS ON)
set(TARVEX_DEPS ${CMAKE_SOURCE_DIR}/build/deps/${TARVEX_PRESET})

# Changed patches, and folders whose entries changed. Not by CONFIGURE_DEPENDS, which makes every
# ninja run look as if there were something to do.
file(GLOB_RECURSE patches LIST_DIRECTORIES TRUE ${CMAKE_SOURCE_DIR}/third_party/*)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${patches} ${CMAKE_SOURCE_DIR}/cmake/deps.sh)
execute_process(COMMAND ${CMAKE_SOURCE_DIR}/cmake/deps.sh ${TARVEX_PRESET} COMMAND_ERROR_IS_FATAL ANY)

function(tarvex_cached_library name archive)
  add_library(tarvex::${name} STATIC IMPORTED GLOBAL)
  set_target_properties(tarvex::${name} PROPERTIES IMPORTED_LOCATION ${TARVEX_DEPS}/lib/lib${archive}.a
                        INTERFACE_INCLUDE_DIRECTORIES ${TARVEX_DEPS}/include)
endfunction()

tarvex_cached_library(ebml ebml)
tarvex_cached_library(matroska matroska)
target_link_libraries(tarvex::matroska INTERFACE tarvex::ebml)

tarvex_cached_library(gtest_core gtest)
tarvex_cached_library(gtest gtest_main)
target_link_libraries(tarvex::gtest INTERFACE tarvex::gtest_core)
if(NOT WIN32)
  find_package(Threads REQUIRED)
  target_link_libraries(tarvex::gtest_core INTERFACE Threads::Threads)
endif()

# The cross package keeps an import library beside the static one, and the linker takes that by name, so the
# archive is given as a file.
if(WIN32)
  set(zlib_archive /usr/${TARVEX_TRIPLET}/lib/libz.a)
  if(NOT EXISTS ${zlib_archive})
    message(FATAL_ERROR "${zlib_archive} is missing; tools/setup.sh installs it")
  endif()
  add_library(tarvex::zlib STATIC IMPORTED GLOBAL)
  set_target_properties(tarvex::zlib PROPERTIES IMPORTED_LOCATION ${zlib_archive})
else()
  add_library(tarvex::zlib INTERFACE IMPORTED GLOBAL)
  target_link_libraries(tarvex::zlib INTERFACE z)
  add_library(tarvex::gcrypt INTERFACE IMPORTED GLOBAL)
  target_link_libraries(tarvex::gcrypt INTERFACE gcrypt gpg-error)
endif()

foreach(name CLI11::CLI11 nlohmann_json::nlohmann_json)
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${name} INTERFACE ${TARVEX_DEPS}/include)
endforeach()

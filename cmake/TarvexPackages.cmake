# The same targets as those of TarvexDeps.cmake, from packages that the user has: TARVEX_DEPENDENCIES=packages.
# Where they are not in a usual place, CMAKE_PREFIX_PATH names the folder. Without GoogleTest there are no tests.
# zlib as an archive, so that the module needs no other DLL.
if(WIN32)
  set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(Matroska 1.7 CONFIG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(CLI11 CONFIG REQUIRED)
find_package(nlohmann_json CONFIG REQUIRED)
find_package(fmt CONFIG REQUIRED)
find_package(GTest CONFIG)

# The scanner uses what our patches add, and its bounds rest on what they mend.
get_target_property(ebml_headers EBML::ebml INTERFACE_INCLUDE_DIRECTORIES)
list(GET ebml_headers 0 ebml_headers)
file(STRINGS ${ebml_headers}/ebml/EbmlElement.h patched REGEX "FromHead\\(")
if(NOT patched)
  message(FATAL_ERROR "${ebml_headers}/ebml is libebml without third_party/patches; see docs/building.md")
endif()

add_library(tarvex::ebml ALIAS EBML::ebml)
add_library(tarvex::matroska ALIAS Matroska::matroska)
add_library(tarvex::zlib ALIAS ZLIB::ZLIB)
set(TARVEX_TESTS ${GTest_FOUND})
if(TARVEX_TESTS)
  add_library(tarvex::gtest INTERFACE IMPORTED GLOBAL)
  target_link_libraries(tarvex::gtest INTERFACE GTest::gtest_main)
endif()
if(NOT WIN32)
  add_library(tarvex::gcrypt INTERFACE IMPORTED GLOBAL)
  target_link_libraries(tarvex::gcrypt INTERFACE gcrypt gpg-error)
endif()

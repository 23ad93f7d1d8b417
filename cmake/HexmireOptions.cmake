# Options and compile settings that every target of the project shares.
option(HEXMIRE_BUILD_TESTS "Build the tests and the examples" ON)
option(HEXMIRE_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(HEXMIRE_BUILD_FUZZERS "Build the libFuzzer targets (Clang only)" OFF)
# Worth it where every object is built anew: a compiler cache keeps no objects with such headers.
option(HEXMIRE_PRECOMPILE_TESTS "Precompile what all tests include"
  "$ENV{HEXMIRE_PRECOMPILE_TESTS}")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(HEXMIRE_CCACHE ccache)
if(HEXMIRE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Paths below the tree count relative to it, so that one clone's objects serve another's. What a
  # file includes is known from the compiler's own list, so that a file that is new to the cache is
  # not read by a preprocessor first.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
    CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1 ${HEXMIRE_CCACHE})
endif()

add_library(hexmire_settings INTERFACE)
target_include_directories(hexmire_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(hexmire_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

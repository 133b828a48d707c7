# What every target of the project is compiled with, in one place.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

# All products side by side, so that the program finds the plug-in in a build tree as it does when
# installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

find_program(SVMSCORE_CCACHE ccache)
if(SVMSCORE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${SVMSCORE_CCACHE})
endif()

# Flags that decide numbers or correctness are only here. -ffp-contract=off: a score has the same
# bits on every CPU, so no multiply and add may be fused behind the author's back.
add_library(svmscore_flags INTERFACE)
target_compile_options(svmscore_flags INTERFACE
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Werror)
# g++ 12 sees overlapping copies in std::string's own operator+ where there are none.
target_compile_options(svmscore_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_include_directories(svmscore_flags INTERFACE ${CMAKE_SOURCE_DIR})
if(SVMSCORE_SANITIZE)
  target_compile_options(svmscore_flags INTERFACE
    -fsanitize=${SVMSCORE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(svmscore_flags INTERFACE -fsanitize=${SVMSCORE_SANITIZE})
  # g++ 12 is wrong about std::regex under the sanitizers.
  target_compile_options(svmscore_flags INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(SVMSCORE_FUZZ)
  # What an input has reached, which is how the engine finds its way.
  target_compile_options(svmscore_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# svmscore_quick(NAME): code that is compiled but hardly run, such as tests, is built in half the time
# when it is not optimised. What it tests is a library, which is compiled as ever.
function(svmscore_quick name)
  target_compile_options(${name} PRIVATE -O0)
  if(SVMSCORE_FUZZ)
    target_compile_options(${name} PRIVATE -fno-sanitize=fuzzer-no-link)
  endif()
endfunction()

# svmscore_runs_once(NAMES...): rooms that do their work once a run, and not once for each case. What
# an optimiser gains there is less than what it takes when the program is built. No flag of this kind
# changes a digit: the order of operations stays that of the source.
function(svmscore_runs_once)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    foreach(name ${ARGN})
      target_compile_options(${name} PRIVATE -O1)
    endforeach()
  endif()
endfunction()

# svmscore_room(NAME SOURCES ... DEPENDS ...): one static library for one folder. A room may link
# only the rooms below it; the include test holds the sources to the same order.
function(svmscore_room name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC svmscore_flags ${ARG_DEPENDS})
  target_compile_options(${name} PRIVATE -fvisibility=hidden -fvisibility-inlines-hidden)
endfunction()

# A test that has not ended after so many seconds hangs. No verdict may depend on how busy a machine
# is, so this is far more than any test takes.
set(SVMSCORE_HANGS 7200)

# svmscore_test(NAME SOURCES ... LINK ...): one GoogleTest program, each case known to ctest.
function(svmscore_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE svmscore_flags ${ARG_LINK} GTest::gmock GTest::gtest_main)
  svmscore_quick(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 1800 PROPERTIES TIMEOUT ${SVMSCORE_HANGS})
endfunction()

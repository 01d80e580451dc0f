# Test registration. Everything runs from one ctest: natively each GoogleTest case is an entry of its
# own; under Wine each executable is one entry, since every process start costs there.
set(DT_PRESET_NAME "native" CACHE STRING "Prefix of the test names of this build")

if(DT_TESTS)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  if(DT_SANITIZE)
    foreach(lib gtest gtest_main gmock gmock_main)
      target_compile_options(${lib} PRIVATE -fsanitize=${DT_SANITIZE})
    endforeach()
  endif()
  include(GoogleTest)
endif()

# Where the sources and this build lie, for the tests that read their files: a header, so that the command
# lines of all others are the same in every checkout, and its objects can be shared.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/tests/include/TestPaths.h CONTENT [[#pragma once
#define DT_SOURCE_DIR "@CMAKE_SOURCE_DIR@"
#define DT_BINARY_DIR "@CMAKE_BINARY_DIR@"
]] @ONLY)

set(DT_WINE_RUN "${CMAKE_SOURCE_DIR}/tools/dev/wine-run")

# Programs in one Wine prefix share named objects, windows and registry, so its tests run one at a time.
# Tests that ask for SECOND_PREFIX run in another prefix, beside those of the first.
function(dt_wine_test test second)
  if(second)
    set_tests_properties(${test} PROPERTIES RESOURCE_LOCK wine-second ENVIRONMENT DT_WINE_PREFIX=wineprefix-second)
  else()
    set_tests_properties(${test} PROPERTIES RESOURCE_LOCK wine)
  endif()
endfunction()

# dt_gtest(NAME LABEL label [TIMEOUT s] [SECOND_PREFIX] SOURCES ... LIBS ...)
function(dt_gtest name)
  cmake_parse_arguments(T "SECOND_PREFIX" "LABEL;TIMEOUT" "SOURCES;LIBS" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  add_executable(${name} ${T_SOURCES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_link_libraries(${name} PRIVATE dt_warnings ${T_LIBS} dt_test_support GTest::gmock)
  # The code under test is optimised; its tests only take longer to build for it.
  target_compile_options(${name} PRIVATE -O0 -g1)
  if(WIN32)
    target_link_options(${name} PRIVATE -municode)
    add_test(NAME ${DT_PRESET_NAME}.${name}
      COMMAND ${DT_WINE_RUN} ${CMAKE_BINARY_DIR} $<TARGET_FILE:${name}>)
    set_tests_properties(${DT_PRESET_NAME}.${name} PROPERTIES
      LABELS "${T_LABEL}" TIMEOUT ${T_TIMEOUT})
    dt_wine_test(${DT_PRESET_NAME}.${name} "${T_SECOND_PREFIX}")
  else()
    gtest_discover_tests(${name} TEST_PREFIX "${DT_PRESET_NAME}." DISCOVERY_TIMEOUT 60
      PROPERTIES LABELS "${T_LABEL}" TIMEOUT ${T_TIMEOUT})
  endif()
endfunction()

# dt_core_test: portable; native with sanitizers, and under Wine, from the same sources.
function(dt_core_test name)
  dt_gtest(${name} LABEL core SECOND_PREFIX ${ARGN})
endfunction()

# dt_server_test: the Windows layers, under Wine.
function(dt_server_test name)
  if(WIN32)
    dt_gtest(${name} LABEL server ${ARGN})
  endif()
endfunction()

# dt_e2e_test: real processes over COM, under Wine.
function(dt_e2e_test name)
  if(WIN32)
    dt_gtest(${name} LABEL e2e ${ARGN})
  endif()
endfunction()

# dt_script_test(NAME LABEL label [TIMEOUT s] COMMAND ...): a script as a test, once per build.
# Scripts run with Debian's own Python, which sees Debian's modules.
function(dt_script_test name)
  cmake_parse_arguments(T "" "LABEL;TIMEOUT" "COMMAND" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 600)
  endif()
  add_test(NAME ${DT_PRESET_NAME}.${name} COMMAND ${T_COMMAND} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
  set_tests_properties(${DT_PRESET_NAME}.${name} PROPERTIES LABELS "${T_LABEL}" TIMEOUT ${T_TIMEOUT})
endfunction()

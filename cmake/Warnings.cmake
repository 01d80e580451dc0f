# The warnings of every target of ours, as errors. Third-party code is included as SYSTEM and not
# touched by this.
add_library(dt_warnings INTERFACE)
target_compile_options(dt_warnings INTERFACE
  -Werror -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wdouble-promotion -Wshadow
  -Wold-style-cast -Wcast-qual -Wformat=2 -Woverloaded-virtual -Wnull-dereference
  -Wimplicit-fallthrough -Wundef -Wextra-semi -Wvla
  $<$<CXX_COMPILER_ID:GNU>:-Wsuggest-override -Wduplicated-cond -Wduplicated-branches -Wlogical-op
  -Wuseless-cast -Wzero-as-null-pointer-constant>
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(WIN32)
  target_compile_definitions(dt_warnings INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601)
  # Has std::recursive_mutex free its lock when it is destroyed. Otherwise the standard library makes it from
  # the static initialiser, for which winpthreads takes a heap block at the first lock that nothing gives back.
  # Plain mutexes have it from the standard library's own settings for this system.
  target_compile_definitions(dt_warnings INTERFACE _GTHREAD_USE_RECURSIVE_MUTEX_INIT_FUNC)
endif()
if(DT_SANITIZE)
  target_compile_options(dt_warnings INTERFACE
    -fsanitize=${DT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_link_options(dt_warnings INTERFACE -fsanitize=${DT_SANITIZE})
endif()

# dt_library(NAME SOURCES...): a static library of one layer. Its folder is on the include path of
# whoever links it, and of nobody else: an upward include does not compile.
function(dt_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PRIVATE dt_warnings)
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
endfunction()

# dt_program(NAME SOURCES...): an executable with the project's warnings. On Windows its entry is
# wmain or wWinMain.
function(dt_program name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE dt_warnings)
  if(WIN32)
    target_link_options(${name} PRIVATE -municode)
  endif()
endfunction()

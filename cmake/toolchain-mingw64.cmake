# Cross build for 64-bit Windows with Debian's mingw-w64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(DT_TRIPLET x86_64-w64-mingw32)
# The -posix flavour: the win32 thread model of GCC 12 has neither std::mutex nor std::thread.
set(CMAKE_C_COMPILER ${DT_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${DT_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${DT_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${DT_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# -static: the result needs no compiler DLLs beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Cross build for 64-bit Windows with mingw-w64 (the posix thread model); tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(NOMUTIL_WINDMC x86_64-w64-mingw32-windmc CACHE STRING "The message compiler")
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian keeps the 64-bit loader and its server outside the PATH.
find_program(NOMUTIL_WINE NAMES wine64 wine PATHS /usr/lib/wine)
find_program(NOMUTIL_WINESERVER NAMES wineserver PATHS /usr/lib/wine)
if(NOMUTIL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${NOMUTIL_WINE})
endif()

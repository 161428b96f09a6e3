# The common part of the toolchain files: a cross compiler from Debian's g++-mingw-w64-*.
#
# The toolchain files set CMAKE_SYSTEM_PROCESSOR and mingw_triple first.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${mingw_triple}-gcc)
set(CMAKE_CXX_COMPILER ${mingw_triple}-g++)
set(CMAKE_RC_COMPILER ${mingw_triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

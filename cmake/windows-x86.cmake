# Cross compiler for 32-bit Windows.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(mingw_triple i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)

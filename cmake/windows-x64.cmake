# Cross compiler for 64-bit Windows.
set(CMAKE_SYSTEM_PROCESSOR x64)
set(mingw_triple x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)

include(${CMAKE_CURRENT_LIST_DIR}/windows-x86.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/windows-clang.cmake)

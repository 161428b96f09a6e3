include(${CMAKE_CURRENT_LIST_DIR}/windows-x64.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/windows-clang.cmake)

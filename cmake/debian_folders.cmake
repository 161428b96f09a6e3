# Run by cpack: Debian's zsh looks for the completions of packages in a folder of another name.
if(CPACK_GENERATOR STREQUAL DEB)
  file(GLOB_RECURSE completion ${CPACK_TEMPORARY_DIRECTORY}/_deviceid)
  cmake_path(GET completion PARENT_PATH folder)
  file(RENAME ${folder} ${folder}/../vendor-completions)
endif()

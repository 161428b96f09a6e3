# The target "tidy" runs clang-tidy over each file of the library and the host program that has
# changed, or that sees a header that has.
find_program(CLANG_TIDY clang-tidy)
if(NOT CLANG_TIDY)
  return()
endif()

file(GLOB_RECURSE tidy_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cc
     ${PROJECT_SOURCE_DIR}/tools/*.cc)
file(GLOB_RECURSE tidy_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.h
     ${PROJECT_SOURCE_DIR}/tools/*.h ${PROJECT_SOURCE_DIR}/include/*.h)
list(FILTER tidy_sources EXCLUDE REGEX "library_entry|platform/windows/")

# clang-tidy does not know all options of the compiler that the project is built with.
set(tidy_folder ${CMAKE_BINARY_DIR}/tidy)
file(MAKE_DIRECTORY ${tidy_folder})
add_custom_command(
  OUTPUT ${tidy_folder}/compile_commands.json
  COMMAND sed "s/ -fno-gnu-unique//" ${CMAKE_BINARY_DIR}/compile_commands.json >
          ${tidy_folder}/compile_commands.json
  VERBATIM)

foreach(source IN LISTS tidy_sources)
  file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${source})
  set(stamp ${tidy_folder}/${name}.checked)
  add_custom_command(
    OUTPUT ${stamp}
    COMMAND ${CLANG_TIDY} --quiet -p ${tidy_folder} ${source}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${source} ${tidy_headers} ${PROJECT_SOURCE_DIR}/.clang-tidy
            ${tidy_folder}/compile_commands.json
    COMMENT "Checking ${name}"
    VERBATIM)
  get_filename_component(folder ${stamp} DIRECTORY)
  file(MAKE_DIRECTORY ${folder})
  list(APPEND stamps ${stamp})
endforeach()
add_custom_target(tidy DEPENDS ${stamps})

# The static library, which becomes a part of the program that links it.
target_compile_options(deviceid_objects PRIVATE -fno-lto)
# CMake adds the C++ runtime by itself where it links with the C++ compiler.
target_link_libraries(deviceid INTERFACE $<$<LINK_LANGUAGE:C>:stdc++>)
if(WIN32)
  return()
endif()

# The program may have functions with the names of our Windows layer, or other versions of a template. So
# all objects are linked into one that exports the five functions alone.
list(JOIN exports "\n" exports)
file(CONFIGURE OUTPUT exports.txt CONTENT "${exports}\n" @ONLY)
set(single ${CMAKE_CURRENT_BINARY_DIR}/deviceid.o)
separate_arguments(flags UNIX_COMMAND "${CMAKE_CXX_FLAGS}")
# The runtime of a sanitizer comes with the program.
list(FILTER flags EXCLUDE REGEX -fsanitize)
if(CMAKE_CXX_COMPILER_TARGET)
  list(APPEND flags --target=${CMAKE_CXX_COMPILER_TARGET})
endif()
add_custom_command(TARGET deviceid POST_BUILD VERBATIM
  COMMAND ${CMAKE_CXX_COMPILER} ${flags} -r -nostdlib -Wl,--force-group-allocation
          -Wl,--whole-archive $<TARGET_FILE:deviceid> -o ${single}
  COMMAND ${CMAKE_OBJCOPY} --keep-global-symbols=${CMAKE_CURRENT_BINARY_DIR}/exports.txt ${single}
  COMMAND ${CMAKE_COMMAND} -E rm $<TARGET_FILE:deviceid>
  COMMAND ${CMAKE_AR} rcs $<TARGET_FILE:deviceid> ${single})

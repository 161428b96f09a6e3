# Replaces GCC by Clang, with GCC's headers and libraries, which Clang does not find by itself.
execute_process(COMMAND ${mingw_triple}-gcc -print-libgcc-file-name
                OUTPUT_VARIABLE gcc_folder COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET gcc_folder PARENT_PATH gcc_folder)
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET ${mingw_triple})
endforeach()
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${gcc_folder}/include/c++ \
-isystem ${gcc_folder}/include/c++/${mingw_triple}")
# GNU ld, because of a linker script. It warns of each constant that both compilers have emitted.
foreach(kind EXE SHARED)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,--no-warnings -B${gcc_folder} -L${gcc_folder}")
endforeach()

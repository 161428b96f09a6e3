# Settings for the whole build if this project is not part of another.
option(BUILD_SHARED_LIBS "Make a shared library, not a static one" ON)
set(DEVICEID_SANITIZERS "" CACHE STRING "Value of -fsanitize, empty for none")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})

if(DEVICEID_SANITIZERS)
  add_compile_options(-fsanitize=${DEVICEID_SANITIZERS} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  # The check of virtual tables needs a file descriptor, and a test runs without one.
  add_compile_options(-fno-sanitize=vptr)
  add_link_options(-fsanitize=${DEVICEID_SANITIZERS})
  # With the sanitizers GCC 12 reports uninitialized values in its own regular expressions.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# The same sources give the same bytes, in any folder and at any time.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
                    -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
if(WIN32)
  add_link_options(-Wl,--no-insert-timestamp)
endif()

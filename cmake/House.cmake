# How a folder of the house becomes a target.
#
# Every folder sees the headers of the targets it links and of no other: its own are offered under
# a link below the build folder, so that `#include "host/AString.h"` is found only by who links
# `host`. A wrong include therefore does not compile.

add_library(house_flags INTERFACE)
target_compile_options(house_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # GCC 12 takes std::string's own copying for overlapping (its bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(OUTPUTDRIVER_SANITIZE)
  target_compile_options(house_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(house_flags INTERFACE -fsanitize=address,undefined)
endif()

# house_headers(target folder): an interface target that offers the headers of `folder`.
function(house_headers target folder)
  set(root ${CMAKE_BINARY_DIR}/include/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${root}/${parent})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} COPY_ON_ERROR SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} INTERFACE ${root})
endfunction()

# house_library(target folder source...): the static library of `folder`, and its headers as
# `<target>_headers`. What it may use is linked by the caller.
function(house_library target folder)
  house_headers(${target}_headers ${folder})
  add_library(${target} STATIC ${ARGN})
  target_link_libraries(${target} PUBLIC ${target}_headers PRIVATE house_flags)
endfunction()

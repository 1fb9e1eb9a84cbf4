# SPDX-License-Identifier: Apache-2.0
# Warnings, sanitizers and effort, the same for every target of the tree.
function(kestrove_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wformat=2
                         $<$<COMPILE_LANGUAGE:CXX>:-Wno-format-nonliteral> -Wno-format-nonliteral
                         $<$<AND:$<CONFIG:Release>,$<COMPILE_LANG_AND_ID:CXX,GNU>>:-Wno-restrict>) # GCC 12 of its own strings
  if(KESTROVE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# For programs whose speed does not matter but in a release: what is built most often builds fast. Of the sanitizers'
# checks three go into each use of a pointer, and a program of theirs takes ten times as long to start; what they find
# the other ones find, too, except in the library's packed records, and the library has them all.
function(kestrove_quick_build target)
  target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Release>>:-O0$<SEMICOLON>-g1>)
  if(KESTROVE_SANITIZE MATCHES undefined)
    target_compile_options(${target} PRIVATE -fno-sanitize=null,alignment,vptr)
  endif()
endfunction()

# The headers of a target's libraries, read once; the other targets of the same kind share them. A release and another
# compiler read them in each file, so that no file rests on an include that it lacks.
function(kestrove_precompile target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT CMAKE_BUILD_TYPE STREQUAL Release AND NOT KESTROVE_WIDTH_OF_A_TEST)
    foreach(header IN LISTS ARGN)
      target_precompile_headers(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:<${header}$<ANGLE-R>>)
    endforeach()
    target_compile_options(${target} PRIVATE -fpch-preprocess) # ccache reads what was preprocessed
  endif()
endfunction()

function(kestrove_share_precompiled target owner)
  get_target_property(headers ${owner} PRECOMPILE_HEADERS)
  if(headers)
    target_precompile_headers(${target} REUSE_FROM ${owner})
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

if(KESTROVE_SANITIZE)
  add_compile_options(-fsanitize=${KESTROVE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESTROVE_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Tables of checks that start-up would have to relocate are most of such a program: it has a fixed address.
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
  endif()
endif()

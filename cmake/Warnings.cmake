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

# For programs whose speed does not matter but in a release: what is built most often builds fast.
function(kestrove_quick_build target)
  target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Release>>:-O0$<SEMICOLON>-g1>)
endfunction()

if(KESTROVE_SANITIZE)
  add_compile_options(-fsanitize=${KESTROVE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESTROVE_SANITIZE})
endif()

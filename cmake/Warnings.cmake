# Warnings and sanitizers, the same for every target of the tree.
function(kestrove_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wformat=2
                         $<$<COMPILE_LANGUAGE:CXX>:-Wno-format-nonliteral> -Wno-format-nonliteral)
  if(KESTROVE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

if(KESTROVE_SANITIZE)
  add_compile_options(-fsanitize=${KESTROVE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESTROVE_SANITIZE})
endif()

# Strict warnings for the project's own targets (third-party code is not affected).
function(oxw_strict_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()

# Warnings are set per target, never through the global flags.
function(tnw_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow)
endfunction()

# TNW_SANITIZE=address,undefined instruments every target of the build.
if(TNW_SANITIZE)
    add_compile_options(-fsanitize=${TNW_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TNW_SANITIZE})
endif()

# A program that is not built here (the Python interpreter) can load sanitized code only with
# the sanitizer runtimes preloaded: TNW_SANITIZER_PRELOAD is the LD_PRELOAD value for that.
set(TNW_SANITIZER_PRELOAD "")
foreach(pair address:asan undefined:ubsan)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 sanitizer)
    list(GET pair 1 runtime)
    if(TNW_SANITIZE MATCHES ${sanitizer})
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=lib${runtime}.so
                        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        list(APPEND TNW_SANITIZER_PRELOAD ${path})
    endif()
endforeach()
list(JOIN TNW_SANITIZER_PRELOAD ":" TNW_SANITIZER_PRELOAD)

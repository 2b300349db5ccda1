# TNW_SANITIZE=address,undefined instruments every target of the build.
if(TNW_SANITIZE)
    add_compile_options(-fsanitize=${TNW_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TNW_SANITIZE})
endif()

if(VELMORA_SANITIZE)
    # Stop at the first report so that a sanitizer finding fails the test run.
    add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()

# OSL_SANITIZE=address,undefined or thread: applied to every target of the tree, so that the
# library, the tests and the tools are instrumented alike.
include_guard(GLOBAL)
if(OSL_SANITIZE)
    add_compile_options(-fsanitize=${OSL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${OSL_SANITIZE})
endif()

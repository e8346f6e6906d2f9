include_guard(GLOBAL)
function(osl_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                           $<$<BOOL:${OSL_WERROR}>:-Werror>)
endfunction()

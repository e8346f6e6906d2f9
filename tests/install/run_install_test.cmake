# Installs the build tree into a scratch prefix, then configures, builds and runs the consumer
# project against it with find_package, so that packaging cannot break unnoticed.
file(REMOVE_RECURSE ${OSL_WORK_DIR})
set(prefix ${OSL_WORK_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${OSL_BINARY_DIR} --prefix ${prefix})

# The umbrella header includes every installed header.
file(READ ${prefix}/include/vum-qib-osl/osl.h umbrella)
file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/vum-qib-osl/*.h)
foreach(header IN LISTS headers)
    if(NOT header STREQUAL "vum-qib-osl/osl.h" AND NOT umbrella MATCHES "#include <${header}>")
        message(FATAL_ERROR "osl.h does not include ${header}")
    endif()
endforeach()
# A sanitized library needs a sanitized program around it.
set(flags "")
if(OSL_SANITIZE)
    set(flags "-fsanitize=${OSL_SANITIZE}")
endif()
run(${CMAKE_COMMAND} -S ${OSL_CONSUMER_SOURCE} -B ${OSL_WORK_DIR}/build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${OSL_CXX_COMPILER}
    -DCMAKE_BUILD_RPATH=${prefix}/lib "-DCMAKE_CXX_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${OSL_WORK_DIR}/build)
run(${OSL_WORK_DIR}/build/consumer)
message(STATUS "consumer said:\n${last_output}")
if(NOT last_output MATCHES "^consumer 1.0")
    message(FATAL_ERROR "the consumer's version registry is not as expected")
endif()

# The pkg-config file must name the installed library too.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
    set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
    run(${PKG_CONFIG} --libs vum-qib-osl)
    if(NOT last_output MATCHES "-lvum-qib-osl")
        message(FATAL_ERROR "pkg-config gives no library: ${last_output}")
    endif()
endif()
file(REMOVE_RECURSE ${OSL_WORK_DIR})

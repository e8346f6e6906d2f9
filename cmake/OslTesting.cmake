# osl_add_tests(<name> LABEL <kind> [LIBS ...] SOURCES <files>...)
#
# One GoogleTest binary per call, named osl_<name>_tests, linked with osl_static (every symbol,
# internals included). What the shared library exports is the installed consumer's test
# (tests/install). The kind label (unit, process, slow, network, integration) goes on every discovered
# test; the subsystem label comes from the directory's LABELS property.
include_guard(GLOBAL)
find_package(GTest REQUIRED)
include(GoogleTest)

function(osl_add_tests name)
    cmake_parse_arguments(ARG "" "LABEL;TIMEOUT" "LIBS;SOURCES" ${ARGN})
    if(NOT ARG_LABEL)
        set(ARG_LABEL unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set(target osl_${name}_tests)
    add_executable(${target} ${ARG_SOURCES})
    target_link_libraries(${target} PRIVATE osl_static osl_test_support)
    target_link_libraries(${target} PRIVATE GTest::gtest GTest::gmock GTest::gtest_main ${ARG_LIBS})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
    target_compile_definitions(${target} PRIVATE
        OSL_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}/tests/data"
        OSL_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        OSL_BINARY_DIR="${PROJECT_BINARY_DIR}")
    osl_set_warnings(${target})
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}."
                         PROPERTIES LABELS "${ARG_LABEL}" TIMEOUT ${ARG_TIMEOUT})
endfunction()

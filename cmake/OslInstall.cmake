# Installs the library, its public headers, the CMake package and the pkg-config file. ICU, PCRE2
# and curl are private dependencies of the shared library and appear in none of these files.
include_guard(GLOBAL)
include(CMakePackageConfigHelpers)

set(OSL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vum-qib-osl)

install(TARGETS vum-qib-osl EXPORT vum-qib-oslTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vum-qib-osl DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT dev)
install(EXPORT vum-qib-oslTargets NAMESPACE vum-qib-osl:: DESTINATION ${OSL_CMAKE_DIR} COMPONENT dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vum-qib-oslConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vum-qib-oslConfig.cmake INSTALL_DESTINATION ${OSL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vum-qib-oslConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vum-qib-oslConfig.cmake ${PROJECT_BINARY_DIR}/vum-qib-oslConfigVersion.cmake
        DESTINATION ${OSL_CMAKE_DIR} COMPONENT dev)

# pkg-config wants absolute directories; GNUInstallDirs may give relative ones.
foreach(dir LIBDIR INCLUDEDIR)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
        set(OSL_PC_${dir} "${CMAKE_INSTALL_${dir}}")
    else()
        set(OSL_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
    endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/vum-qib-osl.pc.in ${PROJECT_BINARY_DIR}/vum-qib-osl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vum-qib-osl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)
include(OslPackaging)

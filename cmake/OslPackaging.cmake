# Debian packages through CPack (make package): the shared library with its data files
# (libvum-qib-osl<SOVERSION>), the development files (libvum-qib-osl-dev) and the qibosl tool.
# Run-time dependencies come from dpkg-shlibdeps, never from a hand-written list.
include_guard(GLOBAL)

set(OSL_DEB_RUNTIME libvum-qib-osl${OSL_SOVERSION})
set(OSL_DEB_RELEASE 1)
set(OSL_DEB_VERSION ${PROJECT_VERSION}-${OSL_DEB_RELEASE})

# Every package carries the changelog and the copyright file where Debian's tools look for them.
set(_osl_changelog ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
add_custom_command(OUTPUT ${_osl_changelog}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packaging
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog > ${_osl_changelog}
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog VERBATIM)
add_custom_target(osl_changelog ALL DEPENDS ${_osl_changelog})
function(osl_package_docs component package)
    install(FILES ${_osl_changelog} ${PROJECT_SOURCE_DIR}/packaging/copyright
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()
osl_package_docs(runtime ${OSL_DEB_RUNTIME})
osl_package_docs(dev libvum-qib-osl-dev)
if(OSL_BUILD_TOOLS)
    osl_package_docs(tools qibosl)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vum-qib-osl)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "vum-qib-osl developers <vum-qib-osl@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${OSL_DEB_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# qibosl needs the library of this very build, which no installed package describes yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${OSL_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The dynamic loader's cache is refreshed through dpkg's trigger, as Debian wants for libraries.
file(WRITE ${PROJECT_BINARY_DIR}/packaging/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "operating-system layer of a document and report-processing product
 The operating-system layer of a document and report-processing product:
 logging with channels and rotation, INI configuration files, message
 catalogs, text in UTF-8, legacy code pages and UTF-16, regular expressions
 and wildcards, command-line parsing, named locks, statistics counters and
 external programs with a time-out. This package holds the shared library
 and its encoding and language records.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvum-qib-osl-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${OSL_DEB_RUNTIME} (= ${OSL_DEB_VERSION})")
set(CPACK_COMPONENT_DEV_DESCRIPTION "development files of the vum-qib-osl library
 Headers, the CMake package (find_package(vum-qib-osl)), the pkg-config file
 and the link-time library name for programs that use the operating-system
 layer of the document and report-processing product.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qibosl)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${OSL_DEB_RUNTIME} (>= ${OSL_DEB_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command-line front end of the vum-qib-osl library
 qibosl gives shell scripts and operators the services of the library: INI
 files, message catalogs, encoding conversion, pattern matching, logging,
 named locks, statistics reports and external programs with a time-out.
 The package also holds vum-qib-http-file-cgi.exe, the CGI program that
 serves and stores remote INI files for a web server.")
include(CPack)

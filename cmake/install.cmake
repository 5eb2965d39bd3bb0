# What `cmake --install` puts under the prefix:
#   bin/zylcomp                          the compiler
#   lib/libzylcomp.so{,.0.1,.0.1.0}      the library, with its soname links
#   include/zylcomp.h, include/zyldict.h the public C headers
#   lib/cmake/zylcomp/                   the package for find_package(zylcomp CONFIG),
#                                        with the targets zylcomp::zylcomp (the program),
#                                        zylcomp::libzylcomp and zylcomp_generate()
#   lib/pkgconfig/zylcomp.pc             the library for pkg-config
#   share/man/man1/zylcomp.1             the manual page
# (lib and the others are the GNUInstallDirs directories of the platform.)
include(CMakePackageConfigHelpers)

set(ZYLCOMP_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zylcomp)

install(TARGETS zylcomp zylcomp_cli
    EXPORT zylcompTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/zylcomp.h include/zyldict.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The CMake package.
install(EXPORT zylcompTargets
    NAMESPACE zylcomp::
    DESTINATION ${ZYLCOMP_PACKAGE_DIR})
configure_package_config_file(cmake/zylcompConfig.cmake.in
    ${PROJECT_BINARY_DIR}/zylcompConfig.cmake
    INSTALL_DESTINATION ${ZYLCOMP_PACKAGE_DIR})
# 0.x versions promise nothing across minor versions, just as the soname.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zylcompConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/zylcompConfig.cmake
    ${PROJECT_BINARY_DIR}/zylcompConfigVersion.cmake
    cmake/zylcompGenerate.cmake
    DESTINATION ${ZYLCOMP_PACKAGE_DIR})

# The pkg-config file finds the prefix from where it lies itself
# (${pcfiledir}, the directory pkg-config read it from), so that the prefix
# may be moved, and `cmake --install --prefix` may change it, without
# editing the file. Only a library directory given as an absolute path
# pins the prefix: it is then filled in when installing.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(ZYLCOMP_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
    set(ZYLCOMP_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
else()
    # From <prefix>/<libdir>/pkgconfig back up to <prefix>: "../.." for lib,
    # "../../.." for lib/x86_64-linux-gnu.
    file(RELATIVE_PATH ZYLCOMP_PC_UP "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(REGEX REPLACE "/$" "" ZYLCOMP_PC_UP "${ZYLCOMP_PC_UP}")
    set(ZYLCOMP_PC_PREFIX "\${pcfiledir}/${ZYLCOMP_PC_UP}")
    set(ZYLCOMP_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(ZYLCOMP_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
else()
    set(ZYLCOMP_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(cmake/zylcomp.pc.in ${PROJECT_BINARY_DIR}/zylcomp.pc.in @ONLY)
install(CODE "configure_file(\"${PROJECT_BINARY_DIR}/zylcomp.pc.in\" \"${PROJECT_BINARY_DIR}/zylcomp.pc\" @ONLY)")
install(FILES ${PROJECT_BINARY_DIR}/zylcomp.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The manual page, with this version in its title line.
configure_file(doc/zylcomp.1.in ${PROJECT_BINARY_DIR}/zylcomp.1 @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zylcomp.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

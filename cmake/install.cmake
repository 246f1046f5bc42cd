# cmake --install: library, headers, tools, and what find_package and pkg-config look for.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS tarvix EXPORT tarvix-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/tarvix DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

get_property(TARVIX_TOOLS DIRECTORY ${CMAKE_SOURCE_DIR}/tools PROPERTY BUILDSYSTEM_TARGETS)
set_target_properties(${TARVIX_TOOLS} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
install(TARGETS ${TARVIX_TOOLS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(TARVIX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tarvix)
install(EXPORT tarvix-targets NAMESPACE tarvix:: DESTINATION ${TARVIX_CMAKE_DIR})
file(WRITE ${CMAKE_BINARY_DIR}/tarvix-config.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/tarvix-targets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tarvix-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tarvix-config.cmake ${CMAKE_BINARY_DIR}/tarvix-config-version.cmake
    DESTINATION ${TARVIX_CMAKE_DIR})

# The prefix is where the file itself lies, so that a moved folder still works.
file(WRITE ${CMAKE_BINARY_DIR}/tarvix.pc "prefix=\${pcfiledir}/../..
libdir=\${prefix}/${CMAKE_INSTALL_LIBDIR}
includedir=\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}

Name: tarvix
Description: Development library for 2-D interactive client programs
Version: ${PROJECT_VERSION}
Libs: -L\${libdir} -ltarvix
Cflags: -I\${includedir}
")
install(FILES ${CMAKE_BINARY_DIR}/tarvix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

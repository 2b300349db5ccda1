# cmake --install: the libraries, their headers under include/tnw, the CMake package (tnw::tnw,
# tnw::standins and each subsystem as tnw::<name>) and the pkg-config files tnw and
# tnw-standins.
include(CMakePackageConfigHelpers)

set(TNW_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/tnw)

install(TARGETS ${TNW_INSTALL_TARGETS} tnw_standins EXPORT tnwTargets
        INCLUDES DESTINATION ${TNW_INSTALL_INCLUDEDIR})
install(DIRECTORY src/ DESTINATION ${TNW_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY standins/ DESTINATION ${TNW_INSTALL_INCLUDEDIR}/standins
        FILES_MATCHING PATTERN "*.h")
install(EXPORT tnwTargets NAMESPACE tnw:: DESTINATION ${TNW_INSTALL_CMAKEDIR})

configure_package_config_file(cmake/tnwConfig.cmake.in ${PROJECT_BINARY_DIR}/tnwConfig.cmake
                              INSTALL_DESTINATION ${TNW_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tnwConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tnwConfig.cmake ${PROJECT_BINARY_DIR}/tnwConfigVersion.cmake
        DESTINATION ${TNW_INSTALL_CMAKEDIR})

# pkg-config: the subsystems in link order, each before what it builds on.
set(TNW_PC_LIBS)
foreach(name tnw_bridge tnw_delimited tnw_decoders tnw_shapefile tnw_geometry tnw_encoders
             tnw_core)
    if(TARGET ${name})
        get_target_property(type ${name} TYPE)
        if(NOT type STREQUAL "INTERFACE_LIBRARY")
            string(APPEND TNW_PC_LIBS " -l${name}")
        endif()
    endif()
endforeach()
# The files find the prefix from where they lie, so an installed tree can be moved.
file(RELATIVE_PATH TNW_PC_PREFIX /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
string(REGEX REPLACE "/$" "" TNW_PC_PREFIX ${TNW_PC_PREFIX})
if(TNW_SANITIZE)
    string(APPEND TNW_PC_LIBS " -fsanitize=${TNW_SANITIZE}")
endif()
foreach(pc tnw tnw-standins)
    configure_file(cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/${pc}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

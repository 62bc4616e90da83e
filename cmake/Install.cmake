# `cmake --install`: programs, libraries, and a package that a host finds with find_package(StmDCM) or pkg-config.

include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/StmDCM)

install(TARGETS StmDCM LIBRARY)
install(TARGETS stmdcm_headers StmDCM_static EXPORT StmDCMTargets)
install(TARGETS stmdcm_vorn EXPORT StmDCMTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/stmdcm/vorn)
install(EXPORT StmDCMTargets NAMESPACE StmDCM:: DESTINATION ${package_dir})
include(${CMAKE_CURRENT_LIST_DIR}/HostHeaders.cmake)
foreach(header ${stmdcm_host_headers} ${stmdcm_static_headers})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/stmdcm/${folder})
endforeach()
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})

configure_package_config_file(cmake/StmDCMConfig.cmake.in ${PROJECT_BINARY_DIR}/StmDCMConfig.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StmDCMConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/StmDCMConfig.cmake ${PROJECT_BINARY_DIR}/StmDCMConfigVersion.cmake
        DESTINATION ${package_dir})

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE pc_prefix)
foreach(file stmdcm.pc stmdcm-static.pc)
  configure_file(cmake/${file}.in ${PROJECT_BINARY_DIR}/${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(STMDCM_TOOL)
  install(TARGETS stmdcm RUNTIME)
  install(TARGETS TraceFactory LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/stmdcm)
  install(FILES tool/data/full.tdf sim/scenarios/example.json DESTINATION ${CMAKE_INSTALL_DATADIR}/stmdcm)
  get_target_property(printed stmdcm STMDCM_PRINTED)
  foreach(path ${printed})
    file(RELATIVE_PATH file ${PROJECT_BINARY_DIR}/share ${path})
    cmake_path(GET file PARENT_PATH folder)
    install(FILES ${path} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder})
  endforeach()
endif()

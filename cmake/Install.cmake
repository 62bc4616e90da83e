# `cmake --install`: programs, libraries, and a package that a host finds with find_package(StmDCM).

include(CMakePackageConfigHelpers)

add_library(stmdcm_headers INTERFACE)
target_include_directories(stmdcm_headers INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/stmdcm>)
target_compile_features(stmdcm_headers INTERFACE cxx_std_17)
set_target_properties(stmdcm_headers PROPERTIES EXPORT_NAME headers)
set_target_properties(StmDCM_static PROPERTIES EXPORT_NAME static)

target_link_libraries(StmDCM_static PUBLIC stmdcm_headers)
target_link_libraries(vorn INTERFACE stmdcm_headers)

install(TARGETS StmDCM LIBRARY)
install(TARGETS stmdcm_headers vorn StmDCM_static EXPORT StmDCMTargets)
install(EXPORT StmDCMTargets NAMESPACE StmDCM:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/StmDCM)
include(${CMAKE_CURRENT_LIST_DIR}/HostHeaders.cmake)
foreach(header ${stmdcm_host_headers} ${stmdcm_static_headers})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/stmdcm/${folder})
endforeach()
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

configure_package_config_file(cmake/StmDCMConfig.cmake.in ${PROJECT_BINARY_DIR}/StmDCMConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/StmDCM PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StmDCMConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/StmDCMConfig.cmake ${PROJECT_BINARY_DIR}/StmDCMConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/StmDCM)

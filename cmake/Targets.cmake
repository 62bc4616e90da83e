# The products. Each folder names its own sources. Hosts use the names with StmDCM::, here as from the installed package.

add_library(stmdcm_headers INTERFACE)
add_library(StmDCM::headers ALIAS stmdcm_headers)
target_include_directories(stmdcm_headers INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/stmdcm>)
target_compile_features(stmdcm_headers INTERFACE cxx_std_17)
set_target_properties(stmdcm_headers PROPERTIES EXPORT_NAME headers)

add_subdirectory(host/vorn)

# One compilation of the plug-in's code serves the shared library, the static library, the tool and the tests. The
# formats are apart: they know no manager.
foreach(objects stmdcm_format stmdcm_objects)
  add_library(${objects} OBJECT)
  set_target_properties(${objects} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${objects} PUBLIC stmdcm_vorn)
endforeach()
add_subdirectory(source_utilities)
add_subdirectory(trace)

add_library(StmDCM SHARED $<TARGET_OBJECTS:stmdcm_format> $<TARGET_OBJECTS:stmdcm_objects>)
target_link_libraries(StmDCM PRIVATE stmdcm_vorn)
set(version_script ${PROJECT_SOURCE_DIR}/cmake/StmDCM.map)
target_link_options(StmDCM PRIVATE LINKER:--version-script=${version_script})
if(NOT STMDCM_SANITIZE)
  target_link_options(StmDCM PRIVATE LINKER:-z,defs)
endif()
set_target_properties(StmDCM PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  # The error library: a host's own one, loaded already or on LD_LIBRARY_PATH, comes before these.
  INSTALL_RPATH "$ORIGIN;$ORIGIN/stmdcm/vorn"
  BUILD_WITH_INSTALL_RPATH ON
  LINK_DEPENDS ${version_script}
  LINKER_LANGUAGE CXX
)

add_library(StmDCM_static STATIC $<TARGET_OBJECTS:stmdcm_format> $<TARGET_OBJECTS:stmdcm_objects>)
add_library(StmDCM::static ALIAS StmDCM_static)
set_target_properties(StmDCM_static PROPERTIES OUTPUT_NAME StmDCM EXPORT_NAME static LINKER_LANGUAGE CXX)
target_link_libraries(StmDCM_static PUBLIC stmdcm_headers stmdcm_vorn ${CMAKE_DL_LIBS})

if(STMDCM_TOOL)
  add_subdirectory(host/check)
  add_subdirectory(sim)
  add_subdirectory(stmdcm)
  add_subdirectory(tool)
  add_subdirectory(python)
endif()

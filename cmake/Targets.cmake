# The products. Each folder names its own sources.

add_subdirectory(host/vorn)

# One compilation of the plug-in's code serves the shared library, the static library and the tests.
add_library(stmdcm_objects OBJECT)
set_target_properties(stmdcm_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_link_libraries(stmdcm_objects PUBLIC vorn)
add_subdirectory(source_utilities)
add_subdirectory(trace)

add_library(StmDCM SHARED $<TARGET_OBJECTS:stmdcm_objects>)
target_link_libraries(StmDCM PRIVATE vorn)
set(version_script ${PROJECT_SOURCE_DIR}/cmake/StmDCM.map)
target_link_options(StmDCM PRIVATE LINKER:--version-script=${version_script})
if(NOT STMDCM_SANITIZE)
  target_link_options(StmDCM PRIVATE LINKER:-z,defs)
endif()
set_target_properties(StmDCM PROPERTIES LINK_DEPENDS ${version_script} LINKER_LANGUAGE CXX)

add_library(StmDCM_static STATIC $<TARGET_OBJECTS:stmdcm_objects>)
set_target_properties(StmDCM_static PROPERTIES OUTPUT_NAME StmDCM LINKER_LANGUAGE CXX)
target_link_libraries(StmDCM_static PUBLIC vorn ${CMAKE_DL_LIBS})

foreach(folder sim tool)
  if(EXISTS ${PROJECT_SOURCE_DIR}/${folder}/CMakeLists.txt)
    add_subdirectory(${folder})
  endif()
endforeach()

include(cmake/Install.cmake)

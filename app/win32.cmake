# The Windows program.
enable_language(RC)
set(resources ${CMAKE_CURRENT_SOURCE_DIR}/resources)
file(GLOB icons CONFIGURE_DEPENDS ${resources}/icons/*.ico)
# Name and version are the project's.
set(generated ${CMAKE_CURRENT_BINARY_DIR})
configure_file(resources/orvanto.rc.in orvanto.rc @ONLY)
configure_file(resources/orvanto.manifest.in orvanto.manifest @ONLY)
# The resource compiler names no dependencies by itself.
set_source_files_properties(${generated}/orvanto.rc PROPERTIES
  OBJECT_DEPENDS "${generated}/orvanto.manifest;${icons}")

add_executable(orvanto WIN32 main_win32.cpp ${generated}/orvanto.rc)
target_include_directories(orvanto PRIVATE ${resources} ${generated})
target_link_libraries(orvanto PRIVATE orvanto_app orvanto_win32_forms orvanto_warnings)
target_link_options(orvanto PRIVATE -municode)

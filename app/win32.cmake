# The Windows program.
enable_language(RC)
set(resources ${CMAKE_CURRENT_SOURCE_DIR}/resources)
file(GLOB icons CONFIGURE_DEPENDS ${resources}/icons/*.ico)
# The resource compiler names no dependencies by itself.
set_source_files_properties(resources/orvanto.rc PROPERTIES
  OBJECT_DEPENDS "${resources}/orvanto.manifest;${icons}")

add_executable(orvanto WIN32 main_win32.cpp resources/orvanto.rc)
target_include_directories(orvanto PRIVATE ${resources})
target_link_libraries(orvanto PRIVATE orvanto_app orvanto_win32_forms orvanto_warnings)
target_link_options(orvanto PRIVATE -municode)

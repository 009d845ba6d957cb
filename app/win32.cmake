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

add_library(orvanto_resources OBJECT ${generated}/orvanto.rc)
target_include_directories(orvanto_resources PRIVATE ${resources} ${generated})

add_executable(orvanto WIN32 main_win32.cpp)
target_link_libraries(orvanto PRIVATE orvanto_app orvanto_resources orvanto_win32_forms
                                      orvanto_warnings)
# Sections that begin on pages in the file, too, are mapped as they are and need no private memory.
target_link_options(orvanto PRIVATE -municode -Wl,--file-alignment,4096)
# F1 looks for it beside the program.
add_dependencies(orvanto manual)

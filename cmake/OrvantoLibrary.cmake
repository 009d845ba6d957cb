# One static library per directory. The arrows between them are the architecture: tools/check-layers
# compares every #include and every link line with the list it holds.

add_library(orvanto_warnings INTERFACE)
target_compile_options(orvanto_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                                  -Werror -Werror=return-type)

# orvanto_library(NAME SOURCES file... SEES library...)
function(orvanto_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;SEES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_SEES} PRIVATE orvanto_warnings)
endfunction()

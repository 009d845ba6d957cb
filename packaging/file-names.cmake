# Read by CPack for each kind of package.
set(name orvanto-${CPACK_PACKAGE_VERSION})
if(CPACK_GENERATOR STREQUAL NSIS)
  set(CPACK_PACKAGE_FILE_NAME ${name}-setup)
elseif(CPACK_GENERATOR STREQUAL ZIP)
  set(CPACK_PACKAGE_FILE_NAME ${name}-win64)
endif()

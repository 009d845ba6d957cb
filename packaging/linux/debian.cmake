# The Debian package of the console program.
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cups-client, pulseaudio-utils | pipewire-bin | alsa-utils, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "task scheduler with scripts and remote control
Named tasks run at an hour and a minute: once on a date, on weekdays, or on
a day of every month. A task runs a program or a script, prints a file,
shows a message, plays a sound, restarts the computer or shuts it down.

This is the console program. It can be reached by telnet and FTP, and
fetches files by HTTP and FTP.")
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# A program that runs from the build folder finds the samples as an installed one does.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/share/orvanto)
file(CREATE_LINK ${scripts} ${CMAKE_BINARY_DIR}/share/orvanto/scripts SYMBOLIC)

configure_file(linux/orvanto.1.in orvanto.1 @ONLY)
add_custom_command(OUTPUT orvanto.1.gz COMMAND gzip -9nc orvanto.1 > orvanto.1.gz
                   DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/orvanto.1)
set(make_changelog ${CMAKE_CURRENT_SOURCE_DIR}/linux/make-changelog)
set(changes ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
add_custom_command(OUTPUT changelog.gz
  COMMAND ${make_changelog} version=${PROJECT_VERSION} "by=${CPACK_PACKAGE_CONTACT}" ${changes}
          > changelog
  COMMAND gzip -9nc changelog > changelog.gz
  DEPENDS ${make_changelog} ${changes} VERBATIM)
add_custom_target(package_files DEPENDS orvanto.1.gz changelog.gz)
add_dependencies(package_files orvanto manual)

set(made ${CMAKE_CURRENT_BINARY_DIR})
set(documents share/doc/orvanto)
install(TARGETS orvanto RUNTIME DESTINATION bin)
install(FILES ${made}/orvanto.1.gz DESTINATION share/man/man1)
install(FILES linux/orvanto.bash DESTINATION share/bash-completion/completions RENAME orvanto)
install(FILES linux/orvanto.service DESTINATION lib/systemd/user)
install(DIRECTORY ${scripts} DESTINATION share/orvanto)
install(FILES linux/copyright ${made}/changelog.gz DESTINATION ${documents})
install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/manual DESTINATION ${documents})

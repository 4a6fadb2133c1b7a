# Runs in the tree that becomes the Debian package: adds what only Debian wants, strips, and compresses.
set(tree "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(documents "${tree}/share/doc/tarnly")
set(plainFile FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

file(COPY "${CMAKE_CURRENT_LIST_DIR}/copyright" "${CMAKE_CURRENT_LIST_DIR}/changelog.Debian"
    "${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md" DESTINATION "${documents}" ${plainFile})
file(RENAME "${documents}/CHANGELOG.md" "${documents}/changelog")
file(COPY "${CMAKE_CURRENT_LIST_DIR}/lintian-overrides" DESTINATION "${tree}/share/lintian/overrides"
    ${plainFile})
file(RENAME "${tree}/share/lintian/overrides/lintian-overrides" "${tree}/share/lintian/overrides/tarnly")

# A package for one release of Debian says so in its version.
file(READ "${documents}/changelog.Debian" changes)
string(REPLACE "-1) " "-${CPACK_DEBIAN_PACKAGE_RELEASE}) " changes "${changes}")
file(WRITE "${documents}/changelog.Debian" "${changes}")

file(GLOB programs "${tree}/bin/*")
execute_process(
    COMMAND strip --remove-section=.comment --remove-section=.note ${programs}
    COMMAND_ERROR_IS_FATAL ANY)
file(GLOB pages "${tree}/share/man/man1/*.1")
execute_process(
    COMMAND gzip -9n ${pages} "${documents}/changelog.Debian" "${documents}/changelog"
    COMMAND_ERROR_IS_FATAL ANY)
# The folders have come with whatever mode the builder's umask left.
execute_process(
    COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" -mindepth 1 -type d -exec chmod 755 {} +
    COMMAND_ERROR_IS_FATAL ANY)

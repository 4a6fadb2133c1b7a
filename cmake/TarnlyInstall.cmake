# What `cmake --install` puts where.
include(GNUInstallDirs)

set(TARNLY_PROGRAMS tarnly tarnlyd tarnly-client tarnly-navdb tarnly-sim tarnly-track)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)

install(TARGETS ${TARNLY_PROGRAMS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(program IN LISTS TARNLY_PROGRAMS)
    install(FILES ${packaging}/man/${program}.1 DESTINATION share/man/man1)
    install(FILES ${packaging}/completions/bash/${program} DESTINATION share/bash-completion/completions)
    install(FILES ${packaging}/completions/fish/${program}.fish DESTINATION share/fish/vendor_completions.d)
endforeach()
install(DIRECTORY ${packaging}/icons/hicolor DESTINATION share/icons)
install(FILES ${packaging}/desktop/tarnly.desktop DESTINATION share/applications)
install(FILES ${packaging}/desktop/org.example.tarnly.metainfo.xml DESTINATION share/metainfo)
install(FILES ${packaging}/firewall/firewalld.xml DESTINATION lib/firewalld/services RENAME tarnly.xml)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION share/doc/tarnly)

# The rest depends on the prefix, which may be another one by the time of installing.
install(CODE "
    set(packaging \"${packaging}\")
    set(generated \"${PROJECT_BINARY_DIR}/packaging\")
    set(bindir \"${CMAKE_INSTALL_BINDIR}\")")
install(SCRIPT ${packaging}/install-for-prefix.cmake)

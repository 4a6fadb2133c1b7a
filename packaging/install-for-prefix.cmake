# Part of installing: what names the prefix, or lies elsewhere with a prefix of the system's own.
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE)
get_filename_component(TARNLY_BINDIR "${bindir}" ABSOLUTE BASE_DIR "${prefix}")

if(prefix STREQUAL "/usr")
    set(configuration /etc)
    set(zshFunctions share/zsh/vendor-completions)
else()
    set(configuration "${prefix}/etc")
    set(zshFunctions share/zsh/site-functions)
endif()

configure_file("${packaging}/systemd/tarnlyd.service.in" "${generated}/tarnlyd.service" @ONLY)
file(INSTALL "${generated}/tarnlyd.service" DESTINATION "${prefix}/lib/systemd/user")
file(INSTALL "${packaging}/completions/zsh/" DESTINATION "${prefix}/${zshFunctions}")
file(INSTALL "${packaging}/firewall/ufw" DESTINATION "${configuration}/ufw/applications.d" RENAME tarnly)

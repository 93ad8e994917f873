# What a package has besides programs and libraries, and the Debian package itself: Packaging/build-deb.

install(FILES ${PROJECT_SOURCE_DIR}/Packaging/PPD/Orvan-4500.ppd DESTINATION ${CMAKE_INSTALL_DATADIR}/ppd/Orvan)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/orvan-print.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/Completions/orvan
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/Completions/_orvan
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orvan-paper-options OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/Debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orvan-paper-options)

find_program(GZIP gzip REQUIRED)
configure_file(${PROJECT_SOURCE_DIR}/Packaging/Debian/changelog.in ${PROJECT_BINARY_DIR}/Debian/changelog @ONLY)
# Compressed text, made new with the build.
function(orvan_install_compressed source destination)
    cmake_path(GET source FILENAME name)
    set(compressed ${PROJECT_BINARY_DIR}/Compressed/${name}.gz)
    add_custom_command(OUTPUT ${compressed} DEPENDS ${source} VERBATIM COMMAND ${GZIP} -9nc ${source} > ${compressed})
    add_custom_target(${name}.gz ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${destination})
endfunction()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/Compressed)
orvan_install_compressed(${PROJECT_SOURCE_DIR}/Documentation/man/orvan.1 ${CMAKE_INSTALL_MANDIR}/man1)
orvan_install_compressed(${PROJECT_SOURCE_DIR}/Documentation/man/orvan-print.1 ${CMAKE_INSTALL_MANDIR}/man1)
orvan_install_compressed(${PROJECT_SOURCE_DIR}/Documentation/man/commandtoorvan.8 ${CMAKE_INSTALL_MANDIR}/man8)
orvan_install_compressed(${PROJECT_BINARY_DIR}/Debian/changelog ${CMAKE_INSTALL_DATADIR}/doc/orvan-paper-options)

# Not enabled: "systemctl enable --now orvan-metrics.timer".
configure_file(${PROJECT_SOURCE_DIR}/Packaging/Monitoring/orvan-metrics.service.in
    ${PROJECT_BINARY_DIR}/Monitoring/orvan-metrics.service @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Monitoring/orvan-metrics.service
    ${PROJECT_SOURCE_DIR}/Packaging/Monitoring/orvan-metrics.timer DESTINATION lib/systemd/system)

# Not enabled: "systemctl enable --now orvan-publish-papers@QUEUE.timer".
configure_file(${PROJECT_SOURCE_DIR}/Packaging/Publishing/orvan-publish-papers@.service.in
    ${PROJECT_BINARY_DIR}/Publishing/orvan-publish-papers@.service @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Publishing/orvan-publish-papers@.service
    ${PROJECT_SOURCE_DIR}/Packaging/Publishing/orvan-publish-papers@.timer DESTINATION lib/systemd/system)

# The switch for every session of the machine: in the package, but not for "cmake --install" into some folder.
configure_file(${PROJECT_SOURCE_DIR}/Packaging/Session/90orvan-paper-options.in
    ${PROJECT_BINARY_DIR}/Session/90orvan-paper-options @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Session/90orvan-paper-options
    DESTINATION /etc/X11/Xsession.d COMPONENT session EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/Session/90-orvan-paper-options.conf
    DESTINATION lib/environment.d COMPONENT session EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_SOURCE_DIR}/Packaging/Session/xdg-desktop-portal-gtk.conf
    DESTINATION lib/systemd/user/xdg-desktop-portal-gtk.service.d
    RENAME orvan-paper-options.conf COMPONENT session EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS
    ${PROJECT_BINARY_DIR} ${PROJECT_NAME} ALL /
    ${PROJECT_BINARY_DIR} ${PROJECT_NAME} session /)
set(CPACK_SET_DESTDIR ON) # for the files in /etc
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_PACKAGE_NAME orvan-paper-options)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Orvan maintainers <maintainers@orvan.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "paper options of Orvan printers in the print dialog")
set(CPACK_PACKAGE_DESCRIPTION
"Adds a tab to the print dialog of GTK 3 and GTK 4 applications, and of sandboxed
ones, where a person picks the paper of an Orvan printer by the names that the
printer was given, separator pages, and what happens when a tray has other
paper.
.
Also has a command that shows the same on a terminal, a print dialog for files
of applications without one, the printers' PPD files, and their command filter,
which asks a printer for its papers, trays and supplies.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The table of protocols, for echo requests; names of discovered printers, for the C library.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "cups, libnss-mdns, netbase")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/Packaging/Debian/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

# What is installed: the wizard, from where it is copied into a program folder, and the publisher as a component of its
# own. CPack makes a Debian package of each; the build must have been made before.
include(GNUInstallDirs)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(TARGETS KlnUpdt DESTINATION lib/klnupdt COMPONENT wizard)
install(FILES sample/help/KlnUpdt.chm DESTINATION lib/klnupdt COMPONENT wizard)
install(FILES sdk/KlwUpdt.def sdk/KlwUpdt.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/klnupdt COMPONENT wizard)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/klnupdt RENAME copyright COMPONENT wizard)

install(TARGETS klnpub DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT publisher EXCLUDE_FROM_ALL)
install(FILES publisher/klnpub.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT publisher EXCLUDE_FROM_ALL)
install(FILES docs/many-machines.md sample/mirror/nginx.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/klnpub
        COMPONENT publisher EXCLUDE_FROM_ALL)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/klnpub RENAME copyright COMPONENT publisher
        EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL wizard publisher)
set(CPACK_PACKAGE_CONTACT "KlnUpdt maintainers <klnupdt@example.net>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
foreach(package WIZARD PUBLISHER) # which is loaded late, so nobody finds it
  set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS libcurl4)
endforeach()
set(CPACK_DEBIAN_WIZARD_PACKAGE_NAME klnupdt)
set(CPACK_DEBIAN_WIZARD_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_WIZARD_DESCRIPTION "Live-update wizard of the Korlan suite\n Its program and manual, to be copied into a program folder.")
set(CPACK_DEBIAN_PUBLISHER_PACKAGE_NAME klnpub)
set(CPACK_DEBIAN_PUBLISHER_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_PUBLISHER_DESCRIPTION "Publishes and checks updates of the Korlan suite\n Makes service packs, and finds what is wrong with a catalogue.")
include(CPack)

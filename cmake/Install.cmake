# Installing, and the Debian package.
#
# The installed tree keeps the build's layout under PREFIX/lib/autocli, so that every library
# is found by the same name relative to whoever loads it ($ORIGIN/../bin/libX.so, see
# CMakeLists.txt), from any prefix, with no search path:
#   PREFIX/lib/autocli/bin/      autocli, hostsim, libcpptools.so, libkelmctl.so, and the live
#                                host's module liblinuxhost.so
#   PREFIX/lib/autocli/plugins/  libnetwork.so
#   PREFIX/bin/autocli, hostsim  symbolic links to them (the loader takes $ORIGIN from the
#                                executable's real path)
#   PREFIX/share/...             completion scripts and manual pages
include(GNUInstallDirs)
include(${CMAKE_CURRENT_LIST_DIR}/Generated.cmake)

set(AUTOCLI_PRIVATE_DIRECTORY lib/autocli)
set(AUTOCLI_ZSH_COMPLETION_DIRECTORY ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions CACHE STRING
    "Where the zsh completion function is installed, under the prefix")

install(TARGETS autocli hostsim RUNTIME DESTINATION ${AUTOCLI_PRIVATE_DIRECTORY}/bin)
install(TARGETS cpptools kelmctl linuxhost LIBRARY DESTINATION ${AUTOCLI_PRIVATE_DIRECTORY}/bin)
install(TARGETS network LIBRARY DESTINATION ${AUTOCLI_PRIVATE_DIRECTORY}/plugins)

set(INSTALL_LINKS_DIRECTORY ${CMAKE_BINARY_DIR}/install-links)
file(MAKE_DIRECTORY ${INSTALL_LINKS_DIRECTORY})
foreach(program autocli hostsim)
    file(CREATE_LINK ../${AUTOCLI_PRIVATE_DIRECTORY}/bin/${program}
         ${INSTALL_LINKS_DIRECTORY}/${program} SYMBOLIC)
    install(FILES ${INSTALL_LINKS_DIRECTORY}/${program} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

install(FILES ${BASH_COMPLETION_FILE}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${ZSH_COMPLETION_FILE} DESTINATION ${AUTOCLI_ZSH_COMPLETION_DIRECTORY})
foreach(page IN LISTS COMPRESSED_MANUAL_PAGES)
    get_filename_component(section ${page} DIRECTORY)
    get_filename_component(section ${section} NAME)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section})
endforeach()

# `cpack -G DEB` in the build folder makes autocli_VERSION_ARCH.deb, installing into /usr.
set(CPACK_PACKAGE_NAME autocli)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "list and change a host's networking from the command line")
set(CPACK_PACKAGE_DESCRIPTION
    "autocli runs the commands of the network namespace on a host: physical NICs, virtual \
switches, port groups, interfaces, netstacks, routes, DNS, IPsec and the firewall. It works on a \
simulated host, kept by hostsim, or on this machine's own kernel.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "autocli developers <autocli@example.org>")
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
# Runtime dependencies from the binaries, by dpkg-shlibdeps. It warns that it cannot find the
# private libraries by their $ORIGIN names, and rightly leaves them out: they are the package's
# own.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The live host's module loads libpci, and the PCI database behind it, only when it first names
# a NIC on PCI, and libnftables only for the firewall: no binary names them, so they are said
# here.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libpci3, pci.ids, libnftables1")
include(CPack)

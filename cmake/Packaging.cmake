# cpack -G DEB in a release build: one package with both programs, its dependencies found by
# dpkg-shlibdeps from the binaries themselves.
set(CPACK_PACKAGE_NAME duomir)
set(CPACK_PACKAGE_VENDOR "The Duomir developers")
set(CPACK_PACKAGE_CONTACT "The Duomir developers <duomir@duomir.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keep pairs of directories in step")
set(CPACK_PACKAGE_DESCRIPTION
    "Duomir compares pairs of directories and copies the newer files in the chosen\n directions, with a preview of every change, a guard against mass deletion and\n deleted or replaced files kept in the Trash. duomir-cli does the same without\n a window, for cron and systemd timers.")
# The package preset installs under /usr, where the systemd units then name the programs.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://duomir.invalid/")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n")
include(CPack)

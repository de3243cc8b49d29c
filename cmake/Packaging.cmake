# The Debian package: `cpack -G DEB` in the build folder. Its library
# dependencies are computed from the binary; the fonts the program draws its
# screens and PDF reports with, and Qt's Japanese translations, are named
# here, since no binary links them.
set(CPACK_PACKAGE_NAME zenvora)
set(CPACK_PACKAGE_VENDOR "The Zenvora developers")
set(CPACK_PACKAGE_CONTACT "The Zenvora developers <developers@zenvora.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "household account book with a Japanese user interface")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Zenvora (家計簿) keeps asset accounts, records dated expenses, incomes and\n transfers between assets under a two-level category tree, and makes an\n annual report and an asset report on screen, as CSV and as PDF.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-noto-cjk, fonts-urw-base35, qt6-translations-l10n")
include(CPack)

# The Debian package: cpack in the build folder writes it. What it depends on is read off the
# programs and plug-ins (Debian: dpkg-dev, file).
install(FILES "${CMAKE_SOURCE_DIR}/LICENSE" DESTINATION share/doc/tessera RENAME copyright)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessera)
set(CPACK_PACKAGE_CONTACT "The Tessera developers <tessera@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
"Finds the layers of the retina in XML exports of Heidelberg devices, lets them be
corrected by hand, and measures thicknesses in the sectors of the ETDRS grid.
.
For research only. Not a medical device.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS fonts-dejavu-core)
include(CPack)

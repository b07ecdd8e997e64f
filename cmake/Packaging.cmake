# A .deb through CPack: cpack -G DEB in the build folder.
set(CPACK_PACKAGE_NAME glimpso)
set(CPACK_PACKAGE_VENDOR "tovarine")
set(CPACK_PACKAGE_CONTACT "glimpso maintainers <glimpso@tovarine.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The history loads libavformat when it first reads a video's length, and
# libheif is loaded when a HEIC is first written or read, so dpkg-shlibdeps,
# which sees only linked libraries, can't find them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libavformat59, libheif1")
# libtesseract is loaded at the first reading of text, with the English models.
string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libtesseract5, tesseract-ocr-eng")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# The session bus lets copies find each other; the fonts are the faces the
# annotation text styles resolve to (the desktop font stands in without them)
# and the emoji of the text box's picker; the shutter plays the sound theme's "camera-shutter".
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "dbus-user-session, fonts-noto-core, fonts-noto-mono, fonts-quicksand | fonts-comfortaa, fonts-noto-color-emoji, sound-theme-freedesktop")
include(CPack)

# `cpack -G DEB` in a Release build folder makes lexicorn_VERSION_ARCH.deb.
# Libraries the programs link are found by dpkg-shlibdeps; what is loaded at
# run time without being linked is named here.

set(CPACK_PACKAGE_NAME lexicorn)
set(CPACK_PACKAGE_VENDOR "Lexicorn")
set(CPACK_PACKAGE_CONTACT "Lexicorn developers <developers@lexicorn.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "PDF reader with an English-Chinese dictionary popup and Anki cards")
set(CPACK_PACKAGE_DESCRIPTION
  "Lexicorn is a reading companion for Chinese-speaking learners of English. Select a word in an English PDF "
  "and a popup shows its English-Chinese dictionary entries, the sentence it stands in and the sentence's "
  "translation; a tap on a sense makes a dictionary card, and cards go to Anki through AnkiConnect. "
  "It reads StarDict, MDict, ECDICT and WordNet dictionaries, and scanned pages through OCR. "
  "The package holds Lexicorn Reader and the lexicorn command-line tool.")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION "education")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://lexicorn.invalid")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The programs' own shared libraries, so that dpkg-shlibdeps reads them too.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_BINARY_DIR}/src/runtime;${CMAKE_BINARY_DIR}/src/foundation")
# Loaded at run time: the notebook's SQLite driver and the OCR's English data.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, tesseract-ocr-eng")
# Chinese and the cards' emoji drawn as they are meant; Wayland sessions.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk, fonts-noto-color-emoji, qt6-wayland")
set(CPACK_GENERATOR DEB)
include(CPack)

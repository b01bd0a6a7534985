# What `cmake --install` puts where (and so what the Debian package holds).
# Programs go to bin; the plug-in and the two libraries it shares with the
# reader and the tool go to a private library folder that the programs find
# through their RUNPATH; data goes to share/lexicorn.

install(TARGETS lexicorn-reader lexicorn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set_target_properties(lexicorn-reader lexicorn PROPERTIES INSTALL_RPATH "$ORIGIN/${LEXICORN_BIN_TO_PLUGINS}")

install(TARGETS lexicorn_plugin lexicorn_runtime lexicorn_foundation LIBRARY DESTINATION ${LEXICORN_INSTALL_PLUGINDIR})
set_target_properties(lexicorn_plugin lexicorn_runtime lexicorn_foundation PROPERTIES INSTALL_RPATH "$ORIGIN")

install(FILES ${LEXICORN_SAMPLE_DIR}/books/sample-book.pdf DESTINATION ${LEXICORN_INSTALL_DATADIR}/sample/books)
install(FILES ${LEXICORN_SAMPLE_DIR}/Dict/LDOCE5_html.json ${LEXICORN_SAMPLE_DIR}/Dict/collins.json
              ${LEXICORN_SAMPLE_DIR}/Dict/wordforms.json
        DESTINATION ${LEXICORN_INSTALL_DATADIR}/sample/Dict)

set(LEXICORN_INSTALL_ASSETS ${CMAKE_SOURCE_DIR}/data/install)
install(FILES ${LEXICORN_INSTALL_ASSETS}/lexicorn-reader.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${LEXICORN_INSTALL_ASSETS}/icons/lexicorn-reader.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(DIRECTORY ${LEXICORN_INSTALL_ASSETS}/icons/hicolor/ DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${LEXICORN_INSTALL_ASSETS}/lexicorn.1 ${LEXICORN_INSTALL_ASSETS}/lexicorn-reader.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

lexicorn_qt_test(lexicorn_translate_tests
  ${CMAKE_CURRENT_LIST_DIR}/translation_server.cpp
  ${CMAKE_CURRENT_LIST_DIR}/translation_replies_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ksw_translate_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/translate_cli_test.cpp
)
target_link_libraries(lexicorn_translate_tests PRIVATE lexicorn_translate)
# The command-line tests run the lexicorn program itself.
target_compile_definitions(lexicorn_translate_tests PRIVATE LEXICORN_CLI="$<TARGET_FILE:lexicorn>")
add_dependencies(lexicorn_translate_tests lexicorn)

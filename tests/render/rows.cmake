# The popup rows, the text styles and the markup utilities, and `lexicorn rows`.
lexicorn_qt_test(lexicorn_rows_tests
  ${CMAKE_CURRENT_LIST_DIR}/styled_pieces.cpp
  ${CMAKE_CURRENT_LIST_DIR}/styled_text_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/rows_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/markup_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/rows_cli_test.cpp
  # The stand-in translation services, for the translation line.
  ${CMAKE_CURRENT_LIST_DIR}/../services/translation_server.cpp
)
target_link_libraries(lexicorn_rows_tests PRIVATE lexicorn_render)
target_compile_definitions(lexicorn_rows_tests PRIVATE
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>"
  LEXICORN_SAMPLE_DIR="${LEXICORN_SAMPLE_DIR}")
add_dependencies(lexicorn_rows_tests lexicorn)

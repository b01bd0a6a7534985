# Anki fields and HTML, the dictionary note format, and `lexicorn card`.
lexicorn_qt_test(lexicorn_card_tests
  ${CMAKE_CURRENT_LIST_DIR}/card_fixtures.cpp
  ${CMAKE_CURRENT_LIST_DIR}/html_text_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/note_format_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anki_fields_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/card_make_with_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/card_round_trip_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/card_command_test.cpp
)
target_link_libraries(lexicorn_card_tests PRIVATE lexicorn_render)
target_compile_definitions(lexicorn_card_tests PRIVATE
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>"
  LEXICORN_SAMPLE_DIR="${LEXICORN_SAMPLE_DIR}")
add_dependencies(lexicorn_card_tests lexicorn)

# Card edit protection in the reader's notebook panel, with the plug-in loaded.
# Edited cards go to a real Anki collection (tests/render's and tests/sync's fixtures).
lexicorn_ui_test(lexicorn_card_protection_tests card_protection_test.cpp
  ${CMAKE_SOURCE_DIR}/tests/render/card_fixtures.cpp ${CMAKE_SOURCE_DIR}/tests/sync/sync_fixtures.cpp)
target_include_directories(lexicorn_card_protection_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests/render ${CMAKE_SOURCE_DIR}/tests/sync)
target_link_libraries(lexicorn_card_protection_tests PRIVATE lexicorn_ui_reader_session lexicorn_render lexicorn_card_sync)
target_compile_definitions(lexicorn_card_protection_tests PRIVATE LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>")
add_dependencies(lexicorn_card_protection_tests lexicorn_plugin)

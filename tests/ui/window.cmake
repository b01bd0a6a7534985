# Tests of the whole reader, with the plug-in and without it.
# Cards made in the window go to a real Anki collection (tests/render's fixtures).
lexicorn_ui_test(lexicorn_reader_window_tests reader_window_test.cpp ${CMAKE_SOURCE_DIR}/tests/render/card_fixtures.cpp)
target_include_directories(lexicorn_reader_window_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests/render)
target_link_libraries(lexicorn_reader_window_tests PRIVATE lexicorn_ui_reader_session lexicorn_render)
target_compile_definitions(lexicorn_reader_window_tests PRIVATE
  LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>"
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>")
add_dependencies(lexicorn_reader_window_tests lexicorn_plugin lexicorn)

# The study board's Anki button over a whole notebook, and middle-button panning.
lexicorn_ui_test(lexicorn_batch_tests batch_test.cpp
  ${CMAKE_SOURCE_DIR}/tests/render/card_fixtures.cpp ${CMAKE_SOURCE_DIR}/tests/sync/sync_fixtures.cpp)
target_include_directories(lexicorn_batch_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests/render ${CMAKE_SOURCE_DIR}/tests/sync)
target_link_libraries(lexicorn_batch_tests PRIVATE lexicorn_ui_reader_session lexicorn_card_sync)
target_compile_definitions(lexicorn_batch_tests PRIVATE LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>")
add_dependencies(lexicorn_batch_tests lexicorn_plugin)

# Tests of the whole reader, with the plug-in and without it.
# Cards made in the window go to a real Anki collection (tests/render's fixtures).
lexicorn_ui_test(lexicorn_reader_window_tests reader_window_test.cpp ${CMAKE_SOURCE_DIR}/tests/render/card_fixtures.cpp)
target_include_directories(lexicorn_reader_window_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests/render)
target_link_libraries(lexicorn_reader_window_tests PRIVATE lexicorn_render)
target_compile_definitions(lexicorn_reader_window_tests PRIVATE
  LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>"
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>")
add_dependencies(lexicorn_reader_window_tests lexicorn_plugin lexicorn)

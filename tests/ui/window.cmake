# Tests of the whole reader, with the plug-in and without it.
lexicorn_ui_test(lexicorn_reader_window_tests reader_window_test.cpp)
target_compile_definitions(lexicorn_reader_window_tests PRIVATE
  LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>"
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>")
add_dependencies(lexicorn_reader_window_tests lexicorn_plugin lexicorn)

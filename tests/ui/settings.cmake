# The study board's dictionary settings menu and the Anki settings panel, with
# the plug-in loaded; the panel talks to a real Anki collection (tests/render's
# fixtures).
lexicorn_ui_test(lexicorn_settings_tests settings_test.cpp ${CMAKE_SOURCE_DIR}/tests/render/card_fixtures.cpp)
target_include_directories(lexicorn_settings_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests/render)
target_link_libraries(lexicorn_settings_tests PRIVATE lexicorn_ui_reader_session lexicorn_render)
target_compile_definitions(lexicorn_settings_tests PRIVATE LEXICORN_PLUGIN_PATH="$<TARGET_FILE:lexicorn_plugin>")
add_dependencies(lexicorn_settings_tests lexicorn_plugin)

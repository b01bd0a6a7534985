lexicorn_qt_test(lexicorn_sound_tests
  ${CMAKE_CURRENT_LIST_DIR}/sound_test_support.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ksw_play_sound_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/voice_endpoint_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/offline_voice_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/say_command_test.cpp
)
target_link_libraries(lexicorn_sound_tests PRIVATE lexicorn_sound)
target_compile_definitions(lexicorn_sound_tests PRIVATE
  LEXICORN_CLI="$<TARGET_FILE:lexicorn>"
  LEXICORN_VOICE_SERVER="${CMAKE_CURRENT_LIST_DIR}/voice_server.py")
add_dependencies(lexicorn_sound_tests lexicorn)

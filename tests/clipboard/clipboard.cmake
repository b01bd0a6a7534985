lexicorn_qt_test(lexicorn_clipboard_tests
  ${CMAKE_CURRENT_LIST_DIR}/clipboard_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ksw_hdebug_test.cpp
)
target_link_libraries(lexicorn_clipboard_tests PRIVATE lexicorn_clipboard)

# The main window (the study board) and the reader program.
target_sources(lexicorn_host_ui PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/reader_window.cpp
  ${CMAKE_CURRENT_LIST_DIR}/window_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/studyboard_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/command_menu.cpp
  ${CMAKE_CURRENT_LIST_DIR}/outline_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_tour.cpp
  ${CMAKE_CURRENT_LIST_DIR}/event_monitor.cpp
  ${CMAKE_CURRENT_LIST_DIR}/task_progress.cpp
)

add_executable(lexicorn-reader ${CMAKE_CURRENT_LIST_DIR}/reader_main.cpp)
target_link_libraries(lexicorn-reader PRIVATE lexicorn_host_ui)
add_dependencies(lexicorn-reader lexicorn_plugin)
lexicorn_strict(lexicorn-reader)

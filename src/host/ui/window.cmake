# The main window (the study board) and the reader program.
target_sources(lexicorn_host_ui PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/reader_window.cpp
  ${CMAKE_CURRENT_LIST_DIR}/book_gestures.cpp
  ${CMAKE_CURRENT_LIST_DIR}/window_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/studyboard_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/command_menu.cpp
  ${CMAKE_CURRENT_LIST_DIR}/outline_methods.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_tour.cpp
  ${CMAKE_CURRENT_LIST_DIR}/event_monitor.cpp
  ${CMAKE_CURRENT_LIST_DIR}/task_progress.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_dialog.cpp
  ${CMAKE_CURRENT_LIST_DIR}/first_start.cpp
)
# "Import dictionary…" runs the command-line tool built beside the reader.
target_compile_definitions(lexicorn_host_ui PRIVATE LEXICORN_BUILT_CLI="$<TARGET_FILE:lexicorn>")

add_executable(lexicorn-reader ${CMAKE_CURRENT_LIST_DIR}/reader_main.cpp)
target_link_libraries(lexicorn-reader PRIVATE lexicorn_host_ui)
add_dependencies(lexicorn-reader lexicorn_plugin lexicorn)
lexicorn_strict(lexicorn-reader)

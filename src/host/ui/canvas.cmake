# The book canvas: Poppler pages rendered off the main thread.
target_sources(lexicorn_host_ui PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/page_canvas.cpp
  ${CMAKE_CURRENT_LIST_DIR}/canvas_zoom.cpp
  ${CMAKE_CURRENT_LIST_DIR}/canvas_rendering.cpp
  ${CMAKE_CURRENT_LIST_DIR}/canvas_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_layout.cpp
)

# Styled text alone: the reader's windows show it without the rest of rendering.
add_library(lexicorn_styled_text STATIC ${CMAKE_CURRENT_LIST_DIR}/styled_text.cpp)
target_link_libraries(lexicorn_styled_text PUBLIC lexicorn_foundation)
lexicorn_strict(lexicorn_styled_text)
target_link_libraries(lexicorn_render PUBLIC lexicorn_styled_text)

target_sources(lexicorn_render PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ksw_text_attr.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dict_data_rows.cpp
  ${CMAKE_CURRENT_LIST_DIR}/markup.cpp
)

target_sources(lexicorn_render PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/styled_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ksw_text_attr.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dict_data_rows.cpp
  ${CMAKE_CURRENT_LIST_DIR}/markup.cpp
)

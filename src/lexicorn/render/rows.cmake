target_sources(lexicorn_render PRIVATE ${CMAKE_CURRENT_LIST_DIR}/styled_text_stub.cpp)

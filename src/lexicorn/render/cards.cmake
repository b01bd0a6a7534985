target_sources(lexicorn_render PRIVATE ${CMAKE_CURRENT_LIST_DIR}/cards_stub.cpp)

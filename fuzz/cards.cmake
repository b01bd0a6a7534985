# libFuzzer target for the dictionary note reader and the card HTML helpers.
add_executable(fuzz_note_parser ${CMAKE_CURRENT_LIST_DIR}/fuzz_note_parser.cpp)
target_link_libraries(fuzz_note_parser PRIVATE lexicorn_render)
target_link_options(fuzz_note_parser PRIVATE -fsanitize=fuzzer)
lexicorn_strict(fuzz_note_parser)

# libFuzzer targets for the translation services' reply readers.
foreach(target fuzz_google_reply fuzz_youdao_reply fuzz_eudic_reply fuzz_deepl_reply)
  add_executable(${target} ${CMAKE_CURRENT_LIST_DIR}/${target}.cpp)
  target_link_libraries(${target} PRIVATE lexicorn_translate)
  target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  lexicorn_strict(${target})
endforeach()

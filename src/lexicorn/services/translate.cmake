# Sentence translation through web services (KSWTranslate).
add_library(lexicorn_translate STATIC
  ${CMAKE_CURRENT_LIST_DIR}/ksw_translate.cpp
  ${CMAKE_CURRENT_LIST_DIR}/translation_replies.cpp
  ${CMAKE_CURRENT_LIST_DIR}/translation_hosts.cpp
  ${CMAKE_CURRENT_LIST_DIR}/deepl_request.cpp
)
target_link_libraries(lexicorn_translate PUBLIC lexicorn_foundation)
lexicorn_strict(lexicorn_translate)

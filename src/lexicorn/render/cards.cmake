# Anki fields and HTML, the dictionary note format and its writer.
target_sources(lexicorn_render PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/card_error.cpp
  ${CMAKE_CURRENT_LIST_DIR}/html_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anki_fields.cpp
  ${CMAKE_CURRENT_LIST_DIR}/card_lookup.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dict_note.cpp
  ${CMAKE_CURRENT_LIST_DIR}/note_format.cpp
  ${CMAKE_CURRENT_LIST_DIR}/note_writer.cpp
)

# The notebook panel, heads-up overlay, alerts and the web research pane.
target_sources(lexicorn_host_ui PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/note_card_view.cpp
  ${CMAKE_CURRENT_LIST_DIR}/note_title_editor.cpp
  ${CMAKE_CURRENT_LIST_DIR}/notebook_panel.cpp
  ${CMAKE_CURRENT_LIST_DIR}/edit_bar.cpp
  ${CMAKE_CURRENT_LIST_DIR}/hud_overlay.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dialog_alerts.cpp
  ${CMAKE_CURRENT_LIST_DIR}/research_pane.cpp)

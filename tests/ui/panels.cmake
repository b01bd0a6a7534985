# Tests of the notebook panel and the small panes.
lexicorn_ui_test(lexicorn_kit_tests view_kit_test.cpp notebook_panel_test.cpp)
set_target_properties(lexicorn_kit_tests PROPERTIES AUTOMOC ON)

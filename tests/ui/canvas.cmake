# Tests of the book canvas.
lexicorn_ui_test(lexicorn_canvas_tests page_canvas_test.cpp)

# Tests of the book canvas.

# The book canvas: Poppler pages rendered off the main thread.

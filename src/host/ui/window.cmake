# The main window (the study board) and the reader program.

# Tests of the whole reader with the plug-in.

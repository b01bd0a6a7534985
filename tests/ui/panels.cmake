# Tests of the notebook panel and the small panes.

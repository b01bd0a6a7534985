# The notebook panel, heads-up overlay, alerts and the web research pane.

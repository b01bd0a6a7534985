// Replaced by the row sources.

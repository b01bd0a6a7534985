// Replaced by the card sources.

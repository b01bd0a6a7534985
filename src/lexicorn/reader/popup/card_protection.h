#pragma once

// Edit protection of dictionary cards in the host's note editors. While the
// application delegate's shieldDictCard is on, a dictionary note (isDictNote)
// is edited with its "<b>" tags shown as bold runs and stored back as tags,
// its card rows are drawn compactly, an edit that would stop the card from
// reading back is refused with an alert, and an edited card is sent to Anki
// again when the reader adds cards to Anki. Any note can have a selection
// wrapped in "`", "*" or a "[...](#...)" link by typing that character over
// it in a title editor.

namespace lexicorn {

// Replaces the host's methods of "NoteTitleEditView", "NoteTitleBackView",
// "NoteCardView" and the "MbBookNote" comment setter
// setNotesAndUpdateMediaList:clear:; each replacement calls the host's own
// implementation whenever its condition does not hold. Classes and methods
// the host lacks are skipped. Call after installPopupMethods, which gives
// the application delegate.
void installCardProtection();

}  // namespace lexicorn

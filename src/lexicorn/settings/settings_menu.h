#pragma once

// The study board's dictionary settings menu. When the board's view loads,
// the `dictSetting` button (image "dictionary") goes into the host's clip
// bar; it sends settingDict:, which opens a popover titled "特异功能" whose
// rows switch the reader's dictionary features, choose the dictionary, the
// translation engine and the width of new cards, and open the Anki panel.
// Each time the board is shown, the reader gets the stored card width.

namespace lexicorn {

// Replaces the board's viewDidLoad and viewWillAppear:.
void installSettingsMenuHooks();

// Adds settingDict:, the settings' actions and the Anki panel's actions to
// the study board class, when the host has it.
void installSettingsMenu();

}  // namespace lexicorn

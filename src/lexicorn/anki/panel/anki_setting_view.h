#pragma once

// The Anki settings panel, KSWAnkiconnectSettingView: the AnkiConnect
// address and its connection test, and the deck, note type and fields that
// cards go to, each stored at once under its "ANKISET_" key. Lists come from
// Anki; every request runs on a background queue, so an absent Anki never
// stops the reader, and the panel shows a request under way until its
// answer arrives.

#include "runtime/runtime.h"

namespace lexicorn {

inline constexpr const char* ankiSettingViewClassName = "KSWAnkiconnectSettingView";

// Registers the panel's class under the host's "UIView": initWithFrame:
// (QRectF) builds it and returns it; argSelect: (the pressed setting
// button); it is its own selection table's data source and delegate.
void registerAnkiSettingViewClass(runtime::Runtime& runtime);

// Registers the panel's class and adds ankiconnectSetting:, connectToAnki:
// and closeAnkiconnectSettingPanel: to the study board class. Does nothing
// for a host without the view kit.
void installAnkiSettingPanel(runtime::Runtime& runtime, runtime::Class& board);

}  // namespace lexicorn

#pragma once

// The popup's methods of the book view controller, gathered before they are
// installed (dict_popup.cpp): one group per file.

#include "foundation/index_path.h"

#include "runtime/runtime.h"

#include <utility>
#include <vector>

namespace lexicorn::popup {

struct PopupMethods {
    std::vector<std::pair<const char*, runtime::Imp>> list;
    void add(const char* selector, runtime::Imp imp) { list.emplace_back(selector, std::move(imp)); }
};

// popDict:, updateDict:, openHotWord: (popup_lookup.cpp).
void registerLookupMethods(PopupMethods& methods);
// The double click's sentence and section selection, the tap gestures and
// the note's card width (popup_selection.cpp).
void registerSentenceSelection(PopupMethods& methods);
// A tap on a popup row (popup_card.cpp).
void tapOnRow(runtime::Object& controller, runtime::Object& table, IndexPath path);

}  // namespace lexicorn::popup

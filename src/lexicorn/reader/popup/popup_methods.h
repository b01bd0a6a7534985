#pragma once

// The popup's methods of the book view controller, one group per file,
// installed by installPopupMethods (dict_popup.cpp).

#include "foundation/index_path.h"

#include "runtime/hook.h"

#include <utility>

namespace lexicorn::popup {

inline constexpr const char* controllerClass = "BookViewController";

// Puts a popup method on the controller through its hook: the host's own is
// replaced and kept in the hook, a method the host lacks is added.
template <class Signature, class Body>
void install(runtime::Hook<Signature>& hook, Body body)
{
    hook.install(std::move(body), runtime::WhenAbsent::Add);
}

// The same for a method that never calls the host's own.
template <class Signature, class Body>
void install(const char* selector, Body body)
{
    runtime::Hook<Signature> hook(controllerClass, selector);
    install(hook, std::move(body));
}

// popDict:, updateDict:, openHotWord: (popup_lookup.cpp).
void installLookupMethods();
// The double click's sentence and section selection, the tap gestures and
// the note's card width (popup_selection.cpp).
void installSentenceSelection();
// A tap on a popup row (popup_card.cpp).
void tapOnRow(runtime::Object& controller, runtime::Object& table, IndexPath path);

}  // namespace lexicorn::popup

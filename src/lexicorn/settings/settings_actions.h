#pragma once

// The study board's dictionary settings: the actions its menu's rows send,
// and what the rows read. The reader's switches live on the reader object;
// the card width, translation engine, dictionary and middle button are
// stored in the user defaults.

#include "runtime/runtime.h"

#include "lexicorn/settings/preference_keys.h"

#include <QString>

#include <memory>

namespace lexicorn::settings {

using ObjectRef = std::shared_ptr<runtime::Object>;

inline const QString cachingMessage = QStringLiteral("字典缓存中，请稍后再试！");

// The width of new cards when none is stored.
inline constexpr double defaultCardWidth = 700;

// The book view the board shows (detailController.fBookViewController), or
// null when the host has none.
ObjectRef readerOf(runtime::Object& board);
// The host's application delegate, once launched.
ObjectRef delegateObject();

// The card-width row: segment i gives 700 + 200·i; a width w shows segment
// (w − 700) / 200, divided as integers. The labels from "2000" on do not
// match their widths, on purpose.
double cardWidthForIndex(int index);
int cardWidthIndex(double width);
// The stored width, or 700.
double storedCardWidth();

// Adds enableDict:, shieldDictCard:, autoAddToAnki:, selectingCopy:,
// asDictView:, autoAudio:, asSentenceCard:, asTranslationCard:, selectDict:,
// selectTE:, selectCardWidth: and mouse3Control: to the study board class.
// Switch actions take their sender (ObjectRef) and act only when it is the
// host's "ABFlatSwitch"; segmented ones take the chosen index (int).
void addSettingActions(runtime::Runtime& runtime, runtime::Class& board);

}  // namespace lexicorn::settings

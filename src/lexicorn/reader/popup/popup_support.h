#pragma once

// What the popup's parts share: the host objects they talk to, the popup
// table's state and the sentence under a point.

#include "foundation/index_path.h"

#include "lexicorn/dictionary/records.h"
#include "lexicorn/reader/sentences/char_record.h"
#include "lexicorn/render/dict_data_rows.h"

#include "runtime/hosting.h"

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace lexicorn::popup {

using ObjectRef = std::shared_ptr<runtime::Object>;

inline constexpr const char* tableClassName = "HookDictTableView";
inline constexpr const char* cellClassName = "HookDictTableCell";
inline constexpr const char* cellIdentifier = "HookDictTableCell";

// The popup's colours: the table's grey, the correcting sentence's red.
inline const QColor popupGrey = QColor::fromRgbF(55 / 255.0, 55 / 255.0, 55 / 255.0, 1.0);

// The host's application delegate, its study board and the main view of each.
ObjectRef applicationDelegate();
void setApplicationDelegateSource(std::function<ObjectRef()> source);
ObjectRef studyboard();

// A heads-up message through the application delegate.
void showHUD(const QString& text, double seconds);

// The reader that serves as dictionary view, held weakly: word cards go there.
std::weak_ptr<runtime::Object>& dictionaryView();

// Boolean properties added to the book view controller (absent reads NO).
bool flag(runtime::Object& controller, const char* name);
void setFlag(runtime::Object& controller, const char* name, bool value);

// The popup table of a controller (the first subview of its container), or null.
ObjectRef popupContainer(runtime::Object& controller);
ObjectRef popupTable(runtime::Object& controller);
bool isPopupTable(const ObjectRef& table);

// The table's sections of rows and the lookup they render.
StyledSections textsOf(runtime::Object& table);
void setTexts(runtime::Object& table, StyledSections texts);
DictDataPtr dictDataOf(runtime::Object& table);

// The popup's frame is reckoned in window coordinates, while its container's
// frame is in its superview's, which need not start at the window's corner.
QRectF frameInWindow(runtime::Object& container);
void setFrameInWindow(runtime::Object& container, const QRectF& frame);

// The midpoint of the selection's start and end points, in page coordinates.
QPointF selectionAnchor(runtime::Object& controller);
// The anchor in window coordinates, through the current page's image view.
QPointF anchorInWindow(runtime::Object& controller, const QPointF& anchor);

// The sentences (or sections) of a page of the controller's book.
Sentences pageSentences(runtime::Object& controller, int pageNo, bool sections);
// The page the controller's selection is on. The quote, the highlight and the
// card all come from it, even when the reader has scrolled on since.
int selectionPage(runtime::Object& controller);
// The first sentence having a character whose rectangle holds the point.
std::optional<Sentence> sentenceAt(const Sentences& sentences, const QPointF& point);
// The text of a sentence: each character, and a blank after each line end.
QString sentenceText(const Sentence& sentence);
// One rectangle per line of a sentence: characters accumulate until a line end.
std::vector<QRectF> sentenceLineRects(const Sentence& sentence);
// Selects the running text from the first line rectangle to the last one, on the page.
void selectLines(runtime::Object& controller, const std::vector<QRectF>& lines, int pageNo);

}  // namespace lexicorn::popup

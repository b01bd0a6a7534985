#pragma once

// An MDict dictionary's style sheet: numbered pairs of opening and closing
// HTML that entries call up with marks like `1` instead of writing the
// markup out each time. Expanding the marks before an entry is taken apart
// into senses keeps them out of the popup and the cards.

#include <QHash>
#include <QString>

#include <utility>

namespace lexicorn::dictimport::mdict {

class StyleSheet {
public:
    StyleSheet() = default;

    // The header's StyleSheet attribute: lines of a number, the opening HTML
    // and the closing HTML, again and again. Blank or stray lines where a
    // number should be are skipped; a missing closing line is empty.
    static StyleSheet parse(const QString& text);

    bool isEmpty() const { return styles_.isEmpty(); }

    // Every `N` becomes style N's opening HTML, and the text from there to
    // the next mark (or the end) is closed by style N's closing HTML. A mark
    // whose number has no style is dropped. With an empty sheet the entry
    // is returned as it is.
    QString expand(const QString& entry) const;

private:
    QHash<quint32, std::pair<QString, QString>> styles_;
};

}  // namespace lexicorn::dictimport::mdict

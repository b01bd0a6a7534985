#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

namespace lexicorn::host::ui {

class ReaderWindow;

// A short scripted tour for machines without a display: opens the book,
// selects a word with mouse events, shows the popup, taps its first sense
// and shows the new card, saving a screenshot of each step in folder.
// Prints each screenshot's path; returns the process's exit status.
int runReaderTour(ReaderWindow& window, const QString& book, const QString& folder);

// Presses the left button at from, drags to to and releases, in the
// widget's coordinates, as a user's mouse would; beforeRelease runs just
// before the button goes up.
void dragWithMouse(QWidget& widget, const QPointF& from, const QPointF& to, const std::function<void()>& beforeRelease = {});
void clickWithMouse(QWidget& widget, const QPointF& at);

// The words of at least minLetters letters on the page (from 1), in reading
// order, with their page rectangles.
struct PageWord {
    QString text;
    QRectF area;
};
std::vector<PageWord> wordsOnPage(const QString& pdfPath, int pageNo, int minLetters);

}  // namespace lexicorn::host::ui

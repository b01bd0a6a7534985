#pragma once

// The pane beside the book where a sentence is sent to be translated: the
// sentence, a button that opens the translation site in the browser, and a
// hint that a copied translation shows up in the dictionary popup.

#include <QString>
#include <QUrl>
#include <QWidget>

class QLabel;
class QPushButton;

namespace lexicorn::host::ui {

class ResearchPane : public QWidget {
    Q_OBJECT
public:
    static const QString translateButtonText;
    static const QString copyHint;

    explicit ResearchPane(QWidget* parent = nullptr);

    void showSentence(const QString& sentence);
    QString sentence() const { return sentence_; }
    // The translation page for a sentence, English to simplified Chinese.
    static QUrl translationUrl(const QString& sentence);

signals:
    void closed();

private:
    QString sentence_;
    QLabel* sentenceLabel_;
    QPushButton* translateButton_;
};

}  // namespace lexicorn::host::ui

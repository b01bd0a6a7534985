#include "host/ui/research_pane.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace lexicorn::host::ui {

const QString ResearchPane::translateButtonText = QStringLiteral("在浏览器中翻译");
const QString ResearchPane::copyHint = QStringLiteral("复制译文后，它会出现在词典弹窗中。");

ResearchPane::ResearchPane(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    sentenceLabel_ = new QLabel(this);
    sentenceLabel_->setObjectName(QStringLiteral("sentence"));
    sentenceLabel_->setWordWrap(true);
    sentenceLabel_->setTextFormat(Qt::PlainText);
    sentenceLabel_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* close = new QToolButton(this);
    close->setObjectName(QStringLiteral("close"));
    close->setText(QStringLiteral("×"));
    close->setToolTip(QStringLiteral("Close"));
    top->addWidget(sentenceLabel_, 1);
    top->addWidget(close, 0, Qt::AlignTop);
    layout->addLayout(top);
    translateButton_ = new QPushButton(translateButtonText, this);
    translateButton_->setObjectName(QStringLiteral("translate"));
    layout->addWidget(translateButton_, 0, Qt::AlignLeft);
    auto* hint = new QLabel(copyHint, this);
    hint->setObjectName(QStringLiteral("hint"));
    hint->setWordWrap(true);
    hint->setStyleSheet(QStringLiteral("color: #8a8f98;"));
    layout->addWidget(hint);
    layout->addStretch(1);

    connect(translateButton_, &QPushButton::clicked, this, [this] {
        if (!sentence_.isEmpty())
            QDesktopServices::openUrl(translationUrl(sentence_));
    });
    connect(close, &QToolButton::clicked, this, [this] {
        hide();
        emit closed();
    });
}

void ResearchPane::showSentence(const QString& sentence)
{
    sentence_ = sentence;
    sentenceLabel_->setText(sentence);
    show();
}

QUrl ResearchPane::translationUrl(const QString& sentence)
{
    return QUrl::fromEncoded(QByteArrayLiteral("https://translate.google.com/?sl=en&tl=zh-CN&op=translate&text=")
                             + QUrl::toPercentEncoding(sentence));
}

}  // namespace lexicorn::host::ui

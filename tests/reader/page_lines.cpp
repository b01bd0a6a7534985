#include "page_lines.h"

#include <QStringList>

namespace lexicorn::testing {

CharLine makeLine(const LineSpec& spec)
{
    CharLine line;
    const double width = (spec.right - lineLeft) / double(spec.text.size());
    for (qsizetype i = 0; i < spec.text.size(); ++i)
        line.push_back(CharRecord{char16_t(spec.text[i].unicode()),
                                  QRectF(lineLeft + double(i) * width, spec.top, width, spec.height)});
    return line;
}

PageLines makePage(std::initializer_list<LineSpec> specs)
{
    PageLines page;
    for (const LineSpec& spec : specs)
        page.push_back(makeLine(spec));
    return page;
}

PageLines regularPage(std::initializer_list<QString> texts)
{
    PageLines page;
    double top = 100.0;
    for (const QString& text : texts) {
        page.push_back(makeLine({text, top}));
        top += linePitch;
    }
    return page;
}

QString textOf(const Sentence& sentence)
{
    QString text;
    for (const CharRecord& record : sentence)
        text.append(QChar(record.ch));
    return text;
}

QStringList textsOf(const Sentences& sentences)
{
    QStringList texts;
    for (const Sentence& sentence : sentences)
        texts.append(textOf(sentence));
    return texts;
}

}  // namespace lexicorn::testing

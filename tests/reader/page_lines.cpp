#include "page_lines.h"

#include <QStringList>

namespace lexicorn::testing {

CharLine makeLine(const PlannedLine& plan)
{
    CharLine line;
    const double width = (plan.right - lineLeft) / double(plan.text.size());
    for (qsizetype i = 0; i < plan.text.size(); ++i)
        line.push_back(CharRecord{char16_t(plan.text[i].unicode()),
                                  QRectF(lineLeft + double(i) * width, plan.top, width, plan.height)});
    return line;
}

PageLines makePage(std::initializer_list<PlannedLine> plans)
{
    PageLines page;
    for (const PlannedLine& plan : plans)
        page.push_back(makeLine(plan));
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

std::vector<qsizetype> flagged(const Sentence& sentence, bool CharRecord::*flag)
{
    std::vector<qsizetype> offsets;
    for (std::size_t i = 0; i < sentence.size(); ++i) {
        if (sentence[i].*flag)
            offsets.push_back(qsizetype(i));
    }
    return offsets;
}

}  // namespace lexicorn::testing

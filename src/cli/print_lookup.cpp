#include "cli/print_lookup.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace lexicorn::cli {

namespace {

// "text" followed by its translation when there is one.
QString withTranslation(const QString& english, const QString& chinese)
{
    if (chinese.isEmpty())
        return english;
    if (english.isEmpty())
        return chinese;
    return english + QStringLiteral("  ") + chinese;
}

QString joinNonEmpty(const QStringList& parts)
{
    QStringList kept;
    for (const QString& part : parts) {
        if (!part.isEmpty())
            kept.append(part);
    }
    return kept.join(u' ');
}

}  // namespace

QString describeLookup(const DictData& lookup, const QString& dictName)
{
    QString text = QStringLiteral("%1  [%2]\n").arg(lookup.word(), dictName);
    if (!lookup.quoteSentence().isEmpty())
        text += QStringLiteral("  in: %1\n").arg(lookup.quoteSentence());
    if (lookup.enWords().empty())
        return text + QStringLiteral("  (not found)\n");
    for (const EnWordPtr& entry : lookup.enWords()) {
        const QString star = entry->star.isEmpty() ? QString() : QStringLiteral("★") + entry->star;
        text += QStringLiteral("  ") + joinNonEmpty({entry->title, entry->readings, star, entry->pos_en, entry->pos_cn}) + u'\n';
        int number = 0;
        for (const EnWordDefPtr& sense : entry->defs) {
            const QString head = joinNonEmpty({sense->subTitle, sense->signpos_en, sense->signpos_cn,
                                               sense->gram.isEmpty() ? QString() : u'[' + sense->gram + u']'});
            text += QStringLiteral("    %1. %2\n").arg(++number).arg(joinNonEmpty({head, withTranslation(sense->def_en, sense->def_cn)}));
            for (const EnWordExtPtr& example : sense->exts)
                text += QStringLiteral("       - %1\n").arg(withTranslation(example->en, example->cn));
        }
    }
    return text;
}

QString describeLegacy(const HookEnWordData& record)
{
    QString text = QStringLiteral("%1 -> %2").arg(record.word, record.formatedWord);
    const QString star = record.star.isEmpty() ? QString() : QStringLiteral("★") + record.star;
    text += QStringLiteral("  ") + joinNonEmpty({record.readings.join(QStringLiteral(", ")), star}) + u'\n';
    int number = 0;
    for (const auto& sense : record.defs) {
        text += QStringLiteral("    %1. %2\n").arg(++number).arg(joinNonEmpty({sense->pos_en, withTranslation(sense->def_en, sense->def_cn)}));
        for (const auto& example : sense->exts)
            text += QStringLiteral("       - %1\n").arg(withTranslation(example->en, example->cn));
    }
    return text;
}

QString legacyJson(const HookEnWordData& record)
{
    QJsonArray defs;
    for (const auto& sense : record.defs) {
        QJsonArray exts;
        for (const auto& example : sense->exts)
            exts.append(QJsonObject{{"cn", example->cn}, {"en", example->en}});
        defs.append(QJsonObject{{"def_cn", sense->def_cn}, {"def_en", sense->def_en}, {"pos_cn", sense->pos_cn},
                                {"pos_en", sense->pos_en}, {"exts", exts}});
    }
    const QJsonObject object{{"word", record.word},
                             {"formatedWord", record.formatedWord},
                             {"quoteSentence", record.quoteSentence},
                             {"star", record.star},
                             {"readings", QJsonArray::fromStringList(record.readings)},
                             {"defs", defs}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

}  // namespace lexicorn::cli

#include "cli/arguments.h"

#include <QFileInfo>

namespace lexicorn::cli {

std::optional<QString> Arguments::option(const QString& name)
{
    const QString flagWord = QStringLiteral("--") + name;
    std::optional<QString> value;
    for (qsizetype i = 0; i < words_.size();) {
        if (words_[i] == flagWord) {
            if (i + 1 >= words_.size())
                throw UsageError(QStringLiteral("%1 needs a value").arg(flagWord));
            value = words_[i + 1];
            words_.remove(i, 2);
        } else if (words_[i].startsWith(flagWord + u'=')) {
            value = words_[i].mid(flagWord.size() + 1);
            words_.remove(i);
        } else {
            ++i;
        }
    }
    return value;
}

bool Arguments::flag(const QString& name)
{
    return words_.removeAll(QStringLiteral("--") + name) > 0;
}

QStringList Arguments::positionals()
{
    for (const QString& word : words_) {
        if (word.startsWith(QStringLiteral("--")) && word.size() > 2)
            throw UsageError(QStringLiteral("unknown option %1").arg(word));
    }
    return words_;
}

void applyHomeOption(Arguments& arguments)
{
    const std::optional<QString> home = arguments.option(QStringLiteral("home"));
    if (!home)
        return;
    if (!QFileInfo(*home).isDir())
        throw CommandError(QStringLiteral("no such folder: %1").arg(*home));
    qputenv("LEXICORN_HOME", QFileInfo(*home).absoluteFilePath().toUtf8());
}

}  // namespace lexicorn::cli

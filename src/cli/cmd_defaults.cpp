#include "cli/commands.h"
#include "cli/output.h"

#include "foundation/user_defaults.h"

#include <QJsonDocument>
#include <QJsonValue>

namespace lexicorn::cli {

namespace {

QString describe(const QVariant& value)
{
    return QJsonDocument::fromVariant(QVariantList{value}).toJson(QJsonDocument::Compact).chopped(1).mid(1);
}

}  // namespace

int runDefaults(Arguments& arguments)
{
    const QStringList words = arguments.positionals();
    UserDefaults& defaults = UserDefaults::standard();
    const QString command = words.value(0);
    if (command == QStringLiteral("list") && words.size() == 1) {
        for (const QString& key : defaults.keys())
            print(QStringLiteral("%1 = %2\n").arg(key, describe(defaults.object(key))));
        return 0;
    }
    if (command == QStringLiteral("get") && words.size() == 2) {
        if (!defaults.contains(words[1]))
            throw CommandError(QStringLiteral("no value for %1").arg(words[1]));
        print(defaults.string(words[1]) + u'\n');
        return 0;
    }
    if (command == QStringLiteral("set") && words.size() == 3) {
        defaults.set(words[1], words[2]);
        return 0;
    }
    if (command == QStringLiteral("delete") && words.size() == 2) {
        defaults.remove(words[1]);
        return 0;
    }
    throw UsageError(QStringLiteral("defaults takes: list | get KEY | set KEY VALUE | delete KEY"));
}

}  // namespace lexicorn::cli

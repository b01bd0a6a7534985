#include "cli/anki_address.h"
#include "cli/commands.h"
#include "cli/output.h"

#include "lexicorn/anki/ksw_ankiconnect.h"

#include <QJsonDocument>

namespace lexicorn::cli {

namespace {

QJsonObject paramsFromText(const QString& text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        throw UsageError(QStringLiteral("PARAMS_JSON must be a JSON object: %1").arg(error.errorString()));
    return document.object();
}

// The one positional argument a subcommand takes.
QString single(const QStringList& words, const char* name)
{
    if (words.size() != 2)
        throw UsageError(QStringLiteral("anki %1 takes exactly one argument").arg(QLatin1StringView(name)));
    return words[1];
}

}  // namespace

int runAnki(Arguments& arguments)
{
    const std::optional<QString> ip = arguments.option(QStringLiteral("ip"));
    const QStringList words = arguments.positionals();
    if (words.isEmpty())
        throw UsageError(QStringLiteral("anki needs one of: version, decks, models, fields MODEL, find QUERY, raw ACTION [PARAMS_JSON]"));

    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    const ScopedAnkiAddress address(ip);  // --ip is for this call only

    const QString command = words.front();
    KSWAnkiconnect::Reply reply;
    if (command == QStringLiteral("version") && words.size() == 1) {
        reply = anki.postRequestCommand_params_(QStringLiteral("version"), std::nullopt);
    } else if (command == QStringLiteral("decks") && words.size() == 1) {
        reply = anki.getDeckNames();
    } else if (command == QStringLiteral("models") && words.size() == 1) {
        reply = anki.getModelNames();
    } else if (command == QStringLiteral("fields")) {
        reply = anki.getModelFieldNames_(single(words, "fields"));
    } else if (command == QStringLiteral("find")) {
        reply = anki.findNotesWithNoteid_(single(words, "find"));
    } else if (command == QStringLiteral("raw") && (words.size() == 2 || words.size() == 3)) {
        const std::optional<QJsonObject> params = words.size() == 3 ? std::optional(paramsFromText(words[2])) : std::nullopt;
        reply = anki.postRequestCommand_params_(words[1], params);
    } else {
        throw UsageError(QStringLiteral("unknown or malformed anki command: %1").arg(words.join(u' ')));
    }
    if (!reply)
        throw CommandError(QStringLiteral("AnkiConnect error: no reply from %1 after %2 attempts").arg(anki.ipString()).arg(KSWAnkiconnect::attempts));
    print(reply->text() + u'\n');
    return 0;
}

}  // namespace lexicorn::cli

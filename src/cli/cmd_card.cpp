// lexicorn card: the dictionary note the popup writes for a sense, and the
// Anki note a dictionary note becomes.

#include "cli/anki_address.h"
#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/dict_note.h"
#include "lexicorn/render/note_format.h"
#include "lexicorn/render/note_writer.h"
#include "lexicorn/services/ksw_translate.h"

#include "foundation/paths.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <cstdio>

namespace lexicorn::cli {

namespace {

// The engine number that makes no request: the popup's head section asks the
// translator for the sentence, and this command must not go on the network.
constexpr unsigned noTranslationEngine = 7;

int number(const QString& text, const char* name)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < 0)
        throw UsageError(QStringLiteral("%1 must be a whole number, 0 or more: %2").arg(QLatin1StringView(name), text));
    return value;
}

void printJson(const QJsonObject& object)
{
    print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented)));
}

int make(Arguments& arguments)
{
    const int dict = dictNumberFromName(arguments.option(QStringLiteral("dict")).value_or(QStringLiteral("collins")));
    const QString sentence = arguments.option(QStringLiteral("sentence")).value_or(QString());
    const QString translation = arguments.option(QStringLiteral("translation")).value_or(QString());
    const QStringList words = arguments.positionals();
    if (words.size() != 4)
        throw UsageError(QStringLiteral("card make needs WORD SECTION ROW"));
    const QString& word = words[1];
    const int section = number(words[2], "SECTION");
    const int row = number(words[3], "ROW");
    if (section < 1)
        throw UsageError(QStringLiteral("SECTION must be 1 or more: section 0 is the popup's head, which holds no sense"));

    EnWordServer& server = EnWordServer::shared();
    loadDictionary(server, dict);
    KSWTranslate::shareInstance().setEngine(noTranslationEngine);
    const DictDataPtr lookup = server.query(word, sentence);
    const std::optional<NoteRecord> note = makeDictNote(*lookup, section, row, translation);
    if (!note)
        throw CommandError(QStringLiteral("the popup for \"%1\" has no row %2 in section %3").arg(word).arg(row).arg(section));
    printJson(note->toJson());
    return 0;
}

// The dictionary number a card's title names: the third index number, 0 when
// there is none or it cannot be read.
int dictionaryOfTitle(const QString& title)
{
    const QString structured = title.section(DictData::SEPA_End, 0, 0);
    const QStringList index = structured.section(DictData::SEPA_Index, -1).trimmed().split(u'-');
    return index.size() >= 3 ? index[2].toInt() : 0;
}

int fields(Arguments& arguments)
{
    const QString bookTitle = arguments.option(QStringLiteral("book-title")).value_or(QString());
    const std::optional<QString> ip = arguments.option(QStringLiteral("ip"));
    const std::optional<QString> dictName = arguments.option(QStringLiteral("dict"));
    const QStringList words = arguments.positionals();
    if (words.size() != 2)
        throw UsageError(QStringLiteral("card fields needs exactly one NOTE_JSON_FILE"));

    QFile file(words[1]);
    if (!file.open(QIODevice::ReadOnly))
        throw CommandError(QStringLiteral("cannot read %1: %2").arg(words[1], file.errorString()));
    CardResult<JsonDictNote> note = JsonDictNote::fromJson(file.readAll());
    if (!note) {
        printJson(note.error().toJson());
        return 2;
    }

    // The card's sense is checked against the dictionary it names (or --dict);
    // without one the card is still made, with fresh audio.
    const int dict = dictName ? dictNumberFromName(*dictName) : dictionaryOfTitle(note->notetitle());
    if (dict == 0 || dict == 1) {
        try {
            loadDictionary(EnWordServer::shared(), dict);
        } catch (const CommandError& error) {
            if (dictName)
                throw;
            std::fprintf(stderr, "lexicorn: %s; the card's sense is not checked\n", error.what());
        }
    }

    const ScopedAnkiAddress address(ip);  // --ip is for this call only

    const CardResult<QJsonObject> params = makeWith(*note, bookTitle);
    // Alerts are shown from the event loop; here they are logged.
    QCoreApplication::processEvents();
    if (!params) {
        printJson(params.error().toJson());
        return 2;
    }
    printJson(params.value());
    return 0;
}

}  // namespace

int runCard(Arguments& arguments)
{
    applyHomeOption(arguments);
    // The subcommand is the first word that is not an option or its value;
    // each subcommand then takes its own options, and one meant for the
    // other is reported as unknown.
    Arguments probe = arguments;
    for (const char* name : {"dict", "sentence", "translation", "book-title", "ip"})
        probe.option(QString::fromLatin1(name));
    const QStringList words = probe.positionals();
    const QString subcommand = words.isEmpty() ? QString() : words.front();
    if (subcommand == QStringLiteral("make"))
        return make(arguments);
    if (subcommand == QStringLiteral("fields"))
        return fields(arguments);
    throw UsageError(QStringLiteral("card needs a subcommand: make WORD SECTION ROW, or fields NOTE_JSON_FILE"));
}

}  // namespace lexicorn::cli

// lexicorn: the dictionary engine and card tools without a window.

#include "cli/commands.h"
#include "cli/output.h"

#include <QCoreApplication>

#include <cstdio>
#include <functional>
#include <map>

namespace {

const char* const usage = R"(usage: lexicorn COMMAND [OPTIONS]

commands:
  lookup [--home DIR] [--dict collins|LDOCE5] [--sentence TEXT] [--json] WORD...
      look words up; --json prints one JSON document per word
  legacy [--home DIR] [--dict 0|1] [--json] WORD
      the older dictionary front end's record of a word
  convert [--home DIR]
      convert Dict/collins.json into the cache Dict/collins_html.json
  import [--home DIR] --into collins|LDOCE5 [--word-forms] [--progress-lines] FILE...
      import StarDict (.ifo), MDict (.mdx), ECDICT-style CSV (.csv) or WordNet (its dict folder)
      files into Dict/collins_html.json or Dict/LDOCE5_html.json; --word-forms also merges their
      word forms into Dict/wordforms.json; --progress-lines prints "progress N" lines
  demo [--home DIR] [--sample DIR]
      load the sample dictionaries and look up every word of the sample book's first page
  anki [--ip HOST:PORT] version|decks|models|fields MODEL|find QUERY|raw ACTION [PARAMS_JSON]
      talk to Anki through AnkiConnect and print the reply
  translate [--engine N] SENTENCE
      translate an English sentence into Chinese (empty line when none)
  say [--out FILE] WORD
      pronounce a word, or write its pronunciation to FILE
  defaults list|get KEY|set KEY VALUE|delete KEY
      the settings store the reader uses
  rows [--home DIR] [--dict D] [--sentence S] --json WORD
      the popup's sections of styled rows for a lookup, as JSON
  card make [--home DIR] [--dict D] [--sentence S] [--translation T] WORD SECTION ROW
      the dictionary note the popup writes for that row, as JSON
  card fields [--home DIR] [--dict D] [--book-title T] [--ip HOST:PORT] NOTE_JSON_FILE
      the Anki note a dictionary note becomes, as JSON
  notebook [--home DIR] add NOTE_JSON|list|show ID
      the reader's notebook: add a note (a file, or - for standard input; prints its id),
      list the notes (id and title), show one note as JSON
  sync [--home DIR] [--ip HOST:PORT] [--dict D] [--book-md5 MD5] [IDS...]
      send the notebook's dictionary cards to Anki (the given notes, else the book's, else all)
  sentences [--home DIR] --pdf FILE --page N [--sections] [--json]
      the sentences (or sections) of page N of a PDF, N counting from 1; one per line,
      or with --json each as {"text", "lineEnds", "rects": [[x, y, w, h] per character]};
      a scanned page is read by OCR once and kept in DIR/Lexicorn/ocr

The dictionary files live in DIR/Dict (DIR: --home, else $LEXICORN_HOME, else your home folder).
)";

void printError(const char* message)
{
    std::fprintf(stderr, "lexicorn: %s\n", message);
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList words = app.arguments().mid(1);
    if (words.isEmpty() || words.front() == QStringLiteral("--help") || words.front() == QStringLiteral("help")) {
        std::fputs(usage, words.isEmpty() ? stderr : stdout);
        return words.isEmpty() ? 2 : 0;
    }
    using namespace lexicorn::cli;
    const std::map<QString, std::function<int(Arguments&)>> commands{
        {QStringLiteral("lookup"), runLookup},
        {QStringLiteral("legacy"), runLegacy},
        {QStringLiteral("convert"), runConvert},
        {QStringLiteral("import"), runImport},
        {QStringLiteral("demo"), runDemo},
        {QStringLiteral("anki"), runAnki},
        {QStringLiteral("defaults"), runDefaults},
        {QStringLiteral("translate"), runTranslate},
        {QStringLiteral("say"), runSay},
        {QStringLiteral("rows"), runRows},
        {QStringLiteral("card"), runCard},
        {QStringLiteral("sentences"), runSentences},
        {QStringLiteral("notebook"), runNotebook},
        {QStringLiteral("sync"), runSync},
    };
    const QString name = words.takeFirst();
    const auto command = commands.find(name);
    if (command == commands.end()) {
        printError(QStringLiteral("unknown command \"%1\" (try lexicorn --help)").arg(name).toUtf8().constData());
        return 2;
    }
    try {
        Arguments arguments(words);
        const int status = command->second(arguments);
        std::fflush(stdout);
        return status;
    } catch (const UsageError& error) {
        printError(error.what());
        return 2;
    } catch (const CommandError& error) {
        printError(error.what());
        return 1;
    }
}

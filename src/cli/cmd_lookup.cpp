#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"
#include "cli/print_lookup.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/json_writer.h"

namespace lexicorn::cli {

int runLookup(Arguments& arguments)
{
    applyHomeOption(arguments);
    const int dict = dictNumberFromName(arguments.option(QStringLiteral("dict")).value_or(QStringLiteral("collins")));
    const QString sentence = arguments.option(QStringLiteral("sentence")).value_or(QString());
    const bool asJson = arguments.flag(QStringLiteral("json"));
    const QStringList words = arguments.positionals();
    if (words.isEmpty())
        throw UsageError(QStringLiteral("lookup needs at least one WORD"));

    EnWordServer& server = EnWordServer::shared();
    loadDictionary(server, dict);
    for (const QString& word : words) {
        const DictDataPtr lookup = server.query(word, sentence);
        if (asJson)
            print(QString::fromStdString(json::encode(*lookup)) + u'\n');
        else
            print(describeLookup(*lookup, server.dictName()));
    }
    return 0;
}

}  // namespace lexicorn::cli

#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"
#include "cli/print_lookup.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/hook_english_dict.h"

namespace lexicorn::cli {

int runLegacy(Arguments& arguments)
{
    applyHomeOption(arguments);
    const QString dictText = arguments.option(QStringLiteral("dict")).value_or(QStringLiteral("1"));
    const QString sentence = arguments.option(QStringLiteral("sentence")).value_or(QString());
    const bool asJson = arguments.flag(QStringLiteral("json"));
    const QStringList words = arguments.positionals();
    if (words.size() != 1)
        throw UsageError(QStringLiteral("legacy needs exactly one WORD"));
    if (dictText != QStringLiteral("0") && dictText != QStringLiteral("1"))
        throw UsageError(QStringLiteral("--dict takes 0 (LDOCE5) or 1 (collins)"));

    HookEnglishDict& legacy = HookEnglishDict::shareInstance();
    legacy.selectedDict = dictText.toUInt();
    // For LDOCE5 the legacy front end asks the engine, which must be loaded first.
    if (legacy.selectedDict == 0)
        loadDictionary(EnWordServer::shared(), 0);
    const auto record = legacy.queryWord_quoteSentence_(words.front(), sentence);
    print((asJson ? legacyJson(*record) : describeLegacy(*record)) + u'\n');
    return 0;
}

}  // namespace lexicorn::cli

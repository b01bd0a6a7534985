#include "cli/commands.h"
#include "cli/output.h"

#include "lexicorn/services/ksw_translate.h"

namespace lexicorn::cli {

int runTranslate(Arguments& arguments)
{
    const std::optional<QString> engineWord = arguments.option(QStringLiteral("engine"));
    std::optional<unsigned> engine;
    if (engineWord) {
        bool isNumber = false;
        engine = engineWord->toUInt(&isNumber);
        if (!isNumber)
            throw UsageError(QStringLiteral("--engine takes a number: 0 automatic, 1 Google mainland, 2 Youdao, "
                                            "3 Google international, 4 Eudic, 5 and above none"));
    }
    const QStringList words = arguments.positionals();
    if (words.isEmpty())
        throw UsageError(QStringLiteral("translate needs a SENTENCE"));
    const QString sentence = words.join(u' ');

    // --engine is for this call only: the stored engine stays as it is.
    KSWTranslate& translate = KSWTranslate::shareInstance();
    print(translate.translatorEn_withEngine_(sentence, engine.value_or(translate.engine())) + u'\n');
    return 0;
}

}  // namespace lexicorn::cli

#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"

#include "lexicorn/dictionary/en_word_server.h"

#include "foundation/install_layout.h"
#include "foundation/paths.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <poppler-qt6.h>

#include <optional>

namespace lexicorn::cli {

namespace {

// The distinct words of a PDF page, in reading order. A word broken at a line
// end ("exam-" / "ple") is kept as "exam- ple", the way a selection across the
// break reads; the engine joins it again.
QStringList wordsOfPage(const QString& pdfPath, int pageIndex)
{
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(pdfPath);
    if (!document || document->isLocked())
        throw CommandError(QStringLiteral("cannot open the book %1").arg(pdfPath));
    const std::unique_ptr<Poppler::Page> page = document->page(pageIndex);
    if (!page)
        throw CommandError(QStringLiteral("the book %1 has no page %2").arg(pdfPath).arg(pageIndex + 1));
    QString text = page->text(QRectF());
    text.replace(QRegularExpression(QStringLiteral("(\\w)-\\s*\\n\\s*(\\w)")), QStringLiteral("\\1- \\2"));

    static const QRegularExpression word(QStringLiteral("[A-Za-z]+(?:(?:-|- )[A-Za-z]+)*"));
    QStringList words;
    QStringList seen;  // lower-case forms, so "The" and "the" count once
    for (const QRegularExpressionMatch& match : word.globalMatch(text)) {
        const QString found = match.captured();
        if (!seen.contains(found.toLower())) {
            seen.append(found.toLower());
            words.append(found);
        }
    }
    return words;
}

// The first sense of a lookup in a few words: headword, part of speech, Chinese definition.
QString firstSense(const DictData& lookup)
{
    for (const EnWordPtr& entry : lookup.enWords()) {
        for (const EnWordDefPtr& sense : entry->defs) {
            if (!sense->def_cn.isEmpty() || !sense->def_en.isEmpty())
                return QStringLiteral("%1 %2 %3").arg(entry->title, entry->pos_en, sense->def_cn.isEmpty() ? sense->def_en : sense->def_cn);
        }
    }
    return QStringLiteral("—");
}

}  // namespace

int runDemo(Arguments& arguments)
{
    const QString sampleDir = arguments.option(QStringLiteral("sample")).value_or(sampleDirectory());
    applyHomeOption(arguments);
    if (!arguments.positionals().isEmpty())
        throw UsageError(QStringLiteral("demo takes no words"));

    // Without a chosen home the demo works in a folder of its own, never in the user's Dict.
    std::optional<QTemporaryDir> scratch;
    if (qEnvironmentVariable("LEXICORN_HOME").isEmpty()) {
        scratch.emplace();
        qputenv("LEXICORN_HOME", scratch->path().toUtf8());
    }
    if (const QString problem = copySampleDictionaries(sampleDir); !problem.isEmpty())
        throw CommandError(problem);
    const QString book = sampleDir + QStringLiteral("/books/sample-book.pdf");
    const QStringList words = wordsOfPage(book, 0);
    print(QStringLiteral("Lexicorn demo: %1 distinct words on page 1 of %2\nDictionaries from %3\n\n")
              .arg(words.size())
              .arg(QDir(book).canonicalPath(), dictDirectory()));

    EnWordServer& server = EnWordServer::shared();
    struct Column {
        QString name;
        QStringList senses;
        int found = 0;
    };
    std::vector<Column> columns;
    for (int dict : {1, 0}) {
        loadDictionary(server, dict);
        Column column{server.dictName(), {}, 0};
        for (const QString& word : words) {
            const DictDataPtr lookup = server.query(word, QString());
            column.found += lookup->enWords().empty() ? 0 : 1;
            column.senses.append(firstSense(*lookup));
        }
        columns.push_back(std::move(column));
    }

    for (qsizetype i = 0; i < words.size(); ++i) {
        print(QStringLiteral("%1\n").arg(words[i]));
        for (const Column& column : columns)
            print(QStringLiteral("    %1  %2\n").arg(column.name.leftJustified(8), column.senses[i]));
    }
    print(u'\n' + QStringLiteral("found: "));
    for (const Column& column : columns)
        print(QStringLiteral("%1 %2/%3  ").arg(column.name).arg(column.found).arg(words.size()));
    print(QStringLiteral("\n"));
    return 0;
}

}  // namespace lexicorn::cli

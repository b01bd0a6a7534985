#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"
#include "cli/progress_bar.h"

#include "lexicorn/dictionary/import/dictionary_import.h"
#include "lexicorn/dictionary/import/source_entry.h"

#include "foundation/paths.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

namespace lexicorn::cli {

int runImport(Arguments& arguments)
{
    applyHomeOption(arguments);
    const std::optional<QString> into = arguments.option(QStringLiteral("into"));
    const bool wordForms = arguments.flag(QStringLiteral("word-forms"));
    // For a program that runs this command and shows its own progress bar.
    const bool progressLines = arguments.flag(QStringLiteral("progress-lines"));
    const QStringList files = arguments.positionals();
    if (!into)
        throw UsageError(QStringLiteral("import needs --into collins|LDOCE5"));
    if (files.isEmpty())
        throw UsageError(QStringLiteral("import needs at least one FILE"));

    dictimport::ImportRequest request;
    request.slot = *SelectDictType::fromRawValue(dictNumberFromName(*into));
    request.wordForms = wordForms;
    request.dictDir = dictDirectory();
    for (const QString& file : files)
        request.files.append(QFileInfo(file).absoluteFilePath());

    QElapsedTimer timer;
    timer.start();
    dictimport::ImportReport report;
    try {
        ProgressBar bar(QStringLiteral("importing"));
        int lastPercent = -1;
        report = dictimport::importDictionaries(request, [&](int index, int count, const QString&, qint64 done, qint64 total) {
            const double part = total > 0 ? double(done) / double(total) : 0.0;
            const int percent = int((double(index) + part) * 100.0 / double(count));
            bar.update(size_t(percent), 100);
            if (progressLines && percent != lastPercent) {
                lastPercent = percent;
                std::printf("progress %d\n", percent);
                std::fflush(stdout);
            }
        });
    } catch (const dictimport::ImportError& error) {
        throw CommandError(QString::fromStdString(error.what()) + QStringLiteral(" (the Dict folder is unchanged)"));
    }
    for (const QString& warning : report.warnings)
        std::fprintf(stderr, "warning: %s\n", warning.toUtf8().constData());
    QString summary = QStringLiteral("imported %1 headwords (%2 entries) from %3 %4 into %5")
                          .arg(report.headwords)
                          .arg(report.entries)
                          .arg(report.dictionaries)
                          .arg(report.dictionaries == 1 ? QStringLiteral("dictionary") : QStringLiteral("dictionaries"))
                          .arg(report.cachePath);
    if (report.resources)
        summary += QStringLiteral(", %1 sound files").arg(report.resources);
    if (wordForms)
        summary += QStringLiteral(", %1 new word forms").arg(report.formsAdded);
    print(summary + QStringLiteral(" in %1 s\n").arg(double(timer.elapsed()) / 1000.0, 0, 'f', 2));
    return 0;
}

}  // namespace lexicorn::cli

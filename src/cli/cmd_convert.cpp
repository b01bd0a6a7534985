#include "cli/commands.h"
#include "cli/output.h"
#include "cli/progress_bar.h"

#include "lexicorn/dictionary/dictionary_files.h"

#include "foundation/paths.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

namespace lexicorn::cli {

int runConvert(Arguments& arguments)
{
    applyHomeOption(arguments);
    if (!arguments.positionals().isEmpty())
        throw UsageError(QStringLiteral("convert takes no words"));
    const QString rawPath = dictDirectory() + QStringLiteral("/collins.json");
    const QString cachePath = dictDirectory() + QStringLiteral("/collins_html.json");
    if (!QFileInfo::exists(rawPath))
        throw CommandError(QStringLiteral("no raw dictionary at %1").arg(rawPath));

    QElapsedTimer timer;
    timer.start();
    std::shared_ptr<const CacheDict> dict;
    {
        ProgressBar bar(QStringLiteral("converting"));
        dict = readDictionaryFile(rawPath, [&](size_t done, size_t total) { bar.update(done, total); });
    }
    if (dict->isEmpty())
        throw CommandError(QStringLiteral("%1 holds no headwords that could be converted").arg(rawPath));

    // The cache is rebuilt from scratch: an old, longer file must not leave its tail behind.
    QFile::remove(cachePath);
    if (!writeCacheFile(*dict, cachePath))
        throw CommandError(QStringLiteral("cannot write %1").arg(cachePath));
    print(QStringLiteral("converted %1 headwords into %2 in %3 s\n")
              .arg(dict->size())
              .arg(cachePath)
              .arg(double(timer.elapsed()) / 1000.0, 0, 'f', 2));
    return 0;
}

}  // namespace lexicorn::cli

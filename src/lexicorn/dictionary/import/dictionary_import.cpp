#include "lexicorn/dictionary/import/dictionary_import.h"

#include "lexicorn/dictionary/import/cache_writer.h"
#include "lexicorn/dictionary/import/ecdict_reader.h"
#include "lexicorn/dictionary/import/mdict_reader.h"
#include "lexicorn/dictionary/import/source_entry.h"
#include "lexicorn/dictionary/import/stardict_reader.h"
#include "lexicorn/dictionary/import/word_forms_merge.h"
#include "lexicorn/dictionary/import/wordnet_reader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <future>

namespace lexicorn::dictimport {

namespace {

[[noreturn]] void fail(const QString& message)
{
    throw ImportError(message.toStdString());
}

void readFile(SourceFormat format, const QString& path, CacheWriter& writer)
{
    switch (format) {
    case SourceFormat::Ecdict:
        readEcdictCsv(path, writer);
        return;
    case SourceFormat::WordNet:
        readWordNet(path, writer);
        return;
    case SourceFormat::StarDict:
        readStarDict(path, writer);
        return;
    case SourceFormat::Mdict:
        readMdict(path, writer);
        return;
    }
    fail(QStringLiteral("%1: not a dictionary file this reader knows").arg(path));
}

// Moves a staged file over its place in the Dict folder (rename replaces an
// old file in one step, so a reader of the folder sees the old or the new).
void moveInto(const QString& from, const QString& to)
{
    QDir().mkpath(QFileInfo(to).path());
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        fail(QStringLiteral("cannot move %1 to %2: %3").arg(from, to, QString::fromLocal8Bit(std::strerror(errno))));
}

void writeCache(const QString& path, const CacheWriter& writer)
{
    QFile file(path);
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    writer.writeCacheJson([&](std::string_view piece) {
        written = written && file.write(piece.data(), qint64(piece.size())) == qint64(piece.size());
    });
    if (!written)
        fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

}  // namespace

ImportReport importDictionaries(const ImportRequest& request, const ImportProgress& progress)
{
    const std::vector<DictionarySource> sources = dictionariesIn(request.files);

    // Staged inside the Dict folder, so that the final moves are renames on one disk.
    const bool dictExisted = QFileInfo(request.dictDir).isDir();
    if (!dictExisted && !QDir().mkpath(request.dictDir))
        fail(QStringLiteral("cannot create the Dict folder %1").arg(request.dictDir));
    struct RemoveNewDict {
        QString dir;
        bool armed;
        ~RemoveNewDict()
        {
            if (armed)
                QDir().rmdir(dir);  // only when empty: nothing of the user's is lost
        }
    } removeNewDict{request.dictDir, !dictExisted};
    QTemporaryDir staging(request.dictDir + QStringLiteral("/.import-XXXXXX"));
    if (!staging.isValid())
        fail(QStringLiteral("cannot make a working folder in %1: %2").arg(request.dictDir, staging.errorString()));

    CacheWriter writer(staging.path() + QStringLiteral("/resources"));
    const int count = int(sources.size());
    for (int i = 0; i < count; ++i) {
        const QString& file = sources[size_t(i)].path;
        writer.beginFile(file);
        writer.setProgressHandler([&, i](qint64 done, qint64 total) {
            if (progress)
                progress(i, count, file, done, total);
        });
        readFile(sources[size_t(i)].format, file, writer);
    }
    if (writer.headwordCount() == 0)
        fail(QStringLiteral("%1: no entries found").arg(request.files.join(QStringLiteral(", "))));

    ImportReport report;
    report.dictionaries = sources.size();
    report.headwords = writer.headwordCount();
    report.entries = writer.entryCount();
    report.resources = writer.resources().size();
    report.warnings = writer.warnings();
    report.cachePath = request.dictDir + u'/' + request.slot.fileName();

    // The word-form map is worked out and written while the cache is: both
    // only read what the writer holds, and each takes about as long.
    const QString formsPath = request.dictDir + QStringLiteral("/wordforms.json");
    const QString stagedForms = staging.path() + QStringLiteral("/wordforms.json");
    std::future<WordFormsMerge> forms;
    if (request.wordForms) {
        forms = std::async(std::launch::async, [&] { return mergeWordForms(formsPath, writer.wordForms().pairs, stagedForms); });
    }
    const QString stagedCache = staging.path() + QStringLiteral("/cache.json");
    writeCache(stagedCache, writer);
    if (request.wordForms)
        report.formsAdded = forms.get().added;

    // Everything is written: only renames are left. The cache goes last, so
    // the dictionary never names sounds that are not there yet.
    for (const QString& resource : writer.resources())
        moveInto(staging.path() + QStringLiteral("/resources/") + resource, request.dictDir + u'/' + resource);
    if (request.wordForms)
        moveInto(stagedForms, formsPath);
    moveInto(stagedCache, report.cachePath);
    removeNewDict.armed = false;
    return report;
}

}  // namespace lexicorn::dictimport

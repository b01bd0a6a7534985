#include "lexicorn/dictionary/import/dictionary_sources.h"

#include "lexicorn/dictionary/import/source_entry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <optional>

namespace lexicorn::dictimport {

namespace {

[[noreturn]] void fail(const QString& message)
{
    throw ImportError(message.toStdString());
}

const QStringList starDictEndings{".ifo", ".idx", ".idx.gz", ".dict", ".dict.dz", ".syn", ".syn.gz"};

// WordNet's database files, as its dict folder holds them.
bool isWordNetFile(const QString& name)
{
    static const QStringList parts{"noun", "verb", "adj", "adv"};
    for (const QString& part : parts) {
        if (name == QStringLiteral("data.") + part || name == QStringLiteral("index.") + part
            || name == part + QStringLiteral(".exc"))
            return true;
    }
    return name == u"index.sense" || name == u"lexnames" || name == u"cntlist" || name == u"cntlist.rev";
}

// The path without the ending, when the name ends with it (any case).
std::optional<QString> stem(const QString& path, const QString& ending)
{
    if (!path.endsWith(ending, Qt::CaseInsensitive))
        return std::nullopt;
    return path.left(path.size() - ending.size());
}

// The file beside the stem with the ending, in the case it has on disk.
std::optional<QString> sibling(const QString& base, const QString& ending)
{
    for (const QString& candidate : {base + ending, base + ending.toUpper()}) {
        if (QFileInfo(candidate).isFile())
            return candidate;
    }
    return std::nullopt;
}

// The dictionary a file belongs to; with quiet, nothing for a file of none.
std::optional<DictionarySource> dictionaryOf(const QString& file, bool quiet)
{
    const QFileInfo info(file);
    const QString path = info.absoluteFilePath();
    const QString name = info.fileName().toLower();
    if (isWordNetFile(name)) {
        if (QFileInfo(info.absolutePath() + QStringLiteral("/data.noun")).isFile())
            return DictionarySource{SourceFormat::WordNet, info.absolutePath()};
        if (quiet)
            return std::nullopt;
        fail(QStringLiteral("%1: a WordNet file without data.noun beside it").arg(file));
    }
    if (name.endsWith(QStringLiteral(".csv")))
        return DictionarySource{SourceFormat::Ecdict, path};
    if (name.endsWith(QStringLiteral(".mdx")))
        return DictionarySource{SourceFormat::Mdict, path};
    if (const std::optional<QString> base = stem(path, QStringLiteral(".mdd"))) {
        if (const std::optional<QString> mdx = sibling(*base, QStringLiteral(".mdx")))
            return DictionarySource{SourceFormat::Mdict, *mdx};
        fail(QStringLiteral("%1: a .mdd holds only the sounds and pictures of a dictionary; its .mdx is not beside it").arg(file));
    }
    for (const QString& ending : starDictEndings) {
        const std::optional<QString> base = stem(path, ending);
        if (!base)
            continue;
        if (const std::optional<QString> ifo = sibling(*base, QStringLiteral(".ifo")))
            return DictionarySource{SourceFormat::StarDict, *ifo};
        fail(QStringLiteral("%1: a StarDict file without its .ifo beside it").arg(file));
    }
    if (quiet)
        return std::nullopt;
    fail(QStringLiteral("%1: not a file of a dictionary this import reads (StarDict, MDict, ECDICT CSV or WordNet)").arg(file));
}

}  // namespace

std::vector<DictionarySource> dictionariesIn(const QStringList& paths)
{
    if (paths.isEmpty())
        fail(QStringLiteral("no dictionary file to import"));
    std::vector<DictionarySource> found;
    const auto add = [&found](const DictionarySource& source) {
        if (std::find(found.begin(), found.end(), source) == found.end())
            found.push_back(source);
    };
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.exists())
            fail(QStringLiteral("%1: no such file").arg(path));
        if (!info.isDir()) {
            add(*dictionaryOf(path, false));
            continue;
        }
        bool any = false;
        const QFileInfoList entries = QDir(path).entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
        for (const QFileInfo& entry : entries) {
            // A .mdd alone or a set without its .ifo in a folder is as bad
            // as when it is named: the user would miss the dictionary.
            const QString name = entry.fileName().toLower();
            const bool partOfSet = name.endsWith(QStringLiteral(".mdd"))
                || std::any_of(starDictEndings.begin(), starDictEndings.end(),
                               [&name](const QString& ending) { return name.endsWith(ending); });
            if (const std::optional<DictionarySource> source = dictionaryOf(entry.filePath(), !partOfSet)) {
                add(*source);
                any = true;
            }
        }
        if (!any)
            fail(QStringLiteral("%1: no dictionary in this folder (StarDict, MDict, ECDICT CSV or WordNet files)").arg(path));
    }
    return found;
}

}  // namespace lexicorn::dictimport

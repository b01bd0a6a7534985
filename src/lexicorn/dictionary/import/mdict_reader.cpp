#include "lexicorn/dictionary/import/mdict_reader.h"

#include "lexicorn/dictionary/import/mdict_file.h"
#include "lexicorn/dictionary/import/mdict_styles.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

namespace lexicorn::dictimport {

namespace {

using mdict::MdictFile;

constexpr qint64 progressStep = 4096;

// "sound://a/b.mp3" and an .mdd key "\a\b.mp3" both name "a/b.mp3".
QString resourceKey(QString name)
{
    name.replace(u'\\', u'/');
    while (name.startsWith(u'/'))
        name.remove(0, 1);
    return name.toLower();
}

// Reads the .mdx entries, style marks expanded; returns the sound names they use, keyed the way
// .mdd keys are compared, each with the spelling the entry wrote.
QHash<QString, QString> readEntries(const char* data, qsizetype size, const QString& name, ImportSink& sink)
{
    static const QRegularExpression soundLink(QStringLiteral(R"re(sound://([^"'<>\s]+))re"));
    static const QString linkPrefix = QStringLiteral("@@@LINK=");
    QHash<QString, QString> sounds;
    const MdictFile file(data, size, name, false);
    const mdict::StyleSheet styles = mdict::StyleSheet::parse(file.attribute(QStringLiteral("StyleSheet")));
    const qint64 total = file.entryCount();
    file.forEachRecord([&](qint64 index, const QString& key, const char* record, qsizetype length) {
        SourceEntry entry;
        entry.headword = key;
        const QString text = file.decodeText(record, length);
        if (text.startsWith(linkPrefix)) {
            entry.linkTo = text.mid(linkPrefix.size()).section(u'\n', 0, 0).trimmed();
        } else {
            entry.text = styles.expand(text);
            entry.markup = Markup::Html;
            for (auto it = soundLink.globalMatch(text); it.hasNext();) {
                const QString sound = it.next().captured(1);
                if (entry.sound.isEmpty())
                    entry.sound = sound;
                sounds.insert(resourceKey(sound), sound);
            }
        }
        sink.entry(std::move(entry));
        if (index % progressStep == 0)
            sink.progress(index, total);
    });
    sink.progress(total, total);
    return sounds;
}

void readSounds(const char* data, qsizetype size, const QString& name, const QHash<QString, QString>& sounds, ImportSink& sink)
{
    const MdictFile file(data, size, name, true);
    file.forEachRecord([&](qint64, const QString& key, const char* record, qsizetype length) {
        const auto sound = sounds.constFind(resourceKey(key));
        if (sound != sounds.constEnd())
            sink.resource(*sound, QByteArray(record, length));
    });
}

// The whole file, mapped when the system allows it, read otherwise.
class FileBytes {
public:
    explicit FileBytes(const QString& path) : file_(path)
    {
        if (!file_.open(QIODevice::ReadOnly))
            throw ImportError(QStringLiteral("%1: cannot open: %2").arg(path, file_.errorString()).toStdString());
        if (file_.size() > 0)
            mapped_ = file_.map(0, file_.size());
        if (!mapped_)
            copy_ = file_.readAll();
    }
    const char* data() const { return mapped_ ? reinterpret_cast<const char*>(mapped_) : copy_.constData(); }
    qsizetype size() const { return mapped_ ? qsizetype(file_.size()) : copy_.size(); }

private:
    QFile file_;
    uchar* mapped_ = nullptr;
    QByteArray copy_;
};

QString resourceFileBeside(const QString& mdxPath)
{
    const QFileInfo mdx(mdxPath);
    for (const QString& suffix : {QStringLiteral(".mdd"), QStringLiteral(".MDD")}) {
        const QString path = mdx.path() + u'/' + mdx.completeBaseName() + suffix;
        if (QFileInfo::exists(path))
            return path;
    }
    return {};
}

}  // namespace

void readMdict(const QString& mdxPath, ImportSink& sink)
{
    QHash<QString, QString> sounds;
    {
        const FileBytes mdx(mdxPath);
        sounds = readEntries(mdx.data(), mdx.size(), mdxPath, sink);
    }
    const QString mddPath = resourceFileBeside(mdxPath);
    if (!mddPath.isEmpty() && !sounds.isEmpty()) {
        const FileBytes mdd(mddPath);
        readSounds(mdd.data(), mdd.size(), mddPath, sounds, sink);
    }
}

void readMdictBytes(const QByteArray& mdx, const QByteArray& mdd, const QString& name, ImportSink& sink)
{
    const QHash<QString, QString> sounds = mdx.isEmpty() ? QHash<QString, QString>() : readEntries(mdx.constData(), mdx.size(), name, sink);
    if (!mdd.isEmpty())
        readSounds(mdd.constData(), mdd.size(), name + QStringLiteral(" (.mdd)"), sounds, sink);
}

}  // namespace lexicorn::dictimport

#include "import_fixtures.h"

#include "lexicorn/dictionary/record_decoder.h"
#include "lexicorn/render/dict_note.h"
#include "lexicorn/render/note_format.h"

#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

namespace lexicorn::testing {

QMap<QString, QByteArray> folderSnapshot(const QString& folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        const QString relative = path.mid(folder.size());
        files.insert(relative, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<folder>"));
    }
    return files;
}

DictDataPtr lookupJson(const QString& home, const QString& dict, const QString& word)
{
    const CliRun run = runLexicorn({"lookup", "--home", home, "--dict", dict, "--json", word});
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    jsonread::Failure failure;
    DictDataPtr data = decodeDictData(run.out.trimmed().toStdString(), failure);
    EXPECT_TRUE(data) << failure.describe().toStdString() << "\n" << run.out.toStdString();
    return data ? data : DictData::make(word, {}, {});
}

QString titleFound(const QString& home, const QString& dict, const QString& word)
{
    const DictDataPtr data = lookupJson(home, dict, word);
    return data->enWords().empty() ? QStringLiteral("(nothing)") : data->enWords().front()->title;
}

CardBack cardBack(const QString& home, const QString& dict, const QString& word, int row)
{
    const CliRun made = runLexicorn({"card", "make", "--home", home, "--dict", dict, word, "1", QString::number(row)});
    EXPECT_EQ(made.status, 0) << made.err.toStdString();
    const CardResult<JsonDictNote> note = JsonDictNote::fromJson(made.out.toUtf8());
    if (!note) {
        ADD_FAILURE() << "the note does not decode: " << made.out.toStdString();
        return {};
    }
    const CardResult<ParsedCard> card = parseDictNote(*note);
    if (!card) {
        ADD_FAILURE() << "the card does not parse back: " << made.out.toStdString();
        return {};
    }
    return {card->headword, card->sense->def_en, card->sense->def_cn};
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void expectImportError(const std::function<void()>& read, const QString& path, const QString& place)
{
    try {
        read();
        ADD_FAILURE() << path.toStdString() << " was read without complaint";
    } catch (const dictimport::ImportError& error) {
        const QString message = QString::fromUtf8(error.what());
        EXPECT_TRUE(message.startsWith(path)) << error.what();
        EXPECT_TRUE(message.contains(place)) << error.what();
    }
}

QMap<QString, const dictimport::SourceEntry*> CollectingSink::byHeadword() const
{
    QMap<QString, const dictimport::SourceEntry*> map;
    for (const dictimport::SourceEntry& e : entries)
        map.insert(e.headword, &e);
    return map;
}

}  // namespace lexicorn::testing

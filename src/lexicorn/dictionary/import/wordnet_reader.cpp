#include "lexicorn/dictionary/import/wordnet_reader.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringList>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lexicorn::dictimport {

namespace {

struct PartOfSpeech {
    const char* file;  // noun -> data.noun, index.noun, noun.exc
    const char* name;  // as the popup shows it
    char type;         // the synset type letter the data file writes
};

constexpr PartOfSpeech partsOfSpeech[] = {
    {"noun", "n.", 'n'}, {"verb", "v.", 'v'}, {"adj", "adj.", 'a'}, {"adv", "adv.", 'r'}};

[[noreturn]] void fail(const QString& file, const QString& where, const QString& what)
{
    throw ImportError(QStringLiteral("%1:%2: %3").arg(file, where, what).toStdString());
}

QByteArray readWhole(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ImportError(QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString()).toStdString());
    return file.readAll();
}

QString wordOf(std::string_view token)
{
    QString word = QString::fromUtf8(token.data(), qsizetype(token.size()));
    word.replace(u'_', u' ');
    return word;
}

std::vector<std::string_view> tokens(std::string_view line)
{
    std::vector<std::string_view> out;
    size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && line[i] == ' ')
            ++i;
        const size_t start = i;
        while (i < line.size() && line[i] != ' ')
            ++i;
        if (i > start)
            out.push_back(line.substr(start, i - start));
    }
    return out;
}

// The gloss after "| ": definitions and, in double quotes, examples, all
// separated by "; ".
SourceSense senseOfGloss(std::string_view gloss, const char* pos)
{
    SourceSense sense;
    sense.pos = QString::fromLatin1(pos);
    QStringList definitions;
    const QString text = QString::fromUtf8(gloss.data(), qsizetype(gloss.size())).trimmed();
    qsizetype i = 0;
    while (i < text.size()) {
        while (i < text.size() && (text[i] == u' ' || text[i] == u';'))
            ++i;
        if (i >= text.size())
            break;
        if (text[i] == u'"') {
            const qsizetype close = text.indexOf(u'"', i + 1);
            const qsizetype end = close < 0 ? text.size() : close;
            const QString example = text.mid(i + 1, end - i - 1).trimmed();
            if (!example.isEmpty())
                sense.examples.push_back(example);
            i = close < 0 ? text.size() : close + 1;
            // An attribution after the quote ("- Shakespeare") belongs to it.
            const qsizetype next = text.indexOf(QStringLiteral("; "), i);
            const QString rest = text.mid(i, (next < 0 ? text.size() : next) - i).trimmed();
            if (!rest.isEmpty() && !sense.examples.empty())
                sense.examples.back() += u' ' + rest;
            i = next < 0 ? text.size() : next;
        } else {
            const qsizetype next = text.indexOf(QStringLiteral("; "), i);
            const qsizetype end = next < 0 ? text.size() : next;
            definitions.append(text.mid(i, end - i).trimmed());
            i = end;
        }
    }
    sense.defEn = definitions.join(QStringLiteral("; "));
    return sense;
}

class Database {
public:
    explicit Database(QString folder) : folder_(std::move(folder)) {}

    void read(ImportSink& sink)
    {
        qint64 total = 0;
        for (const PartOfSpeech& pos : partsOfSpeech)
            total += QFileInfo(path("data.", pos.file)).size() + QFileInfo(path("index.", pos.file)).size();
        qint64 done = 0;
        for (const PartOfSpeech& pos : partsOfSpeech) {
            const QString dataPath = path("data.", pos.file);
            const QString indexPath = path("index.", pos.file);
            const QByteArray data = readWhole(dataPath);
            const QByteArray index = readWhole(indexPath);
            readIndex(pos, indexPath, index, dataPath, data);
            done += data.size() + index.size();
            sink.progress(done, total);
        }
        for (const QString& lemma : order_) {
            SourceEntry entry;
            entry.headword = lemma;
            entry.senses = std::move(senses_[lemma]);
            sink.entry(std::move(entry));
        }
        for (const PartOfSpeech& pos : partsOfSpeech)
            readExceptions(QString(folder_ + u'/' + QLatin1StringView(pos.file) + QStringLiteral(".exc")), sink);
    }

private:
    QString path(const char* prefix, const char* file) const
    {
        return folder_ + u'/' + QLatin1StringView(prefix) + QLatin1StringView(file);
    }

    // index.*: "lemma pos synset_cnt p_cnt [ptr...] sense_cnt tagsense_cnt offset..."
    void readIndex(const PartOfSpeech& pos, const QString& indexPath, const QByteArray& index, const QString& dataPath,
                   const QByteArray& data)
    {
        const std::string_view all(index.constData(), size_t(index.size()));
        const std::string_view dataView(data.constData(), size_t(data.size()));
        size_t at = 0;
        qint64 lineNumber = 0;
        while (at < all.size()) {
            size_t end = all.find('\n', at);
            if (end == std::string_view::npos)
                end = all.size();
            const std::string_view line = all.substr(at, end - at);
            at = end + 1;
            ++lineNumber;
            if (line.empty() || line.starts_with("  "))  // the licence text at the top
                continue;
            const std::vector<std::string_view> t = tokens(line);
            const QString where = QStringLiteral("line %1").arg(lineNumber);
            bool ok = false;
            const qsizetype synsets = t.size() > 2 ? QByteArray(t[2].data(), qsizetype(t[2].size())).toLongLong(&ok) : 0;
            if (!ok || synsets < 1)
                fail(indexPath, where, QStringLiteral("no synset count"));
            const qsizetype pointers = t.size() > 3 ? QByteArray(t[3].data(), qsizetype(t[3].size())).toLongLong(&ok) : 0;
            if (!ok || pointers < 0 || qsizetype(t.size()) != 4 + pointers + 2 + synsets)
                fail(indexPath, where, QStringLiteral("%1 fields do not match its counts").arg(t.size()));
            const QString lemma = wordOf(t[0]);
            auto [slot, inserted] = senses_.try_emplace(lemma);
            if (inserted)
                order_.append(lemma);
            for (qsizetype s = 0; s < synsets; ++s) {
                const std::string_view offset = t[size_t(4 + pointers + 2 + s)];
                slot->second.push_back(synsetAt(pos, dataPath, dataView, offset, indexPath, where));
            }
        }
    }

    // The data line at a byte offset: "offset lex_filenum ss_type w_cnt
    // word lex_id ... p_cnt [ptr...] [frames] | gloss".
    static SourceSense synsetAt(const PartOfSpeech& pos, const QString& dataPath, std::string_view data,
                                std::string_view offsetText, const QString& indexPath, const QString& where)
    {
        bool ok = false;
        const qint64 offset = QByteArray(offsetText.data(), qsizetype(offsetText.size())).toLongLong(&ok);
        if (!ok || offset < 0 || size_t(offset) >= data.size())
            fail(indexPath, where, QStringLiteral("synset offset %1 is past the end of %2").arg(QLatin1StringView(offsetText), dataPath));
        size_t end = data.find('\n', size_t(offset));
        if (end == std::string_view::npos)
            end = data.size();
        const std::string_view line = data.substr(size_t(offset), end - size_t(offset));
        const std::vector<std::string_view> t = tokens(line.substr(0, std::min<size_t>(line.size(), 40)));
        const char type = pos.type;
        const bool typeMatches = t.size() > 2 && t[2].size() == 1 && (t[2][0] == type || (type == 'a' && t[2][0] == 's'));
        if (t.empty() || t[0] != offsetText || !typeMatches)
            fail(dataPath, QStringLiteral("byte %1").arg(offset), QStringLiteral("no %1 synset starts here (named by %2, %3)")
                     .arg(QLatin1StringView(pos.file), indexPath, where));
        const size_t bar = line.find(" | ");
        const std::string_view gloss = bar == std::string_view::npos ? std::string_view() : line.substr(bar + 3);
        return senseOfGloss(gloss, pos.name);
    }

    // *.exc: "form headword [headword...]"; the first headword is taken.
    static void readExceptions(const QString& path, ImportSink& sink)
    {
        if (!QFileInfo::exists(path))
            return;
        const QByteArray bytes = readWhole(path);
        for (const QByteArray& line : bytes.split('\n')) {
            const std::vector<std::string_view> t = tokens(std::string_view(line.constData(), size_t(line.size())));
            if (t.size() >= 2)
                sink.wordForm(wordOf(t[0]), wordOf(t[1]));
        }
    }

    QString folder_;
    QStringList order_;
    std::unordered_map<QString, std::vector<SourceSense>> senses_;
};

}  // namespace

void readWordNet(const QString& path, ImportSink& sink)
{
    const QFileInfo info(path);
    const QString folder = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
    Database(folder).read(sink);
}

}  // namespace lexicorn::dictimport

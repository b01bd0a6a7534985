#include "lexicorn/dictionary/import/ecdict_reader.h"

#include "lexicorn/dictionary/import/csv_rows.h"
#include "lexicorn/dictionary/import/ecdict_record.h"
#include "lexicorn/dictionary/import/html_senses.h"
#include "lexicorn/dictionary/import/inflections.h"
#include "lexicorn/dictionary/import/utf8_text.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

namespace lexicorn::dictimport {

namespace {

using ecdict::Column;
using ecdict::ColumnCount;

constexpr std::array<std::string_view, ColumnCount> columnNames{
    "word", "phonetic", "definition", "translation", "pos", "collins", "oxford", "tag", "bnc", "frq", "exchange", "detail", "audio"};

QString message(const QString& name, qint64 line, const QString& what)
{
    return QStringLiteral("%1:%2: %3").arg(name).arg(line).arg(what);
}

// ---------------------------------------------------------------------------
// Rows the UTF-8 path leaves alone (text beyond the helpers of utf8_text.h,
// a sound file) are read through QString, one SourceEntry each.

QString text(std::string_view field)
{
    return QString::fromUtf8(field.data(), qsizetype(field.size()));
}

// The lines of a field; ECDICT writes its breaks as the two characters "\n".
QStringList linesOf(std::string_view field)
{
    QString all = text(field);
    all.replace(QStringLiteral("\\r\\n"), QStringLiteral("\n"));
    all.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
    QStringList lines;
    for (QString& line : all.split(u'\n')) {
        line = line.trimmed();
        if (!line.isEmpty())
            lines.append(line);
    }
    return lines;
}

struct PosLine {
    QString pos;
    QString text;
    bool used = false;
};

std::vector<PosLine> posLines(std::string_view field)
{
    std::vector<PosLine> lines;
    for (QString line : linesOf(field)) {
        QString pos = takeLeadingPartOfSpeech(line);
        if (!line.isEmpty())
            lines.push_back({std::move(pos), std::move(line)});
    }
    return lines;
}

// The English definition beside a translation line: the first unused one of
// the same part of speech, else of the same kind (vt. beside v.).
PosLine* englishFor(std::vector<PosLine>& english, const QString& pos)
{
    for (PosLine& line : english) {
        if (!line.used && line.pos == pos)
            return &line;
    }
    const WordClass wanted = wordClassOf(pos);
    if (wanted == WordClass::Unknown || wanted == WordClass::Other)
        return nullptr;
    for (PosLine& line : english) {
        if (!line.used && wordClassOf(line.pos) == wanted)
            return &line;
    }
    return nullptr;
}

std::vector<SourceSense> sensesOf(std::string_view definition, std::string_view translation)
{
    std::vector<PosLine> english = posLines(definition);
    std::vector<SourceSense> senses;
    for (const PosLine& chinese : posLines(translation)) {
        SourceSense sense;
        sense.pos = chinese.pos;
        sense.defCn = chinese.text;
        if (PosLine* beside = englishFor(english, chinese.pos)) {
            beside->used = true;
            sense.defEn = beside->text;
        }
        senses.push_back(std::move(sense));
    }
    for (const PosLine& line : english) {
        if (!line.used)
            senses.push_back(SourceSense{line.pos, line.text, {}, {}});
    }
    return senses;
}

using QStringForms = std::vector<std::pair<QString, QString>>;

// "p:went/d:gone/i:going/3:goes" names the word's forms; "0:go" names the
// headword the word itself is a form of. "1" only says which kind of form
// that is, and is no word.
void exchangeForms(const QString& word, std::string_view field, QStringForms& forms)
{
    for (const QString& item : text(field).split(u'/', Qt::SkipEmptyParts)) {
        const qsizetype colon = item.indexOf(u':');
        if (colon != 1)
            continue;
        const QChar kind = item[0];
        const QString value = item.mid(2).trimmed();
        if (value.isEmpty())
            continue;
        if (kind == u'0')
            forms.emplace_back(word, value);
        else if (QStringView(u"pdi3rts").contains(kind))
            forms.emplace_back(value, word);
    }
}

// ECDICT writes some IPA symbols with the Cyrillic letters that look like
// them ("ә" for "ə"); the popup shows the IPA ones.
QString ipaOf(QString phonetic)
{
    static const std::pair<char16_t, char16_t> lookalikes[] = {
        {u'\u04D9', u'\u0259'},  // ә -> ə
        {u'\u04D8', u'\u018F'},  // Ә -> Ə
        {u'\u0430', u'a'},       // а
        {u'\u0435', u'e'},       // е
        {u'\u043E', u'o'},       // о
        {u'\u0440', u'p'},       // р
        {u'\u0441', u'c'},       // с
        {u'\u0443', u'y'},       // у
        {u'\u0445', u'x'},       // х
        {u'\u0456', u'i'},       // і
        {u'\u0458', u'j'},       // ј
        {u'\u0455', u's'},       // ѕ
    };
    for (QChar& c : phonetic) {
        if (c.unicode() < 0x0400 || c.unicode() > 0x04FF)
            continue;
        for (const auto& [cyrillic, ipa] : lookalikes) {
            if (c.unicode() == cyrillic)
                c = QChar(ipa);
        }
    }
    return phonetic;
}

// A row read through QString: its forms, and its entry when it has senses.
struct QStringRow {
    QStringForms forms;
    std::optional<SourceEntry> entry;
};

QStringRow readThroughQString(const ecdict::Fields& fields, const QString& word)
{
    QStringRow row;
    SourceEntry entry;
    entry.headword = word;
    entry.readings = ipaOf(text(fields[ecdict::Phonetic]).trimmed());
    const int stars = text(fields[ecdict::Collins]).trimmed().toInt();
    if (stars > 0 && stars <= 5)
        entry.stars = QString(stars, QChar(0x25CF));  // ●
    entry.senses = sensesOf(fields[ecdict::Definition], fields[ecdict::Translation]);
    entry.sound = text(fields[ecdict::Audio]).trimmed();
    exchangeForms(word, fields[ecdict::Exchange], row.forms);
    if (!entry.senses.empty())
        row.entry = std::move(entry);
    return row;
}

// ---------------------------------------------------------------------------
// Rows in chunks: the calling thread splits the file into rows and hands
// them to the writer; worker threads turn chunks of rows into records.

// Which field holds which column, from the header row.
struct Layout {
    std::array<int, ColumnCount> columns{};
    size_t expectedFields = 0;  // 0: no header, no count to hold rows to
    EcdictRows rows = EcdictRows::Fast;
};

Layout standardLayout()
{
    Layout layout;
    for (int c = 0; c < ColumnCount; ++c)
        layout.columns[size_t(c)] = c;
    return layout;
}

// What a row gives, in the order the writer takes it.
struct RowResult {
    size_t end = 0;   // offset just after the row, for progress
    bool blank = false;
    QString failure;  // the row cannot be imported: the import stops there
    QString warning;  // a row short of fields
    size_t formsBegin = 0;  // its forms in Chunk::forms (UTF-8 path)
    size_t formsEnd = 0;
    ecdict::Record record;
    int qstringRow = -1;    // its place in Chunk::qstringRows, if read through QString
};

struct Chunk {
    struct Row {
        qint64 line = 0;
        size_t end = 0;
        size_t firstField = 0;
        size_t fieldCount = 0;
    };
    std::vector<CsvField> fields;
    std::vector<Row> rows;
    std::exception_ptr csvError;  // the rows stop before a field the file breaks off in

    std::string text;  // record JSON and forms of the rows read as UTF-8
    std::vector<ecdict::FormSpan> forms;
    std::vector<QStringRow> qstringRows;
    std::vector<RowResult> results;
};

constexpr size_t chunkBytes = size_t(1) << 20;

// Turns the rows of a chunk into results; never throws for a bad row (the
// writer throws when it gets to it, after the rows before it).
class ChunkConverter {
public:
    ChunkConverter(const Layout& layout, const QString& name) : layout_(layout), name_(name) {}

    void convert(Chunk& chunk)
    {
        chunk.results.resize(chunk.rows.size());
        chunk.text.reserve(chunkBytes * 3);
        for (size_t r = 0; r < chunk.rows.size(); ++r) {
            const Chunk::Row& row = chunk.rows[r];
            convertRow(chunk, row, chunk.results[r]);
            chunk.results[r].end = row.end;
        }
    }

private:
    void convertRow(Chunk& chunk, const Chunk::Row& row, RowResult& result)
    {
        const CsvField* fields = chunk.fields.data() + row.firstField;
        const size_t count = row.fieldCount;
        if (count == 1 && fields[0].raw.empty()) {
            result.blank = true;
            return;
        }
        const size_t expected = layout_.expectedFields;
        if (expected && count > expected) {
            result.failure = message(name_, row.line, QStringLiteral("%1 fields, but the header names %2").arg(count).arg(expected));
            return;
        }
        // ECDICT's own sample has rows cut short: they give what they hold.
        if (expected && count < expected)
            result.warning = QStringLiteral("%1 line %2: %3 of the header's %4 fields; imported with what it holds")
                                 .arg(name_)
                                 .arg(row.line)
                                 .arg(count)
                                 .arg(expected);
        ecdict::Fields values;
        for (int c = 0; c < ColumnCount; ++c) {
            const int at = layout_.columns[size_t(c)];
            values[size_t(c)] = at >= 0 && size_t(at) < count ? fields[at].text(scratch_[size_t(c)]) : std::string_view();
        }
        if (layout_.rows == EcdictRows::Fast && ecdict::RecordMaker::canMake(values)) {
            const std::string_view word = utf8::trimmed(values[ecdict::Word]);
            if (word.empty())
                return noWord(result, row);
            result.formsBegin = chunk.forms.size();
            result.record = maker_.make(values, word, chunk.text, chunk.forms);
            result.formsEnd = chunk.forms.size();
            return;
        }
        const QString word = text(values[ecdict::Word]).trimmed();
        if (word.isEmpty())
            return noWord(result, row);
        result.qstringRow = int(chunk.qstringRows.size());
        chunk.qstringRows.push_back(readThroughQString(values, word));
    }

    void noWord(RowResult& result, const Chunk::Row& row) const
    {
        result.failure = message(name_, row.line, QStringLiteral("a row without a word"));
    }

    const Layout& layout_;
    const QString& name_;
    ecdict::RecordMaker maker_;
    std::array<std::string, ColumnCount> scratch_;  // fields with doubled quotes, undoubled
};

// Hands the results of a chunk to the writer, row by row, and throws at the
// first row that cannot be imported.
class ChunkMerger {
public:
    ChunkMerger(CacheWriter& writer, qint64 total) : writer_(writer), total_(total) {}

    void merge(Chunk& chunk)
    {
        const std::string_view text = writer_.keepText(std::move(chunk.text));
        for (RowResult& result : chunk.results) {
            if (result.blank)
                continue;
            if (!result.failure.isEmpty())
                throw ImportError(result.failure.toStdString());
            if (!result.warning.isEmpty())
                writer_.warning(result.warning);
            if (result.qstringRow >= 0)
                addQStringRow(chunk.qstringRows[size_t(result.qstringRow)]);
            else
                addRow(result, chunk.forms, text);
            if (result.end - lastReport_ >= chunkBytes) {
                lastReport_ = result.end;
                writer_.progress(qint64(lastReport_), total_);
            }
        }
        if (chunk.csvError)
            std::rethrow_exception(chunk.csvError);
    }

private:
    void addRow(const RowResult& result, const std::vector<ecdict::FormSpan>& forms, std::string_view text)
    {
        for (size_t f = result.formsBegin; f < result.formsEnd; ++f)
            writer_.addWordForm(forms[f].form.in(text), forms[f].headword.in(text));
        const ecdict::Record& record = result.record;
        if (record.kind == ecdict::Record::Made)
            writer_.addRecord(record.headword.in(text), record.json.in(text), record.wordClasses);
        else if (record.kind == ecdict::Record::Skipped)
            writer_.skipRecord();
    }

    void addQStringRow(QStringRow& row)
    {
        for (const auto& [form, headword] : row.forms)
            writer_.wordForm(form, headword);
        if (row.entry)
            writer_.entry(std::move(*row.entry));
    }

    CacheWriter& writer_;
    qint64 total_;
    size_t lastReport_ = 0;
};

// Worker threads converting chunks while the calling thread reads rows and
// merges the converted chunks in file order. At most a few chunks are in
// hand at a time, so memory stays that of the records.
class ChunkPipeline {
public:
    ChunkPipeline(const Layout& layout, const QString& name, ChunkMerger& merger)
        : layout_(layout), name_(name), merger_(merger), ownConverter_(layout, name)
    {
    }

    ~ChunkPipeline()
    {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        workAvailable_.notify_all();
        for (std::thread& worker : workers_)
            worker.join();
    }

    void add(std::unique_ptr<Chunk> chunk)
    {
        if (!inHand_.empty() && workers_.empty())
            startWorkers();  // a file of one chunk is read on the calling thread alone
        {
            std::lock_guard lock(mutex_);
            inHand_.push_back({std::move(chunk), false, false});
            waiting_.push_back(&inHand_.back());
        }
        workAvailable_.notify_one();
        mergeFinished(maxInHand());
    }

    // Converts what no worker has taken, then merges everything in order.
    void finish()
    {
        while (Entry* entry = take())
            convert(*entry, ownConverter_);
        mergeFinished(0);
    }

private:
    struct Entry {
        std::unique_ptr<Chunk> chunk;
        bool taken = false;
        bool done = false;
    };

    size_t maxInHand() const { return 4 * std::max<size_t>(1, workers_.size()); }

    void startWorkers()
    {
        const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
        for (unsigned i = 0; i < cores; ++i)
            workers_.emplace_back([this] { work(); });
    }

    Entry* take()
    {
        std::lock_guard lock(mutex_);
        if (waiting_.empty())
            return nullptr;
        Entry* entry = waiting_.front();
        waiting_.pop_front();
        entry->taken = true;
        return entry;
    }

    void convert(Entry& entry, ChunkConverter& converter)
    {
        converter.convert(*entry.chunk);
        {
            std::lock_guard lock(mutex_);
            entry.done = true;
        }
        chunkDone_.notify_all();
    }

    void work()
    {
        ChunkConverter converter(layout_, name_);
        for (;;) {
            Entry* entry = nullptr;
            {
                std::unique_lock lock(mutex_);
                workAvailable_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
                if (stopping_)
                    return;
                entry = waiting_.front();
                waiting_.pop_front();
                entry->taken = true;
            }
            convert(*entry, converter);
        }
    }

    // Merges the chunks at the front that are converted, waiting for them
    // while more than `keep` chunks are in hand.
    void mergeFinished(size_t keep)
    {
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                if (inHand_.empty())
                    return;
                if (inHand_.size() > keep)
                    chunkDone_.wait(lock, [this] { return inHand_.front().done; });
                else if (!inHand_.front().done)
                    return;
            }
            merger_.merge(*inHand_.front().chunk);
            std::lock_guard lock(mutex_);
            inHand_.pop_front();
        }
    }

    const Layout& layout_;
    const QString& name_;
    ChunkMerger& merger_;
    ChunkConverter ownConverter_;
    std::vector<std::thread> workers_;
    std::mutex mutex_;
    std::condition_variable workAvailable_;
    std::condition_variable chunkDone_;
    std::deque<Entry> inHand_;  // in file order
    std::deque<Entry*> waiting_;
    bool stopping_ = false;
};

// The header row names the columns; without one, they stand in ECDICT's order.
Layout layoutOf(const std::vector<CsvField>& header)
{
    Layout layout;
    layout.columns.fill(-1);
    std::string scratch;
    for (size_t i = 0; i < header.size(); ++i) {
        const std::string_view name = header[i].text(scratch);
        for (int c = 0; c < ColumnCount; ++c) {
            if (name == columnNames[size_t(c)])
                layout.columns[size_t(c)] = int(i);
        }
    }
    layout.expectedFields = header.size();
    return layout;
}

bool isBlank(const std::vector<CsvField>& fields)
{
    return fields.size() == 1 && fields[0].raw.empty();
}

}  // namespace

void readEcdictCsvBytes(const QByteArray& bytes, const QString& name, CacheWriter& writer, EcdictRows rowReading)
{
    CsvRows rows(std::string_view(bytes.constData(), size_t(bytes.size())), name);
    std::vector<CsvField> fields;
    // The first row that is not blank is the header, or the first headword.
    std::optional<Layout> layout;
    std::string scratch;
    bool headerless = false;
    while (!layout && rows.next(fields)) {
        if (isBlank(fields))
            continue;
        if (fields[0].text(scratch) == columnNames[ecdict::Word]) {
            layout = layoutOf(fields);
        } else {
            layout = standardLayout();
            headerless = true;
        }
    }
    if (!layout) {
        writer.progress(bytes.size(), bytes.size());
        return;
    }

    layout->rows = rowReading;
    ChunkMerger merger(writer, bytes.size());
    ChunkPipeline pipeline(*layout, name, merger);
    auto chunk = std::make_unique<Chunk>();
    size_t chunkStart = rows.offset();
    const auto addRow = [&] {
        chunk->rows.push_back({rows.rowLine(), rows.offset(), chunk->fields.size(), fields.size()});
        chunk->fields.insert(chunk->fields.end(), fields.begin(), fields.end());
    };
    if (headerless)
        addRow();
    try {
        while (rows.next(fields)) {
            addRow();
            if (rows.offset() - chunkStart >= chunkBytes) {
                pipeline.add(std::move(chunk));
                chunk = std::make_unique<Chunk>();
                chunkStart = rows.offset();
            }
        }
    } catch (const ImportError&) {
        chunk->csvError = std::current_exception();
    }
    pipeline.add(std::move(chunk));
    pipeline.finish();
    writer.progress(bytes.size(), bytes.size());
}

void readEcdictCsv(const QString& csvPath, CacheWriter& writer)
{
    QFile file(csvPath);
    if (!file.open(QIODevice::ReadOnly))
        throw ImportError(QStringLiteral("%1: cannot be read: %2").arg(csvPath, file.errorString()).toStdString());
    // Mapped rather than read: no copy of a file of some 200 MB. Where the
    // file cannot be mapped (empty, or a pipe), it is read.
    if (const uchar* mapped = file.size() > 0 ? file.map(0, file.size()) : nullptr) {
        const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), qsizetype(file.size()));
        readEcdictCsvBytes(bytes, csvPath, writer);
        return;
    }
    readEcdictCsvBytes(file.readAll(), csvPath, writer);
}

}  // namespace lexicorn::dictimport

#include "lexicorn/dictionary/import/ecdict_reader.h"

#include "lexicorn/dictionary/import/html_senses.h"
#include "lexicorn/dictionary/import/inflections.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport {

namespace {

enum Column { Word, Phonetic, Definition, Translation, Pos, Collins, Oxford, Tag, Bnc, Frq, Exchange, Detail, Audio, ColumnCount };

constexpr std::array<std::string_view, ColumnCount> columnNames{
    "word", "phonetic", "definition", "translation", "pos", "collins", "oxford", "tag", "bnc", "frq", "exchange", "detail", "audio"};

[[noreturn]] void fail(const QString& name, qint64 line, const QString& what)
{
    throw ImportError(QStringLiteral("%1:%2: %3").arg(name).arg(line).arg(what).toStdString());
}

// Splits CSV bytes into rows of fields, tracking the line each row starts on.
class CsvRows {
public:
    CsvRows(std::string_view bytes, QString name) : bytes_(bytes), name_(std::move(name))
    {
        if (bytes_.starts_with("\xEF\xBB\xBF"))
            pos_ = 3;
    }

    // Fills fields with the next row; false at the end of the file.
    bool next(std::vector<std::string>& fields)
    {
        fields.clear();
        if (pos_ >= bytes_.size())
            return false;
        rowLine_ = line_;
        std::string field;
        for (;;) {
            if (pos_ < bytes_.size() && bytes_[pos_] == '"') {
                quoted(field);
            } else {
                size_t end = bytes_.find_first_of(",\n\r\"", pos_);
                if (end == std::string_view::npos)
                    end = bytes_.size();
                if (end < bytes_.size() && bytes_[end] == '"')
                    fail(name_, line_, QStringLiteral("a quote inside an unquoted field (column %1)").arg(fields.size() + 1));
                field.assign(bytes_.substr(pos_, end - pos_));
                pos_ = end;
            }
            fields.push_back(std::move(field));
            field.clear();
            if (pos_ >= bytes_.size())
                return true;
            const char c = bytes_[pos_++];
            if (c == ',')
                continue;
            if (c == '\r' && pos_ < bytes_.size() && bytes_[pos_] == '\n')
                ++pos_;
            ++line_;
            return true;
        }
    }

    qint64 rowLine() const { return rowLine_; }
    size_t offset() const { return pos_; }

private:
    void quoted(std::string& field)
    {
        const qint64 startLine = line_;
        ++pos_;
        for (;;) {
            const size_t quote = bytes_.find('"', pos_);
            if (quote == std::string_view::npos)
                fail(name_, startLine, QStringLiteral("a quoted field is never closed"));
            const std::string_view part = bytes_.substr(pos_, quote - pos_);
            line_ += qint64(std::count(part.begin(), part.end(), '\n'));
            field.append(part);
            pos_ = quote + 1;
            if (pos_ < bytes_.size() && bytes_[pos_] == '"') {  // "" stands for one quote
                field += '"';
                ++pos_;
                continue;
            }
            if (pos_ < bytes_.size() && bytes_[pos_] != ',' && bytes_[pos_] != '\n' && bytes_[pos_] != '\r')
                fail(name_, line_, QStringLiteral("text after the closing quote of a field"));
            return;
        }
    }

    std::string_view bytes_;
    QString name_;
    size_t pos_ = 0;
    qint64 line_ = 1;
    qint64 rowLine_ = 1;
};

QString text(const std::string& field)
{
    return QString::fromUtf8(field.data(), qsizetype(field.size()));
}

// The lines of a field; ECDICT writes its breaks as the two characters "\n".
QStringList linesOf(const std::string& field)
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

std::vector<PosLine> posLines(const std::string& field)
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

std::vector<SourceSense> sensesOf(const std::string& definition, const std::string& translation)
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

// "p:went/d:gone/i:going/3:goes" names the word's forms; "0:go" names the
// headword the word itself is a form of. "1" only says which kind of form
// that is, and is no word.
void exchangeForms(const QString& word, const std::string& field, ImportSink& sink)
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
            sink.wordForm(word, value);
        else if (QStringView(u"pdi3rts").contains(kind))
            sink.wordForm(value, word);
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

std::array<int, ColumnCount> standardColumns()
{
    std::array<int, ColumnCount> columns{};
    for (int c = 0; c < ColumnCount; ++c)
        columns[size_t(c)] = c;
    return columns;
}

}  // namespace

void readEcdictCsvBytes(const QByteArray& bytes, const QString& name, ImportSink& sink)
{
    CsvRows rows(std::string_view(bytes.constData(), size_t(bytes.size())), name);
    std::vector<std::string> fields;
    std::array<int, ColumnCount> columns = standardColumns();
    size_t expectedFields = 0;
    bool first = true;
    size_t lastReport = 0;
    const qint64 total = bytes.size();
    while (rows.next(fields)) {
        if (fields.size() == 1 && fields[0].empty())
            continue;  // a blank line
        if (first) {
            first = false;
            if (fields[0] == columnNames[Word]) {  // the header: columns by their names
                columns.fill(-1);
                for (size_t i = 0; i < fields.size(); ++i) {
                    for (int c = 0; c < ColumnCount; ++c) {
                        if (fields[i] == columnNames[size_t(c)])
                            columns[size_t(c)] = int(i);
                    }
                }
                expectedFields = fields.size();
                continue;
            }
        }
        if (expectedFields && fields.size() > expectedFields)
            fail(name, rows.rowLine(), QStringLiteral("%1 fields, but the header names %2").arg(fields.size()).arg(expectedFields));
        // ECDICT's own sample has rows cut short: they give what they hold.
        if (expectedFields && fields.size() < expectedFields)
            sink.warning(QStringLiteral("%1 line %2: %3 of the header's %4 fields; imported with what it holds")
                             .arg(name)
                             .arg(rows.rowLine())
                             .arg(fields.size())
                             .arg(expectedFields));
        const auto field = [&](Column c) -> const std::string& {
            static const std::string none;
            const int at = columns[size_t(c)];
            return at >= 0 && size_t(at) < fields.size() ? fields[size_t(at)] : none;
        };
        const QString word = text(field(Word)).trimmed();
        if (word.isEmpty())
            fail(name, rows.rowLine(), QStringLiteral("a row without a word"));
        SourceEntry entry;
        entry.headword = word;
        entry.readings = ipaOf(text(field(Phonetic)).trimmed());
        const int stars = text(field(Collins)).trimmed().toInt();
        if (stars > 0 && stars <= 5)
            entry.stars = QString(stars, QChar(0x25CF));  // ●
        entry.senses = sensesOf(field(Definition), field(Translation));
        entry.sound = text(field(Audio)).trimmed();
        exchangeForms(word, field(Exchange), sink);
        if (!entry.senses.empty())
            sink.entry(std::move(entry));
        if (rows.offset() - lastReport >= (1u << 20)) {
            lastReport = rows.offset();
            sink.progress(qint64(lastReport), total);
        }
    }
    sink.progress(total, total);
}

void readEcdictCsv(const QString& csvPath, ImportSink& sink)
{
    QFile file(csvPath);
    if (!file.open(QIODevice::ReadOnly))
        throw ImportError(QStringLiteral("%1: cannot be read: %2").arg(csvPath, file.errorString()).toStdString());
    readEcdictCsvBytes(file.readAll(), csvPath, sink);
}

}  // namespace lexicorn::dictimport

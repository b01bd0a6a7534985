#include "scan_books.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace lexicorn::testing {

namespace {

// No page numbers or headers: the blank page stays blank.
const char* const prose = R"(.ds CH
.LP
Reading in a second language is slow at first. Every page brings words that
the reader has never met, and each one asks for a decision: guess it from the
sentence, or stop and look it up. Good readers do both. They guess when the
meaning is clear, and they check the dictionary when a word keeps coming back
or when the story turns on it.
.PP
A scanned book makes this harder. Its pages are pictures, so nothing can be
selected, and the reader would have to type every unknown word by hand.
Optical character recognition turns the picture back into text, with the
place of every letter, so that a word can be chosen with the mouse as on any
other page of the book.
.PP
The old harbour town had three bakeries, a small library and a market that
opened before dawn. Fishermen mended their nets on the wall while children ran
along the beach, and in the evening the lamps were lit one by one.
.bp
\&
.bp
.LP
Small steps add up. A page a day is a book a month, and the words found on
the way stay with the reader.
)";

// Runs the program in the folder, its standard output into the file if one is named.
void run(const QString& program, const QStringList& arguments, const QString& folder, const QString& output = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    if (!output.isEmpty())
        process.setStandardOutputFile(output);
    process.start(program, arguments);
    ASSERT_TRUE(process.waitForStarted(10000)) << program.toStdString() << " is missing (scripts/setup installs it)";
    ASSERT_TRUE(process.waitForFinished(120000)) << program.toStdString();
    ASSERT_EQ(process.exitStatus(), QProcess::NormalExit) << program.toStdString();
    ASSERT_EQ(process.exitCode(), 0) << program.toStdString() << ": " << process.readAllStandardError().toStdString();
}

void make(ScanBooks& books, const QString& folder)
{
    const QDir dir(folder);
    QFile source(dir.filePath(QStringLiteral("prose.ms")));
    ASSERT_TRUE(source.open(QIODevice::WriteOnly));
    source.write(prose);
    source.close();

    books.text = dir.filePath(QStringLiteral("text.pdf"));
    books.scan = dir.filePath(QStringLiteral("scan.pdf"));
    books.turnedText = dir.filePath(QStringLiteral("turned-text.pdf"));
    books.turnedScan = dir.filePath(QStringLiteral("turned-scan.pdf"));
    ASSERT_NO_FATAL_FAILURE(run(QStringLiteral("groff"), {"-ms", "-Tpdf", "-P-pletter", "prose.ms"}, folder, books.text));
    // Grey pictures, as a book scanner makes them; a greymap carries no
    // resolution, so img2pdf is told it.
    ASSERT_NO_FATAL_FAILURE(run(QStringLiteral("pdftoppm"), {"-r", "300", "-gray", "text.pdf", "page"}, folder));
    const QStringList pictures = dir.entryList({QStringLiteral("page-*.pgm")}, QDir::Files, QDir::Name);
    ASSERT_EQ(pictures.size(), 3) << pictures.join(u' ').toStdString();
    ASSERT_NO_FATAL_FAILURE(
        run(QStringLiteral("img2pdf"), QStringList{"--imgsize", "300dpix300dpi"} + pictures + QStringList{"-o", "scan.pdf"}, folder));
    ASSERT_NO_FATAL_FAILURE(run(QStringLiteral("qpdf"), {"--rotate=+90", "text.pdf", "turned-text.pdf"}, folder));
    ASSERT_NO_FATAL_FAILURE(run(QStringLiteral("qpdf"), {"--rotate=+90", "scan.pdf", "turned-scan.pdf"}, folder));
}

}  // namespace

const ScanBooks& scanBooks()
{
    static std::unique_ptr<QTemporaryDir> folder;
    static ScanBooks books;
    static bool made = false;
    if (!folder) {
        folder = std::make_unique<QTemporaryDir>();
        make(books, folder->path());
        made = !::testing::Test::HasFatalFailure();
    }
    EXPECT_TRUE(made) << "the test books could not be made";
    return books;
}

std::vector<PageWord> wordsOf(const PageLines& lines)
{
    std::vector<PageWord> words;
    for (const CharLine& line : lines) {
        bool inWord = false;
        for (const CharRecord& record : line) {
            if (record.ch == u' ') {
                inWord = false;
                continue;
            }
            if (!inWord)
                words.push_back(PageWord{{}, record.rect});
            words.back().text.append(QChar(record.ch));
            words.back().box = words.back().box.united(record.rect);
            inWord = true;
        }
    }
    return words;
}

QString lettersOf(const QString& text)
{
    QString letters;
    for (const QChar c : text.normalized(QString::NormalizationForm_KC)) {
        if (c.isLetterOrNumber())
            letters.append(c.toLower());
    }
    return letters;
}

std::vector<std::pair<std::size_t, std::size_t>> matchWords(const std::vector<PageWord>& a, const std::vector<PageWord>& b)
{
    std::vector<QString> la, lb;
    for (const PageWord& w : a)
        la.push_back(lettersOf(w.text));
    for (const PageWord& w : b)
        lb.push_back(lettersOf(w.text));
    // Longest common subsequence, table from the ends.
    std::vector<std::vector<int>> length(la.size() + 1, std::vector<int>(lb.size() + 1, 0));
    for (std::size_t i = la.size(); i-- > 0;) {
        for (std::size_t j = lb.size(); j-- > 0;) {
            length[i][j] = !la[i].isEmpty() && la[i] == lb[j] ? length[i + 1][j + 1] + 1
                                                              : std::max(length[i + 1][j], length[i][j + 1]);
        }
    }
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0, j = 0; i < la.size() && j < lb.size();) {
        if (!la[i].isEmpty() && la[i] == lb[j]) {
            pairs.emplace_back(i++, j++);
        } else if (length[i + 1][j] >= length[i][j + 1]) {
            ++i;
        } else {
            ++j;
        }
    }
    return pairs;
}

QString textOf(const CharLine& line)
{
    QString text;
    for (const CharRecord& record : line)
        text.append(QChar(record.ch));
    return text;
}

bool sameLines(const PageLines& a, const PageLines& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const CharLine& x, const CharLine& y) {
        return std::equal(x.begin(), x.end(), y.begin(), y.end(),
                          [](const CharRecord& p, const CharRecord& q) { return p.ch == q.ch && p.rect == q.rect; });
    });
}

QString md5Of(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Md5);
    hash.addData(&file);
    return QString::fromLatin1(hash.result().toHex());
}

ScopedEnvironment::ScopedEnvironment(const char* name, const QString& value)
    : name_(name), previous_(qgetenv(name)), had_(qEnvironmentVariableIsSet(name))
{
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, value.toLocal8Bit());
}

ScopedEnvironment::~ScopedEnvironment()
{
    if (had_)
        qputenv(name_, previous_);
    else
        qunsetenv(name_);
}

}  // namespace lexicorn::testing

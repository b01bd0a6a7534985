// make-sample-book: turns the sample book text into a small A5 PDF.
//
//   make-sample-book INPUT.txt OUTPUT.pdf
//
// The input is UTF-8 plain text with a few conventions:
//
//   # Title        The first line. Drawn large and centred at the top of page 1.
//   (blank line)   Separates paragraphs. Single line breaks inside a paragraph
//                  are treated as spaces.
//   > text         A paragraph whose first line starts with "> " is set as an
//                  indented block (used for the Chinese note).
//   vocab{-}ulary  A hyphenation point. The word is broken here, with "-" at the
//                  end of the first line and the rest on the next line. The
//                  sample book exists partly to exercise de-hyphenation, so a
//                  marked word is always broken: if it would fit whole, the line
//                  still ends at the mark (the line is then justified a little
//                  wider). If not even the first part fits on the line, the tool
//                  stops with an error and the text has to be adjusted.
//
// Lines are broken by our own greedy breaker (fill each line with as many
// words as fit) rather than by QTextDocument, so that the layout only depends
// on the text and the font metrics and stays the same from run to run.
// Paragraph lines are justified, except for the last line of each paragraph.
// Latin text uses DejaVu Serif; Chinese uses Noto Serif CJK SC (falling back
// to Noto Sans CJK SC), and Chinese may break between any two characters.
//
// After Qt has written the file, two in-place fixes are applied (both keep
// every byte offset, so the cross-reference table stays valid):
//   - Qt builds each font's ToUnicode map by giving a glyph the lowest code
//     point that maps to it. Noto CJK shares glyphs between the Kangxi radicals
//     (U+2F00...) and common ideographs such as 十 and 一, so text copied from
//     the PDF would come out as "⼗" instead of "十". We rewrite those entries
//     to the characters the book actually uses.
//   - The creation date is replaced by a fixed one, so regenerating the PDF
//     from the same text gives the same bytes.

#include <QFile>
#include <QFont>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHash>
#include <QHashFunctions>
#include <QMap>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QRawFont>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr int kResolution = 1200;  // device units per inch for QPdfWriter

// Page geometry and type sizes in points.
constexpr qreal kMarginLeft = 50;
constexpr qreal kMarginRight = 50;
constexpr qreal kMarginTop = 54;
constexpr qreal kMarginBottom = 60;
constexpr qreal kBodySize = 10.5;
constexpr qreal kTitleSize = 18;
constexpr qreal kFolioSize = 8.5;
constexpr qreal kLineHeight = 15.5;      // baseline to baseline
constexpr qreal kParagraphGap = 3;       // extra space between paragraphs
constexpr qreal kIndent = 16;            // first-line indent of body paragraphs
constexpr qreal kBlockIndent = 24;       // left and right inset of "> " blocks
constexpr qreal kBlockGap = 6;           // extra space around "> " blocks
constexpr qreal kTitleGap = 34;          // from the title baseline to the first line

qreal pt(qreal points) { return points * kResolution / 72.0; }

const QString kHyphenMark = QStringLiteral("{-}");

[[noreturn]] void fail(const QString &message)
{
    std::fprintf(stderr, "make-sample-book: %s\n", qPrintable(message));
    std::exit(1);
}

bool isCjk(QChar c)
{
    const ushort u = c.unicode();
    return (u >= 0x2E80 && u <= 0x9FFF) || (u >= 0xF900 && u <= 0xFAFF) ||
           (u >= 0xFF00 && u <= 0xFFEF);
}

// Chinese punctuation that must not start a line; it stays with the character
// before it.
bool isCjkClosing(QChar c)
{
    return QStringLiteral("。，、；：！？）」』”").contains(c);
}

enum FontRole { LatinFont = 0, CjkFont = 1 };

// One unbreakable unit of a paragraph: a Latin word, or one Chinese character
// together with any closing punctuation after it.
struct Segment {
    QString text;
    FontRole font = LatinFont;
    bool spaceBefore = false;  // a space separated it from the previous segment
    int hyphenAt = -1;         // index of a {-} mark inside text, or -1
};

struct Paragraph {
    bool block = false;
    bool firstAfterTitle = false;
    std::vector<Segment> segments;
};

struct PlacedPiece {
    QString text;
    FontRole font;
    qreal glue;       // natural space before this piece (0 for the first one)
    bool stretch;     // the glue before this piece may grow when justifying
};

struct Line {
    std::vector<PlacedPiece> pieces;
    qreal left = 0;       // offset from the left margin
    qreal width = 0;      // width available to this line
    bool justify = true;
    bool firstOfParagraph = false;
    qreal gapBefore = 0;  // vertical space added before this line
};

struct Book {
    QString title;
    std::vector<Paragraph> paragraphs;
};

Book parseBook(const QString &text)
{
    Book book;
    QStringList lines = text.split(QLatin1Char('\n'));
    if (lines.isEmpty() || !lines.first().startsWith(QLatin1String("# ")))
        fail(QStringLiteral("the first line must be the title, written as \"# Title\""));
    book.title = lines.takeFirst().mid(2).trimmed();

    QStringList current;
    auto flush = [&] {
        if (current.isEmpty())
            return;
        Paragraph para;
        QString joined = current.join(QLatin1Char(' '));
        if (joined.startsWith(QLatin1String("> "))) {
            para.block = true;
            joined = joined.mid(2);
        }
        para.firstAfterTitle = book.paragraphs.empty();

        // Split into words at spaces, then split each word further at every
        // Chinese character so that Chinese can break anywhere.
        const QStringList words = joined.split(QRegularExpression(QStringLiteral("\\s+")),
                                               Qt::SkipEmptyParts);
        for (const QString &word : words) {
            bool first = true;
            int i = 0;
            while (i < word.size()) {
                Segment seg;
                seg.spaceBefore = first && !para.segments.empty();
                first = false;
                if (isCjk(word[i]) && !isCjkClosing(word[i])) {
                    seg.font = CjkFont;
                    seg.text = word[i++];
                    while (i < word.size() && isCjkClosing(word[i]))
                        seg.text += word[i++];
                } else if (isCjk(word[i])) {
                    // Closing punctuation with nothing before it to hold on to.
                    seg.font = CjkFont;
                    seg.text = word[i++];
                } else {
                    int j = i;
                    while (j < word.size() && !isCjk(word[j]))
                        ++j;
                    seg.text = word.mid(i, j - i);
                    i = j;
                    const int mark = seg.text.indexOf(kHyphenMark);
                    if (mark >= 0) {
                        seg.text.remove(mark, kHyphenMark.size());
                        seg.hyphenAt = mark;
                        if (seg.text.contains(kHyphenMark))
                            fail(QStringLiteral("more than one {-} in \"%1\"").arg(word));
                    }
                }
                para.segments.push_back(seg);
            }
        }
        book.paragraphs.push_back(std::move(para));
        current.clear();
    };
    for (const QString &raw : lines) {
        const QString line = raw.trimmed();
        if (line.isEmpty())
            flush();
        else
            current << line;
    }
    flush();
    return book;
}

class Typesetter {
public:
    Typesetter(const QFont &latin, const QFont &cjk, QPaintDevice *device)
        : latin_(latin, device), cjk_(cjk, device)
    {
    }

    qreal advance(FontRole role, const QString &s) const
    {
        return role == CjkFont ? cjk_.horizontalAdvance(s) : latin_.horizontalAdvance(s);
    }

    // Greedy line breaking of one paragraph. Appends the lines to `out`.
    void breakParagraph(const Paragraph &para, qreal textWidth, std::vector<Line> &out) const
    {
        const qreal space = latin_.horizontalAdvance(QLatin1Char(' '));
        const qreal inset = para.block ? pt(kBlockIndent) : 0;
        const qreal indent = (para.block || para.firstAfterTitle) ? 0 : pt(kIndent);

        Line line;
        qreal used = 0;
        auto startLine = [&](bool first) {
            line = Line();
            line.firstOfParagraph = first;
            line.left = inset + (first ? indent : 0);
            line.width = textWidth - 2 * inset - (first ? indent : 0);
            used = 0;
        };
        auto add = [&](const QString &text, FontRole font, bool spaceBefore) {
            const bool firstPiece = line.pieces.empty();
            const qreal glue = (firstPiece || !spaceBefore) ? 0 : space;
            line.pieces.push_back({text, font, glue, !firstPiece});
            used += glue + advance(font, text);
        };
        auto finishLine = [&](bool last) {
            line.justify = !last;
            out.push_back(line);
        };
        auto fits = [&](const QString &text, FontRole font, bool spaceBefore) {
            const qreal glue = (line.pieces.empty() || !spaceBefore) ? 0 : space;
            return used + glue + advance(font, text) <= line.width;
        };

        startLine(true);
        for (const Segment &seg : para.segments) {
            if (seg.hyphenAt >= 0) {
                const QString head = seg.text.left(seg.hyphenAt) + QLatin1Char('-');
                const QString tail = seg.text.mid(seg.hyphenAt);
                if (!fits(head, seg.font, seg.spaceBefore))
                    fail(QStringLiteral("\"%1\" cannot be broken at its {-} mark: the first "
                                        "part does not fit on the line. Adjust the text.")
                             .arg(seg.text));
                if (fits(seg.text, seg.font, seg.spaceBefore))
                    std::fprintf(stderr,
                                 "make-sample-book: warning: \"%s\" would fit whole on its line; "
                                 "breaking it at the mark anyway\n",
                                 qPrintable(seg.text));
                add(head, seg.font, seg.spaceBefore);
                finishLine(false);
                startLine(false);
                add(tail, seg.font, false);
                continue;
            }
            if (!line.pieces.empty() && !fits(seg.text, seg.font, seg.spaceBefore)) {
                finishLine(false);
                startLine(false);
            }
            add(seg.text, seg.font, seg.spaceBefore);
        }
        if (!line.pieces.empty())
            finishLine(true);
    }

private:
    QFontMetricsF latin_;
    QFontMetricsF cjk_;
};

QFont pickFont(const QStringList &families, qreal pointSize, bool bold = false)
{
    for (const QString &family : families) {
        QFont font(family);
        font.setPointSizeF(pointSize);
        font.setBold(bold);
        font.setKerning(false);  // words are measured and drawn one by one
        // No "fi"/"fl" ligatures: they would come out of the PDF as U+FB01 and
        // U+FB02 instead of two letters, which breaks word look-up.
        font.setStyleStrategy(QFont::PreferNoShaping);
        if (QFontInfo(font).family().compare(family, Qt::CaseInsensitive) == 0)
            return font;
    }
    fail(QStringLiteral("none of these fonts is installed: %1").arg(families.join(", ")));
}

// For every character we drew with `font`, find the lowest code point that Qt
// would pick for the same glyph. Where that is a different character, the
// ToUnicode map will say the wrong thing and needs fixing.
void collectToUnicodeFixes(const QFont &font, const QSet<QChar> &drawn, QMap<ushort, ushort> &fixes)
{
    const QRawFont raw = QRawFont::fromFont(font);
    QHash<quint32, ushort> lowestForGlyph;
    for (uint u = 1; u <= 0xFFFF; ++u) {
        if (QChar::isSurrogate(u))
            continue;
        const QList<quint32> glyphs = raw.glyphIndexesForString(QString(QChar(u)));
        if (glyphs.size() == 1 && glyphs.first() != 0 && !lowestForGlyph.contains(glyphs.first()))
            lowestForGlyph.insert(glyphs.first(), ushort(u));
    }
    for (QChar c : drawn) {
        const QList<quint32> glyphs = raw.glyphIndexesForString(QString(c));
        if (glyphs.size() != 1 || glyphs.first() == 0)
            continue;
        const ushort lowest = lowestForGlyph.value(glyphs.first(), c.unicode());
        if (lowest == c.unicode())
            continue;
        if (fixes.contains(lowest) && fixes.value(lowest) != c.unicode())
            fail(QStringLiteral("U+%1 stands for two different characters in different fonts")
                     .arg(lowest, 4, 16, QLatin1Char('0')));
        fixes.insert(lowest, c.unicode());
    }
}

QByteArray hex4(ushort u) { return QByteArray::number(u, 16).toUpper().rightJustified(4, '0'); }

// Rewrites the Unicode side of the bfchar/bfrange entries in the PDF's
// ToUnicode maps, leaving the length of everything unchanged. Afterwards
// checks that every mapped character is one that the book really contains.
void fixToUnicodeMaps(QByteArray &pdf, const QMap<ushort, ushort> &fixes, const QSet<QChar> &drawn)
{
    static const QRegularExpression block(QStringLiteral("begin(bfrange|bfchar)\\n(.*?)\\nend\\1"),
                                          QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression rangeLine(
        QStringLiteral("^<([0-9A-F]{4})> <([0-9A-F]{4})> (?:<([0-9A-F]{4})>|\\[(.*)\\])$"));
    static const QRegularExpression charLine(QStringLiteral("^<([0-9A-F]{4})> <([0-9A-F]{4})>$"));
    static const QRegularExpression code(QStringLiteral("<([0-9A-F]{4})>"));

    // Latin-1 keeps one char per byte, so offsets match the byte array.
    const QString text = QString::fromLatin1(pdf);
    int blocks = 0;
    QList<ushort> mapped;
    auto fixAt = [&](qsizetype pos, const QString &hex) {
        const ushort u = hex.toUShort(nullptr, 16);
        const ushort to = fixes.value(u, u);
        mapped << to;
        if (to != u)
            pdf.replace(pos, 4, hex4(to));
    };

    auto it = block.globalMatch(text);
    while (it.hasNext()) {
        const auto m = it.next();
        ++blocks;
        const bool isRange = m.captured(1) == QLatin1String("bfrange");
        qsizetype lineStart = m.capturedStart(2);
        for (const QString &entry : m.captured(2).split(QLatin1Char('\n'))) {
            if (isRange) {
                const auto r = rangeLine.match(entry);
                if (!r.hasMatch())
                    fail(QStringLiteral("unexpected ToUnicode line: %1").arg(entry));
                if (r.capturedStart(3) >= 0) {
                    // "<from> <to> <first>": a run of consecutive characters.
                    // Only single-glyph runs can be fixed in place.
                    if (r.captured(1) == r.captured(2))
                        fixAt(lineStart + r.capturedStart(3), r.captured(3));
                    else
                        for (ushort u = r.captured(3).toUShort(nullptr, 16),
                                    n = r.captured(2).toUShort(nullptr, 16) -
                                        r.captured(1).toUShort(nullptr, 16);
                             n != ushort(-1); ++u, --n)
                            mapped << u;
                } else {
                    const qsizetype arrayStart = lineStart + r.capturedStart(4);
                    auto codes = code.globalMatch(r.captured(4));
                    while (codes.hasNext()) {
                        const auto c = codes.next();
                        fixAt(arrayStart + c.capturedStart(1), c.captured(1));
                    }
                }
            } else {
                const auto c = charLine.match(entry);
                if (!c.hasMatch())
                    fail(QStringLiteral("unexpected ToUnicode line: %1").arg(entry));
                fixAt(lineStart + c.capturedStart(2), c.captured(2));
            }
            lineStart += entry.size() + 1;
        }
    }
    if (blocks == 0)
        fail(QStringLiteral("no ToUnicode maps found in the PDF (is it compressed?)"));

    for (ushort u : mapped) {
        if (u != 0 && !drawn.contains(QChar(u)))
            fail(QStringLiteral("the PDF maps a glyph to U+%1 (%2), which the book does not "
                                "contain; copied text would be wrong")
                     .arg(u, 4, 16, QLatin1Char('0'))
                     .arg(QString(QChar(u))));
    }
}

// Replaces the 14 digits of the creation date with a fixed date.
void fixCreationDate(QByteArray &pdf)
{
    const QByteArray key = "/CreationDate (D:";
    const qsizetype at = pdf.indexOf(key);
    if (at < 0)
        return;
    pdf.replace(at + key.size(), 14, "20250101000000");
}

}  // namespace

int main(int argc, char **argv)
{
    // Qt orders some PDF objects by walking hash tables; a fixed hash seed
    // keeps that order, and so the output bytes, the same from run to run.
    QHashSeed::setDeterministicGlobalSeed();
    // No window is ever shown; don't require a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    if (argc != 3) {
        std::fprintf(stderr, "usage: make-sample-book INPUT.txt OUTPUT.pdf\n");
        return 2;
    }
    const QString inputPath = QString::fromLocal8Bit(argv[1]);
    const QString outputPath = QString::fromLocal8Bit(argv[2]);

    QFile input(inputPath);
    if (!input.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot read %1").arg(inputPath));
    const Book book = parseBook(QString::fromUtf8(input.readAll()));

    QPdfWriter writer(outputPath);
    writer.setResolution(kResolution);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Portrait,
                                     QMarginsF(0, 0, 0, 0), QPageLayout::Point));
    writer.setTitle(book.title);
    writer.setCreator(QStringLiteral("make-sample-book"));

    const QFont latin = pickFont({QStringLiteral("DejaVu Serif")}, kBodySize);
    const QFont cjk = pickFont({QStringLiteral("Noto Serif CJK SC"), QStringLiteral("Noto Sans CJK SC")},
                               kBodySize);
    const QFont titleFont = pickFont({QStringLiteral("DejaVu Serif")}, kTitleSize, true);
    const QFont folioFont = pickFont({QStringLiteral("DejaVu Serif")}, kFolioSize);

    const QRectF page(QPointF(0, 0), writer.pageLayout().fullRectPoints().size() * (kResolution / 72.0));
    const QRectF body = page.adjusted(pt(kMarginLeft), pt(kMarginTop), -pt(kMarginRight),
                                      -pt(kMarginBottom));

    Typesetter setter(latin, cjk, &writer);
    std::vector<Line> lines;
    bool previousWasBlock = false;
    for (const Paragraph &para : book.paragraphs) {
        const size_t first = lines.size();
        setter.breakParagraph(para, body.width(), lines);
        // Extra space between paragraphs, and a little more around blocks.
        if (first > 0 && first < lines.size()) {
            qreal gap = kParagraphGap;
            if (para.block || previousWasBlock)
                gap += kBlockGap;
            lines[first].gapBefore = pt(gap);
        }
        previousWasBlock = para.block;
    }

    QPainter painter;
    if (!painter.begin(&writer))
        fail(QStringLiteral("cannot write %1").arg(outputPath));

    QHash<FontRole, QSet<QChar>> drawnWith;
    QSet<QChar> drawnTitle, drawnFolio;
    auto note = [](QSet<QChar> &set, const QString &s) {
        for (QChar c : s)
            set.insert(c);
    };

    int pageNumber = 1;
    auto drawFolio = [&] {
        const QString folio = QString::number(pageNumber);
        painter.setFont(folioFont);
        const QFontMetricsF fm(folioFont, &writer);
        painter.drawText(QPointF(page.center().x() - fm.horizontalAdvance(folio) / 2,
                                 page.bottom() - pt(kMarginBottom) / 2),
                         folio);
        note(drawnFolio, folio);
    };

    // Title, centred on the first line of page 1.
    {
        painter.setFont(titleFont);
        const QFontMetricsF fm(titleFont, &writer);
        const qreal baseline = body.top() + fm.ascent();
        painter.drawText(QPointF(body.center().x() - fm.horizontalAdvance(book.title) / 2, baseline),
                         book.title);
        note(drawnTitle, book.title);
    }

    const QFontMetricsF latinMetrics(latin, &writer);
    qreal y = body.top() + QFontMetricsF(titleFont, &writer).ascent() + pt(kTitleGap);
    for (const Line &line : lines) {
        // A paragraph gap that would fall at the top of a new page is dropped.
        y += line.gapBefore;
        if (y > body.bottom()) {
            drawFolio();
            writer.newPage();
            ++pageNumber;
            y = body.top() + latinMetrics.ascent();
        }

        qreal natural = 0;
        int stretchable = 0;
        for (const PlacedPiece &piece : line.pieces) {
            natural += piece.glue + setter.advance(piece.font, piece.text);
            if (piece.stretch && piece.glue > 0)
                ++stretchable;
        }
        // A line of Chinese has no spaces; spread it between the characters.
        const bool spreadAll = stretchable == 0;
        if (spreadAll)
            for (const PlacedPiece &piece : line.pieces)
                stretchable += piece.stretch ? 1 : 0;
        const qreal extra = (line.justify && stretchable > 0) ? (line.width - natural) / stretchable : 0;

        qreal x = body.left() + line.left;
        for (const PlacedPiece &piece : line.pieces) {
            x += piece.glue;
            if (piece.stretch && (spreadAll || piece.glue > 0))
                x += extra;
            painter.setFont(piece.font == CjkFont ? cjk : latin);
            painter.drawText(QPointF(x, y), piece.text);
            note(drawnWith[piece.font], piece.text);
            x += setter.advance(piece.font, piece.text);
        }
        y += pt(kLineHeight);
    }
    drawFolio();
    painter.end();

    // Post-process the written file.
    QFile output(outputPath);
    if (!output.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot reopen %1").arg(outputPath));
    QByteArray pdf = output.readAll();
    output.close();

    QMap<ushort, ushort> fixes;
    collectToUnicodeFixes(latin, drawnWith[LatinFont], fixes);
    collectToUnicodeFixes(cjk, drawnWith[CjkFont], fixes);
    collectToUnicodeFixes(titleFont, drawnTitle, fixes);
    collectToUnicodeFixes(folioFont, drawnFolio, fixes);
    QSet<QChar> allDrawn = drawnWith[LatinFont] | drawnWith[CjkFont] | drawnTitle | drawnFolio;
    fixToUnicodeMaps(pdf, fixes, allDrawn);
    fixCreationDate(pdf);

    if (!output.open(QIODevice::WriteOnly | QIODevice::Truncate) || output.write(pdf) != pdf.size())
        fail(QStringLiteral("cannot write %1").arg(outputPath));
    output.close();

    std::printf("wrote %s: %d pages\n", qPrintable(outputPath), pageNumber);
    return 0;
}

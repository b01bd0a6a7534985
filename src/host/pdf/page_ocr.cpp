#include "host/pdf/page_ocr.h"

#include <poppler-qt6.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace lexicorn::host {

namespace {

constexpr const char* language = "eng";
constexpr const char* languageFile = "eng.traineddata";
// Orientation and script detection; without it only upright and
// quarter-turned text is found.
constexpr const char* orientationFile = "osd.traineddata";

// Tesseract's confidence in a word runs from 0 to 100. Printed words come out
// above 90, and a worn scan's mostly above 70; what it makes of the texture of
// a photograph mostly stays below 50.
constexpr float leastWordConfidence = 50.0f;

// The largest image a page is rendered to, in pixels: a tabloid page at
// 300 dpi is 15 million. A poster-sized page is read at less than 300 dpi.
constexpr double largestImage = 25e6;

const QString noLanguageData = QStringLiteral(
    "OCR is off: Tesseract finds no English language data (%1) in %2. Install the package "
    "tesseract-ocr-eng, or set TESSDATA_PREFIX to a folder that holds it.");

// Tesseract writes its notes ("Empty page!!", a guessed resolution, a data file
// it cannot open) to standard error. The caller reports what matters, once, so
// they go nowhere. The setting is global to the library: it is made once.
void quietTesseract()
{
    static std::once_flag once;
    std::call_once(once, [] {
        tesseract::TessBaseAPI api;
        api.SetVariable("debug_file", "/dev/null");
    });
}

// Tesseract's OpenMP loops spread a line over every core and spin while they
// wait. Beside other work on a two-core machine that made a page four to five
// times slower (10 s instead of 2 s), and recognition runs on a worker thread
// beside the reader anyway. With no active parallel levels allowed, the loops
// run on the calling thread alone. The OpenMP runtime is the one Tesseract was
// built with, so it is looked up among the loaded libraries rather than linked.
void keepOpenMpOnThisThread()
{
    using SetLevels = void (*)(int);
    static const auto setLevels = reinterpret_cast<SetLevels>(dlsym(RTLD_DEFAULT, "omp_set_max_active_levels"));
    if (setLevels)
        setLevels(0);
}

// Starts the engine for English; with configOnly the data file is opened and
// checked but no model is loaded. On failure, problem names the folder searched.
bool startEngine(tesseract::TessBaseAPI& api, bool configOnly, QString* problem)
{
    quietTesseract();
    std::vector<std::string> names;
    std::vector<std::string> values;
    if (configOnly) {
        names.push_back("tessedit_init_config_only");
        values.push_back("1");
    }
    if (api.Init(nullptr, language, tesseract::OEM_DEFAULT, nullptr, 0, &names, &values, false) == 0)
        return true;
    if (problem) {
        const char* folder = api.GetDatapath();
        *problem = noLanguageData.arg(QLatin1String(languageFile),
                                      folder && *folder ? QDir::cleanPath(QString::fromLocal8Bit(folder))
                                                        : QStringLiteral("Tesseract's default folder"));
    }
    return false;
}

QString takeText(char* text)
{
    const std::unique_ptr<char[]> owned(text);
    return owned ? QString::fromUtf8(owned.get()) : QString();
}

QRectF boxOf(const tesseract::ResultIterator& it, tesseract::PageIteratorLevel level)
{
    int left = 0, top = 0, right = 0, bottom = 0;
    if (!it.BoundingBox(level, &left, &top, &right, &bottom))
        return {};
    return QRectF(QPointF(left, top), QPointF(right, bottom));
}

// What Tesseract found, in image pixels.
struct Symbol {
    QString text;
    QRectF box;
};
struct Word {
    QRectF box;
    float confidence = 0;
    std::vector<Symbol> symbols;
};
struct Line {
    QRectF box;
    QLineF baseline;  // null when Tesseract gave none
    // Tesseract's measures of the row, in pixels: from the descender line to
    // the top of the tallest letters, and the descenders (below 0).
    float rowHeight = 0;
    float descenders = 0;
    tesseract::Orientation orientation = tesseract::ORIENTATION_PAGE_UP;
    std::vector<Word> words;
};

std::vector<Line> readResults(tesseract::ResultIterator& it)
{
    std::vector<Line> lines;
    it.Begin();
    do {
        if (it.Empty(tesseract::RIL_SYMBOL))
            continue;
        if (lines.empty() || it.IsAtBeginningOf(tesseract::RIL_TEXTLINE)) {
            Line line;
            line.box = boxOf(it, tesseract::RIL_TEXTLINE);
            int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
            if (it.Baseline(tesseract::RIL_TEXTLINE, &x1, &y1, &x2, &y2))
                line.baseline = QLineF(x1, y1, x2, y2);
            float ascenders = 0;
            it.RowAttributes(&line.rowHeight, &line.descenders, &ascenders);
            // The orientation is the block's; every line of a block has it.
            tesseract::WritingDirection direction;
            tesseract::TextlineOrder order;
            float deskew = 0;
            it.Orientation(&line.orientation, &direction, &order, &deskew);
            lines.push_back(std::move(line));
        }
        std::vector<Word>& words = lines.back().words;
        if (words.empty() || it.IsAtBeginningOf(tesseract::RIL_WORD)) {
            words.push_back(Word{boxOf(it, tesseract::RIL_WORD), it.Confidence(tesseract::RIL_WORD), {}});
        }
        const QString text = takeText(it.GetUTF8Text(tesseract::RIL_SYMBOL));
        if (!text.trimmed().isEmpty())
            words.back().symbols.push_back(Symbol{text, boxOf(it, tesseract::RIL_SYMBOL)});
    } while (it.Next(tesseract::RIL_SYMBOL));
    return lines;
}

// An interval along one axis, from <= to.
struct Span {
    double from = 0;
    double to = 0;
};

// The directions of a line's text on the image: "along" runs in reading
// order, "across" from one side of the line to the other. Positions along are
// negated for text that reads right to left or upwards on the image, so they
// always grow in reading order.
struct Frame {
    bool vertical = false;
    bool reversed = false;

    explicit Frame(tesseract::Orientation orientation)
        : vertical(orientation == tesseract::ORIENTATION_PAGE_RIGHT || orientation == tesseract::ORIENTATION_PAGE_LEFT),
          reversed(orientation == tesseract::ORIENTATION_PAGE_DOWN || orientation == tesseract::ORIENTATION_PAGE_LEFT)
    {
    }

    double along(const QPointF& point) const
    {
        const double value = vertical ? point.y() : point.x();
        return reversed ? -value : value;
    }
    double across(const QPointF& point) const { return vertical ? point.x() : point.y(); }
    Span alongSpan(const QRectF& box) const
    {
        const double a = along(box.topLeft());
        const double b = along(box.bottomRight());
        return {std::min(a, b), std::max(a, b)};
    }
    Span acrossSpan(const QRectF& box) const
    {
        return vertical ? Span{box.left(), box.right()} : Span{box.top(), box.bottom()};
    }
    QRectF rect(const Span& alongIt, const Span& acrossIt) const
    {
        const double a0 = reversed ? -alongIt.to : alongIt.from;
        const double a1 = reversed ? -alongIt.from : alongIt.to;
        return vertical ? QRectF(QPointF(acrossIt.from, a0), QPointF(acrossIt.to, a1))
                        : QRectF(QPointF(a0, acrossIt.from), QPointF(a1, acrossIt.to));
    }
};

// Where a line lies across its text at each point along it: from its
// descender line to the top of its tallest letters, as a typeface's ascent and
// descent frame a text line. The line's own box would be shorter where no
// letter of the line has a descender ("book.") and taller on a skewed scan,
// so the band is laid along the baseline by Tesseract's measures of the row,
// which it takes from the whole block. Without those, the line's box is used.
class LineBand {
public:
    LineBand(const Line& line, const Frame& frame, tesseract::Orientation orientation)
        : box_(frame.acrossSpan(line.box))
    {
        const double ascent = double(line.rowHeight) + double(line.descenders);
        const double descent = -double(line.descenders);
        const double boxSize = box_.to - box_.from;
        if (line.baseline.isNull() || ascent <= 0 || descent < 0 || ascent + descent > 3 * boxSize)
            return;
        u0_ = frame.along(line.baseline.p1());
        u1_ = frame.along(line.baseline.p2());
        b0_ = frame.across(line.baseline.p1());
        b1_ = frame.across(line.baseline.p2());
        // Letters stand up towards smaller "across" values on an upright
        // page, and towards larger ones when the page is turned right or
        // upside down.
        const bool upIsLarger = orientation == tesseract::ORIENTATION_PAGE_RIGHT
            || orientation == tesseract::ORIENTATION_PAGE_DOWN;
        towardsSmaller_ = upIsLarger ? descent : ascent;
        towardsLarger_ = upIsLarger ? ascent : descent;
        measured_ = true;
    }

    Span at(double along) const
    {
        if (!measured_)
            return box_;
        const double baseline = u1_ == u0_ ? (b0_ + b1_) / 2 : b0_ + (b1_ - b0_) * (along - u0_) / (u1_ - u0_);
        return {baseline - towardsSmaller_, baseline + towardsLarger_};
    }

private:
    Span box_;
    double u0_ = 0, u1_ = 0, b0_ = 0, b1_ = 0, towardsSmaller_ = 0, towardsLarger_ = 0;
    bool measured_ = false;
};

// Typical advance widths of printed characters from ' ' to '~', in
// thousandths of an em: the mean of a common serif and a common sans-serif
// text face. Other characters count as half an em.
constexpr short typicalWidths[95] = {
    264, 306, 382, 528, 528, 861, 722, 278, 333, 333, 444, 574, 264, 333, 264, 278,
    528, 528, 528, 528, 528, 528, 528, 528, 528, 528, 278, 278, 574, 574, 574, 500,
    968, 694, 667, 694, 722, 639, 584, 750, 722, 306, 444, 694, 584, 861, 722, 750,
    612, 750, 694, 612, 611, 722, 694, 944, 694, 694, 611, 306, 278, 306, 469, 528,
    333, 500, 528, 472, 528, 500, 306, 528, 528, 250, 250, 500, 250, 806, 528, 528,
    528, 528, 333, 444, 278, 528, 500, 722, 500, 500, 472, 407, 230, 407, 562,
};

double typicalWidth(QChar c)
{
    const char16_t u = c.unicode();
    return u >= 0x20 && u <= 0x7E ? typicalWidths[u - 0x20] : 500.0;
}

// The spans of a word's UTF-16 units along its line, edge to edge.
//
// Tesseract's recogniser places single characters only roughly: most of its
// symbol boxes are right to a few tenths of a point, but some are as wide as
// the word or squeezed into a neighbour, and on turned text there are none.
// So the word is shared out by typical character widths, and where two
// symbols meet the gap between their boxes fixes the edge instead, when it
// lies within a quarter of a character of that estimate. Measured against
// typeset text, this puts nine in ten characters within 0.7 pt of their place;
// the symbol boxes alone, 2.4 pt.
std::vector<Span> unitSpans(const Word& word, const Frame& frame)
{
    const Span whole = frame.alongSpan(word.box);
    std::vector<double> widths;
    for (const Symbol& symbol : word.symbols) {
        for (const QChar c : symbol.text)
            widths.push_back(typicalWidth(c));
    }
    const std::size_t units = widths.size();
    std::vector<double> estimate{0.0};  // where each unit starts, then where the last ends
    for (const double width : widths)
        estimate.push_back(estimate.back() + width);
    for (double& edge : estimate)
        edge = whole.from + (whole.to - whole.from) * edge / estimate.back();

    // Edges held fixed: the word's ends and the trusted symbol edges.
    std::vector<std::pair<std::size_t, double>> fixed{{0, whole.from}};
    const double tolerance = (whole.to - whole.from) / double(units) / 4;
    std::size_t unit = 0;
    for (std::size_t s = 0; s < word.symbols.size(); ++s) {
        if (s > 0) {
            const QRectF& before = word.symbols[s - 1].box;
            const QRectF& here = word.symbols[s].box;
            if (!before.isEmpty() && !here.isEmpty()) {
                const double edge = (frame.alongSpan(before).to + frame.alongSpan(here).from) / 2;
                if (std::fabs(edge - estimate[unit]) <= tolerance && edge > fixed.back().second && edge < whole.to)
                    fixed.emplace_back(unit, edge);
            }
        }
        unit += std::size_t(word.symbols[s].text.size());
    }
    fixed.emplace_back(units, whole.to);

    // Between two fixed edges, the units share the room by their widths.
    std::vector<Span> spans;
    spans.reserve(units);
    for (std::size_t f = 1; f < fixed.size(); ++f) {
        const auto [first, start] = fixed[f - 1];
        const auto [end, stop] = fixed[f];
        double total = 0;
        for (std::size_t u = first; u < end; ++u)
            total += widths[u];
        double at = start;
        for (std::size_t u = first; u < end; ++u) {
            const double next = u + 1 == end ? stop : at + (stop - start) * widths[u] / total;
            spans.push_back({at, next});
            at = next;
        }
    }
    return spans;
}

// Page points to a hundredth: what the disk cache keeps, so a page read back
// from it is the page as recognised.
double hundredths(double value)
{
    return std::round(value * 100.0) / 100.0;
}

PageLines pageLinesOf(const std::vector<Line>& found, double xScale, double yScale)
{
    const auto toPoints = [xScale, yScale](const QRectF& pixels) {
        return QRectF(QPointF(hundredths(pixels.left() * xScale), hundredths(pixels.top() * yScale)),
                      QPointF(hundredths(pixels.right() * xScale), hundredths(pixels.bottom() * yScale)));
    };

    // A page where most of what Tesseract calls words are guesses is a picture.
    std::size_t words = 0;
    std::size_t sure = 0;
    for (const Line& line : found) {
        for (const Word& word : line.words) {
            if (word.symbols.empty())
                continue;
            ++words;
            sure += word.confidence >= leastWordConfidence;
        }
    }
    if (sure * 2 < words)
        return {};

    PageLines lines;
    for (const Line& line : found) {
        const Frame frame(line.orientation);
        const LineBand band(line, frame, line.orientation);
        CharLine chars;
        Span previous;      // along the line, of the last word taken
        Span previousBand;  // across the line, of the last word taken
        for (const Word& word : line.words) {
            if (word.symbols.empty() || word.confidence < leastWordConfidence)
                continue;
            const Span along = frame.alongSpan(word.box);
            const Span across = band.at((along.from + along.to) / 2);
            if (!chars.empty()) {
                const Span gap{previous.to, std::max(previous.to, along.from)};
                chars.push_back(CharRecord{u' ', toPoints(frame.rect(gap, previousBand))});
            }
            const std::vector<Span> spans = unitSpans(word, frame);
            std::size_t unit = 0;
            for (const Symbol& symbol : word.symbols) {
                for (const QChar c : symbol.text)
                    chars.push_back(CharRecord{char16_t(c.unicode()), toPoints(frame.rect(spans[unit++], across))});
            }
            previous = along;
            previousBand = across;
        }
        if (!chars.empty())
            lines.push_back(std::move(chars));
    }
    return lines;
}

}  // namespace

OcrAvailability ocrAvailability()
{
    tesseract::TessBaseAPI api;
    OcrAvailability availability;
    availability.available = startEngine(api, true, &availability.problem);
    return availability;
}

PageLines recognisePage(Poppler::Document& document, int pageNo, QString* problem)
{
    if (problem)
        problem->clear();
    const std::unique_ptr<Poppler::Page> page = pageNo >= 1 && pageNo <= document.numPages() ? document.page(pageNo - 1)
                                                                                             : nullptr;
    if (!page) {
        if (problem)
            *problem = QStringLiteral("OCR: the book has no page %1").arg(pageNo);
        return {};
    }

    tesseract::TessBaseAPI api;
    if (!startEngine(api, false, problem))
        return {};
    keepOpenMpOnThisThread();

    // The page as displayed: its rotation applied, as in Poppler's text boxes.
    const QSizeF points = page->pageSizeF();
    double dpi = ocrResolution;
    const double pixels = points.width() * points.height() * (dpi / 72.0) * (dpi / 72.0);
    if (pixels > largestImage)
        dpi *= std::sqrt(largestImage / pixels);
    const QImage image = page->renderToImage(dpi, dpi).convertToFormat(QImage::Format_Grayscale8);
    if (image.isNull() || points.isEmpty()) {
        if (problem)
            *problem = QStringLiteral("OCR: page %1 could not be rendered").arg(pageNo);
        return {};
    }

    const QString dataFolder = QString::fromLocal8Bit(api.GetDatapath());
    api.SetPageSegMode(QFileInfo::exists(QDir(dataFolder).filePath(QLatin1String(orientationFile)))
                           ? tesseract::PSM_AUTO_OSD
                           : tesseract::PSM_AUTO);
    api.SetImage(image.constBits(), image.width(), image.height(), 1, int(image.bytesPerLine()));
    api.SetSourceResolution(int(std::lround(dpi)));
    if (api.Recognize(nullptr) != 0) {
        if (problem)
            *problem = QStringLiteral("OCR: Tesseract could not read page %1").arg(pageNo);
        return {};
    }
    const std::unique_ptr<tesseract::ResultIterator> it(api.GetIterator());
    if (!it)
        return {};
    return pageLinesOf(readResults(*it), points.width() / image.width(), points.height() / image.height());
}

}  // namespace lexicorn::host

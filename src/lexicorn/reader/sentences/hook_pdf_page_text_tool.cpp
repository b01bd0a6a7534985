#include "lexicorn/reader/sentences/hook_pdf_page_text_tool.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lexicorn {

namespace {

// Gaps and distances in page points.
constexpr double smallestGapFloor = -3.0;   // lines may overlap a little, but no more counts
constexpr double sectionGapMargin = 6.0;    // extra space that makes a gap a section break
constexpr double shortLineMargin = 70.0;    // how far left of the usual right edge a last line ends

QHash<QString, Sentences>& sentenceTable()
{
    static QHash<QString, Sentences> table;
    return table;
}

QHash<QString, double>& bodyHeightTable()
{
    static QHash<QString, double> table;
    return table;
}

HookPDFPageTextTool::PageTextSource& pageTextSource()
{
    static HookPDFPageTextTool::PageTextSource source;
    return source;
}

bool endsSentenceAnywhere(char16_t c)
{
    return c == u'\u3002' || c == u'\uFF01' || c == u'\uFF1B' || c == u'\uFF1F';  // 。！；？
}

bool endsSentenceBeforeBlank(char16_t c)
{
    return c == u'!' || c == u'.' || c == u';' || c == u'?';
}

// The page's lines come column by column. A block is a run of lines each
// below the one before and overlapping it sideways: a column, or a piece of
// one. Lines are measured against their own block, so a short last line and
// a wide gap mean the same in every column of the page.
struct Block {
    int first = 0;
    int last = 0;  // inclusive
    int size() const { return last - first + 1; }
};

std::vector<Block> blocksOf(const std::vector<QRectF>& extents)
{
    std::vector<Block> blocks;
    const int count = int(extents.size());
    for (int i = 0; i < count; ++i) {
        const QRectF& line = extents[std::size_t(i)];
        if (!blocks.empty()) {
            const QRectF& above = extents[std::size_t(i - 1)];
            const bool below = line.center().y() > above.bottom() - above.height() / 4;
            const bool beside = std::min(line.right(), above.right()) > std::max(line.left(), above.left());
            if (below && beside) {
                blocks.back().last = i;
                continue;
            }
        }
        blocks.push_back({i, i});
    }
    return blocks;
}

// What the page measurements say about each line: whether it closes a
// section. Also gives the body-text character height.
std::vector<bool> sectionEnds(const PageLines& lines, double& bodyHeight)
{
    const int count = int(lines.size());
    std::vector<bool> closes(lines.size(), count < 2);
    std::vector<double> rightEdges(lines.size());
    std::vector<double> lineHeights(lines.size());
    std::vector<QRectF> extents(lines.size());
    std::vector<double> heights;  // scratch, reused for every line
    for (int i = 0; i < count; ++i) {
        const CharLine& line = lines[std::size_t(i)];
        QRectF extent;
        heights.resize(line.size());
        for (std::size_t k = 0; k < line.size(); ++k) {
            extent = extent.united(line[k].rect);
            heights[k] = line[k].rect.height();
        }
        extents[std::size_t(i)] = extent;
        rightEdges[std::size_t(i)] = extent.x() + extent.width();
        lineHeights[std::size_t(i)] = HookPDFPageTextTool::findMedian(heights.data(), int(heights.size()));
    }
    std::vector<double> bodyHeights = lineHeights;  // findMedian reorders its array
    bodyHeight = HookPDFPageTextTool::findMedian(bodyHeights.data(), count);
    if (count < 2)
        return closes;

    // A line's position is the top of its extent; the gap to the next line is
    // from this line's bottom to the next line's top.
    auto gapAfter = [&](int i) {
        return extents[std::size_t(i + 1)].top() - extents[std::size_t(i)].bottom();
    };
    const std::vector<Block> blocks = blocksOf(extents);
    std::vector<double> scratch;
    std::vector<double> blockHeights(blocks.size());
    std::vector<double> medianRightEdges(blocks.size());
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const Block& block = blocks[b];
        scratch.assign(lineHeights.begin() + block.first, lineHeights.begin() + block.last + 1);
        blockHeights[b] = HookPDFPageTextTool::findMedian(scratch.data(), block.size());
        scratch.assign(rightEdges.begin() + block.first, rightEdges.begin() + block.last + 1);
        medianRightEdges[b] = HookPDFPageTextTool::findMedian(scratch.data(), block.size());
    }

    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const Block& block = blocks[b];
        if (block.size() < 2) {
            closes[std::size_t(block.first)] = true;
            continue;
        }
        double smallestGap = gapAfter(block.first);
        for (int i = block.first + 1; i < block.last; ++i)
            smallestGap = std::min(smallestGap, gapAfter(i));
        smallestGap = std::max(smallestGap, smallestGapFloor);
        for (int i = block.first; i <= block.last; ++i) {
            const bool wideGap = i < block.last && gapAfter(i) > smallestGap + sectionGapMargin;
            const bool shortLine = rightEdges[std::size_t(i)] < medianRightEdges[b] - shortLineMargin;
            closes[std::size_t(i)] = wideGap || shortLine || isNumberLine(lines[std::size_t(i)]);
        }
        // A column's last line runs on into the next column when that is
        // body text of the same size starting higher up the page; a running
        // head, a footnote or a caption after it is not the same sentence.
        if (b + 1 < blocks.size()) {
            const Block& next = blocks[b + 1];
            const double height = blockHeights[b];
            const bool sameSize = std::fabs(blockHeights[b + 1] - height) <= height / 4;
            const bool higherUp = extents[std::size_t(next.first)].top() < extents[std::size_t(block.last)].top();
            const bool runsOn = next.size() >= 2 && sameSize && higherUp && !isNumberLine(lines[std::size_t(next.first)]);
            closes[std::size_t(block.last)] = closes[std::size_t(block.last)] || !runsOn;
        }
    }
    return closes;
}

}  // namespace

void HookPDFPageTextTool::setPageTextSource(PageTextSource source)
{
    pageTextSource() = std::move(source);
}

QString HookPDFPageTextTool::cacheKey(const QString& bookMD5, int pageNo)
{
    return QStringLiteral("%1-%2").arg(bookMD5).arg(pageNo);
}

const QHash<QString, Sentences>& HookPDFPageTextTool::sentensesCache()
{
    return sentenceTable();
}

const QHash<QString, double>& HookPDFPageTextTool::bodyHeightCache()
{
    return bodyHeightTable();
}

std::optional<double> HookPDFPageTextTool::bodyHeightFor(const QString& bookMD5, int pageNo)
{
    const auto found = bodyHeightTable().constFind(cacheKey(bookMD5, pageNo));
    if (found == bodyHeightTable().cend())
        return std::nullopt;
    return *found;
}

double HookPDFPageTextTool::PartSort(double* array, int low, int high)
{
    if (low >= high)
        return low;
    const double pivot = array[high];
    int left = low;
    int right = high;
    // Written as "not greater" and "not smaller" so that a NaN (a character
    // box from a broken PDF) counts as on both sides and the scans still move:
    // with <= and >= a NaN stops both of them and the loop never ends. For
    // numbers the two forms are the same test.
    while (left < right) {
        while (left < right && !(array[left] > pivot))
            ++left;
        while (left < right && !(array[right] < pivot))
            --right;
        std::swap(array[left], array[right]);
    }
    std::swap(array[left], array[high]);
    return left;
}

double HookPDFPageTextTool::findMedian(double* array, int count)
{
    if (count <= 0)
        return 0.0;
    const int k = (count - 1) / 2;
    int low = 0;
    int high = count - 1;
    for (;;) {
        const int placed = int(PartSort(array, low, high));
        if (placed == k)
            break;
        // The bound on the far side goes back to the array's start or end
        // each time instead of keeping the previous one. The answer does not
        // change (everything outside the new range already lies on its side
        // of an earlier pivot); it is kept this way on purpose, because it
        // decides the order the array is left in.
        if (k < placed) {
            low = 0;
            high = placed - 1;
        } else {
            low = placed + 1;
            high = count - 1;
        }
    }
    return array[k];
}

Sentences HookPDFPageTextTool::cutSentences(const PageLines& lines, double* bodyHeight)
{
    double height = 0.0;
    const std::vector<bool> closesSection = sectionEnds(lines, height);
    if (bodyHeight)
        *bodyHeight = height;

    Sentences sentences;
    Sentence current;
    for (std::size_t l = 0; l < lines.size(); ++l) {
        const CharLine& line = lines[l];
        const std::size_t size = line.size();
        for (std::size_t i = 0; i < size; ++i) {
            const char16_t c = line[i].ch;
            if (current.empty() && c == u' ')
                continue;  // a sentence never starts with a blank
            current.push_back(line[i]);
            const bool lastOfLine = i + 1 == size;
            if (lastOfLine)
                current.back().lineEnd = true;

            const bool ends = endsSentenceAnywhere(c)
                || (endsSentenceBeforeBlank(c) && (lastOfLine || line[i + 1].ch == u' '))
                || (c == u')' && i > 0 && line[i - 1].ch == u'.')
                || (lastOfLine && closesSection[l]);
            if (!ends)
                continue;
            current.back().lineEnd = true;
            // Only a sentence that reaches the end of a closing line closes the
            // section; one that stops earlier on that line leaves the rest of
            // the line in the same section.
            if (lastOfLine && closesSection[l])
                current.back().sectionEnd = true;
            sentences.push_back(std::move(current));
            current = Sentence();
        }
    }
    // The page may stop in the middle of a sentence; keep what there is of it.
    if (!current.empty())
        sentences.push_back(std::move(current));
    return sentences;
}

Sentences HookPDFPageTextTool::sentencesOfPage(const PageTextProvider& provider, int pageNo, const QString& bookMD5)
{
    const QString key = cacheKey(bookMD5, pageNo);
    const auto cached = sentenceTable().constFind(key);
    if (cached != sentenceTable().cend())
        return *cached;

    const PageLines lines = provider ? provider(pageNo) : PageLines();
    // A page without text yet (a scan still being read) is asked again later.
    if (lines.empty())
        return {};
    double bodyHeight = 0.0;
    Sentences sentences = cutSentences(lines, &bodyHeight);
    bodyHeightTable().insert(key, bodyHeight);
    sentenceTable().insert(key, sentences);
    return sentences;
}

Sentences HookPDFPageTextTool::sectionsOfSentences(const Sentences& sentences)
{
    Sentences sections;
    Sentence running;
    for (const Sentence& sentence : sentences) {
        running.insert(running.end(), sentence.begin(), sentence.end());
        if (!sentence.empty() && sentence.back().sectionEnd) {
            sections.push_back(std::move(running));
            running = Sentence();
        }
    }
    if (!running.empty())
        sections.push_back(std::move(running));
    return sections;
}

Sentences HookPDFPageTextTool::sectionsOfPage(const PageTextProvider& provider, int pageNo, const QString& bookMD5)
{
    return sectionsOfSentences(sentencesOfPage(provider, pageNo, bookMD5));
}

Sentences HookPDFPageTextTool::sentenceWithViewHandle_pageNo_bookMD5_(std::int64_t viewHandle, std::int32_t pageNo,
                                                                      const QString& bookMD5)
{
    const PageTextSource& source = pageTextSource();
    const PageTextProvider provider = [&source, viewHandle](int page) {
        return source ? source(viewHandle, page) : PageLines();
    };
    return sentencesOfPage(provider, pageNo, bookMD5);
}

Sentences HookPDFPageTextTool::sectionWithViewHandle_pageNo_bookMD5_(std::int64_t viewHandle, std::int32_t pageNo,
                                                                     const QString& bookMD5)
{
    return sectionsOfSentences(sentenceWithViewHandle_pageNo_bookMD5_(viewHandle, pageNo, bookMD5));
}

}  // namespace lexicorn

#pragma once

#include "lexicorn/reader/sentences/char_record.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace lexicorn {

// Cuts the text of one PDF page into sentences and sections, keeping every
// character's rectangle, and remembers the result per book and page.
//
// The page text comes from the reader: a source function is given the view
// handle of an opened document and a page number and returns the page's
// lines. Everything here runs on the main thread; the caches are plain
// process-wide tables without locks.
class HookPDFPageTextTool {
public:
    // The page text of one opened document, by page number.
    using PageTextProvider = std::function<PageLines(int pageNo)>;
    // The page text of any opened document, by view handle and page number.
    using PageTextSource = std::function<PageLines(std::int64_t viewHandle, int pageNo)>;

    // Where the view-handle entry points get their page text from. Without a
    // source every page reads as a page without text.
    static void setPageTextSource(PageTextSource source);

    // The sentences of a page; answered from the sentence cache when the page
    // of that book was cut before.
    static Sentences sentenceWithViewHandle_pageNo_bookMD5_(std::int64_t viewHandle, std::int32_t pageNo,
                                                            const QString& bookMD5);
    // The sections of a page: consecutive sentences up to and including one
    // whose last character closes a section; a remainder forms a last section.
    static Sentences sectionWithViewHandle_pageNo_bookMD5_(std::int64_t viewHandle, std::int32_t pageNo,
                                                           const QString& bookMD5);

    // The same two, with the page text given directly.
    static Sentences sentencesOfPage(const PageTextProvider& provider, int pageNo, const QString& bookMD5);
    static Sentences sectionsOfPage(const PageTextProvider& provider, int pageNo, const QString& bookMD5);

    // Groups sentences into sections (see sectionWithViewHandle_pageNo_bookMD5_).
    static Sentences sectionsOfSentences(const Sentences& sentences);

    // The uncached work behind a cache miss: measures the page and cuts it.
    // bodyHeight receives the page's body-text character height.
    static Sentences cutSentences(const PageLines& lines, double* bodyHeight = nullptr);

    // The process-wide caches, keyed by cacheKey(bookMD5, pageNo).
    static const QHash<QString, Sentences>& sentensesCache();
    static const QHash<QString, double>& bodyHeightCache();
    static QString cacheKey(const QString& bookMD5, int pageNo);
    // The body-text character height of a page that has been cut.
    static std::optional<double> bodyHeightFor(const QString& bookMD5, int pageNo);

    // Quickselect median of array[0 .. count-1]: the element of index
    // (count-1)/2 in sorted order, so the lower middle one for an even count.
    // Reorders the array. Returns 0 for an empty array.
    static double findMedian(double* array, int count);
    // Partitions array[low .. high] around the element at high and returns the
    // index where that element ends up. A range with low >= high returns low.
    static double PartSort(double* array, int low, int high);
};

}  // namespace lexicorn

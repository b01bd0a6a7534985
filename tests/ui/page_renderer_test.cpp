// The page renderer's queue and the view's image cache: renders nobody waits
// for any more are dropped, and old images make room for new ones.

#include "host/pdf/page_renderer.h"

#include <QTest>

#include <gtest/gtest.h>

#include <vector>

namespace lexicorn::host::ui {
namespace {

const QString sampleBook = QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf");

RenderRequest pageAt(int pageIndex, double scale)
{
    return {pageIndex, scale, QRectF(0, 0, 612, 792), 1.0};
}

// The view replaces the wanted pages as it scrolls: pages dropped from the
// list are never delivered, nor pages of a document that was closed.
TEST(PageRenderer, DeliversOnlyWhatIsStillWanted)
{
    PageRenderer renderer;
    std::vector<RenderedPage> delivered;
    QObject::connect(&renderer, &PageRenderer::pageRendered, [&](const RenderedPage& page) { delivered.push_back(page); });

    renderer.open(sampleBook, 1);
    renderer.setRequests(1, {pageAt(0, 6), pageAt(1, 6), pageAt(2, 6)});
    renderer.setRequests(1, {pageAt(2, 1)});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !delivered.empty(); }, 10000));
    QTest::qWait(300);
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered.front().request, pageAt(2, 1));
    EXPECT_EQ(delivered.front().documentId, 1u);
    EXPECT_FALSE(delivered.front().image.isNull());

    delivered.clear();
    renderer.setRequests(1, {pageAt(0, 6), pageAt(1, 6)});
    renderer.close();
    QTest::qWait(500);
    EXPECT_TRUE(delivered.empty());
}

TEST(PageImageCache, DropsTheLeastRecentlyUsedPageOnceOverItsLimit)
{
    const auto entry = [](int page, int width) {
        return PageImageCache::Entry{pageAt(page, 1), QImage(width, 100, QImage::Format_ARGB32)};
    };
    const std::size_t oneImage = std::size_t(entry(0, 100).image.sizeInBytes());
    PageImageCache cache(3 * oneImage);
    cache.insert(entry(0, 100));
    cache.insert(entry(1, 100));
    cache.insert(entry(2, 100));
    ASSERT_TRUE(cache.use(0));  // page 0 is now the most recent, page 1 the least
    cache.insert(entry(3, 100));
    EXPECT_TRUE(cache.use(0));
    EXPECT_FALSE(cache.use(1));
    EXPECT_EQ(cache.size(), 3u);
    EXPECT_EQ(cache.bytes(), 3 * oneImage);

    // A newer image of a page replaces its older one.
    cache.insert(entry(3, 50));
    EXPECT_EQ(cache.size(), 3u);
    EXPECT_EQ(cache.bytes(), 2 * oneImage + oneImage / 2);
    EXPECT_EQ(cache.use(3)->image.width(), 50);

    // A lower limit drops the oldest at once.
    cache.setLimit(oneImage);
    EXPECT_EQ(cache.size(), 1u);
    EXPECT_TRUE(cache.use(3));
}

}  // namespace
}  // namespace lexicorn::host::ui

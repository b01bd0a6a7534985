// The book canvas offscreen: real PDFs (made here with QPdfWriter, and the
// sample book) through Poppler, driven by QTest mouse and key events.

#include "host/ui/page_canvas.h"
#include "raw_pdf.h"
#include "screenshot.h"

#include <poppler-qt6.h>

#include <QPainter>
#include <QPdfWriter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using lexicorn::host::ui::PageCanvas;

const QString kWord = QStringLiteral("lexicon");

// Letter pages with "Page N" near the top and the word kWord at the same place on each.
void writePdf(const QString& path, int pages)
{
    QPdfWriter writer(path);
    writer.setResolution(72);
    writer.setPageSize(QPageSize(QPageSize::Letter));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    QPainter painter(&writer);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(24);
    painter.setFont(font);
    for (int i = 0; i < pages; ++i) {
        if (i > 0)
            writer.newPage();
        painter.drawText(QPointF(72, 100), QStringLiteral("Page %1").arg(i + 1));
        painter.drawText(QPointF(200, 400), kWord);
    }
}

// A one-page PDF whose standard security handler refuses the empty password.
QByteArray lockedPdf()
{
    const QByteArray id = "<00112233445566778899aabbccddeeff>";
    return lexicorn::test::rawPdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                                   "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] >>",
                                   "<< /Filter /Standard /V 1 /R 2 /P -4 /O <" + QByteArray(64, '7') + "> /U <"
                                       + QByteArray(64, 'a') + "> >>"},
                                  "/Encrypt 4 0 R /ID [" + id + " " + id + "] ");
}

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
}

QRectF wordBox(const QString& path, int page)
{
    auto document = Poppler::Document::load(path);
    for (const auto& box : document->page(page)->textList())
        if (box->text() == kWord)
            return box->boundingBox();
    return {};
}

// Named in lower case so that ctest -R canvas picks the cases out.
class canvasTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir = new QTemporaryDir;
        threePages = dir->filePath("three.pdf");
        twentyPages = dir->filePath("twenty.pdf");
        writePdf(threePages, 3);
        writePdf(twentyPages, 20);
    }
    static void TearDownTestSuite() { delete dir; }

    void show(const QString& path, QSize size = {600, 500})
    {
        canvas.resize(size);
        canvas.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&canvas));
        QString error;
        ASSERT_TRUE(canvas.openDocument(path, &error)) << error.toStdString();
    }
    bool waitRendered()
    {
        QSignalSpy rendered(&canvas, &PageCanvas::pagesRendered);
        return rendered.wait(5000);
    }

    static inline QTemporaryDir* dir = nullptr;
    static inline QString threePages, twentyPages;
    PageCanvas canvas;
};

TEST_F(canvasTest, BadFilesAreRefusedAndTheCanvasStaysUsable)
{
    const struct {
        const char* name;
        QString path;
        const char* message;
    } cases[] = {
        {"missing", dir->filePath("nothing-here.pdf"), "could not be found"},
        {"plain text", writeFile(*dir, "notes.pdf", "just some words, no PDF\n"), "not a PDF"},
        {"damaged", writeFile(*dir, "damaged.pdf", "%PDF-1.4\n1 0 obj\n<< /Type /Cat"), "not a PDF"},
        {"locked", writeFile(*dir, "locked.pdf", lockedPdf()), "locked"},
    };
    show(threePages);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QString error;
        EXPECT_FALSE(canvas.openDocument(c.path, &error));
        EXPECT_TRUE(error.contains(QLatin1String(c.message))) << error.toStdString();
        EXPECT_FALSE(canvas.hasDocument());
        EXPECT_EQ(canvas.pageCount(), 0);
        EXPECT_FALSE(canvas.pageAt(QPoint(300, 200)).has_value());
        QTest::keyClick(&canvas, Qt::Key_End);  // no document: nothing to do, nothing breaks
        ASSERT_TRUE(canvas.openDocument(twentyPages));
        EXPECT_EQ(canvas.pageCount(), 20);
        EXPECT_EQ(canvas.pageSize(3), QSizeF(612, 792));
    }
}

TEST_F(canvasTest, DragOverAWordReportsPointsInsideItsTextBox)
{
    show(threePages);
    const QRectF box = wordBox(threePages, 1);
    ASSERT_FALSE(box.isEmpty());
    for (double zoom : {0.75, 1.0, 1.6}) {
        SCOPED_TRACE(zoom);
        canvas.setZoom(zoom);
        canvas.scrollToPageRect(1, box);
        QSignalSpy pressed(&canvas, &PageCanvas::pagePressed), dragged(&canvas, &PageCanvas::pageDragged),
            released(&canvas, &PageCanvas::pageReleased);
        const double y = box.center().y();
        const QPoint from = canvas.pageToViewport(1, {box.left() + 2, y}).toPoint();
        const QPoint to = canvas.pageToViewport(1, {box.right() - 2, y}).toPoint();
        QTest::mousePress(canvas.viewport(), Qt::LeftButton, Qt::ShiftModifier, from);
        QTest::mouseMove(canvas.viewport(), to);
        QTest::mouseRelease(canvas.viewport(), Qt::LeftButton, {}, to);
        ASSERT_EQ(pressed.size(), 1);
        ASSERT_EQ(dragged.size(), 1);
        ASSERT_EQ(released.size(), 1);
        EXPECT_EQ(pressed[0][2].value<Qt::KeyboardModifiers>(), Qt::ShiftModifier);
        for (const QList<QVariant>* signal : {&pressed[0], &dragged[0], &released[0]}) {
            EXPECT_EQ((*signal)[0].toInt(), 1);
            EXPECT_TRUE(box.contains((*signal)[1].toPointF())) << (*signal)[1].toPointF().x();
        }
    }
}

TEST_F(canvasTest, PagePointsAndViewportPixelsRoundTrip)
{
    show(twentyPages);
    const struct {
        double zoom;
        double position;
    } cases[] = {{1.0, 0.0}, {0.5, 3.4}, {1.37, 7.9}, {2.5, 12.5}, {0.1, 0.0}};
    const QPointF points[] = {{0, 0}, {612, 792}, {306.5, 10.25}, {50, 700}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.zoom);
        canvas.setZoom(c.zoom);
        canvas.setPagePosition(c.position);
        EXPECT_NEAR(canvas.pagePosition(), c.position, 1.0 / (792 * c.zoom) + 1e-6);
        const int page = canvas.nearestPageAt(canvas.viewport()->rect().center()).pageIndex;
        for (const QPointF& p : points) {
            const QPointF v = canvas.pageToViewport(page, p);
            const QPoint inside = (v + QPointF(p.x() == 0 ? 0.5 : -0.5, p.y() == 0 ? 0.5 : -0.5)).toPoint();
            const auto back = canvas.pageAt(inside);
            ASSERT_TRUE(back.has_value());
            EXPECT_EQ(back->pageIndex, page);
            EXPECT_NEAR(back->point.x(), p.x(), 1.5 / c.zoom);
            EXPECT_NEAR(back->point.y(), p.y(), 1.5 / c.zoom);
        }
        // Left of the page and in the gap below it: no page, but the nearest clamps into it.
        const QPointF left = canvas.pageToViewport(page, {-4 / c.zoom, 300});
        EXPECT_FALSE(canvas.pageAt(left.toPoint()).has_value());
        EXPECT_EQ(canvas.nearestPageAt(left.toPoint()).point.x(), 0.0);
        EXPECT_FALSE(canvas.pageAt(canvas.pageToViewport(page, {300, 792}).toPoint() + QPoint(0, 3)).has_value());
        const QRectF mapped = canvas.pageRectToViewport(page, {10, 20, 30, 40});
        EXPECT_NEAR(mapped.width(), 30 * c.zoom, 0.5);
        EXPECT_NEAR(mapped.height(), 40 * c.zoom, 0.5);
    }
}

TEST_F(canvasTest, KeysScrollPageAndZoom)
{
    show(twentyPages);
    QScrollBar* bar = canvas.verticalScrollBar();
    const int view = canvas.viewport()->height();
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        int delta;
    } scrolls[] = {{Qt::Key_PageDown, {}, view}, {Qt::Key_PageUp, {}, -view}, {Qt::Key_Space, {}, view},
                   {Qt::Key_Space, Qt::ShiftModifier, -view}, {Qt::Key_Down, {}, 20}, {Qt::Key_Up, {}, -20}};
    for (const auto& s : scrolls) {
        canvas.goToPage(5);
        const int before = bar->value();
        QTest::keyClick(&canvas, s.key, s.modifiers);
        EXPECT_EQ(bar->value() - before, s.delta) << QKeySequence(s.key | s.modifiers).toString().toStdString();
    }
    QSignalSpy pageChanges(&canvas, &PageCanvas::currentPageChanged);
    QTest::keyClick(&canvas, Qt::Key_End);
    EXPECT_EQ(canvas.currentPage(), 19);
    QTest::keyClick(&canvas, Qt::Key_Home);
    EXPECT_EQ(canvas.currentPage(), 0);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(&canvas, Qt::Key_PageDown);
    EXPECT_EQ(canvas.currentPage(), 2);  // 1500 px down a 790-px-per-page strip; centre line on page 3
    EXPECT_EQ(pageChanges.size(), 4);  // 19, 0, 1, 2

    const double fit = canvas.zoom();
    EXPECT_EQ(canvas.pageRectToViewport(0, {0, 0, 612, 792}).width(), canvas.viewport()->width() - 16);
    const auto anchor = canvas.nearestPageAt(canvas.viewport()->rect().center());
    QTest::keyClick(&canvas, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(canvas.zoom(), fit * 1.25);
    EXPECT_EQ(canvas.zoomMode(), PageCanvas::ZoomMode::Free);
    const auto after = canvas.nearestPageAt(canvas.viewport()->rect().center());
    EXPECT_EQ(after.pageIndex, anchor.pageIndex);
    EXPECT_NEAR(after.point.y(), anchor.point.y(), 1.0);
    QTest::keyClick(&canvas, Qt::Key_Minus, Qt::ControlModifier);
    QTest::keyClick(&canvas, Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(canvas.zoom(), fit / 1.25);
    canvas.resize(900, 500);  // a free zoom survives a resize
    EXPECT_DOUBLE_EQ(canvas.zoom(), fit / 1.25);
    QTest::keyClick(&canvas, Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(canvas.zoomMode(), PageCanvas::ZoomMode::FitWidth);
    canvas.resize(700, 500);  // fit width follows the window
    EXPECT_EQ(canvas.pageRectToViewport(0, {0, 0, 612, 792}).width(), canvas.viewport()->width() - 16);
    EXPECT_EQ(canvas.currentPage(), 2);
}

TEST_F(canvasTest, RenderedPagesShowTextHighlightsAndSelection)
{
    show(QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf"), {900, 1000});
    ASSERT_TRUE(waitRendered());
    auto document = Poppler::Document::load(QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf"));
    const auto words = document->page(0)->textList();
    ASSERT_FALSE(words.empty());
    const QRectF word = words.front()->boundingBox();
    const QRectF blank(2, 2, 20, 20);  // the top-left corner of the page's margin
    const auto darkest = [](const QImage& image, const QRect& area) {
        int darkest = 255;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                darkest = std::min(darkest, qGray(image.pixel(x, y)));
        return darkest;
    };
    const auto at = [&](const QRectF& pageRect) { return canvas.pageRectToViewport(0, pageRect).toAlignedRect(); };
    QImage shot = canvas.viewport()->grab().toImage();
    EXPECT_LT(darkest(shot, at(word)), 100);   // ink where the text box is
    EXPECT_EQ(darkest(shot, at(blank)), 255);  // white paper elsewhere
    EXPECT_FALSE(lexicorn::test::saveScreenshot(canvas, "canvas-sample-book").isEmpty());

    canvas.setHighlights({{0, {{blank, QColor(255, 220, 0, 120)}}}});
    canvas.setSelectionMarks(0, {word});
    shot = canvas.viewport()->grab().toImage();
    const QColor highlight = shot.pixelColor(at(blank).center());
    EXPECT_GT(highlight.red(), highlight.blue() + 60);
    const QRect wordArea = at(word);
    QColor paper;  // a pixel of the word's box that is not ink
    for (int x = wordArea.left() + 1; x < wordArea.right() && !paper.isValid(); ++x)
        if (QColor c = shot.pixelColor(x, wordArea.center().y()); qGray(c.rgb()) > 150)
            paper = c;
    ASSERT_TRUE(paper.isValid());
    EXPECT_GT(paper.blue(), paper.red() + 40);
    canvas.clearSelectionMarks();
    canvas.setHighlights({});
    EXPECT_EQ(darkest(canvas.viewport()->grab().toImage(), at(blank)), 255);

    // Reopened at another zoom there is no older image to stand in: ink comes
    // only from a fresh render in the right place (at 8x, a part of the page).
    for (double zoom : {2.0, 8.0}) {
        SCOPED_TRACE(zoom);
        canvas.setZoom(zoom);
        ASSERT_TRUE(canvas.openDocument(QStringLiteral(LEXICORN_SAMPLE_DIR "/books/sample-book.pdf")));
        canvas.scrollToPageRect(0, word);
        EXPECT_FALSE(canvas.visiblePagesRendered());
        for (int tries = 0; tries < 3 && !canvas.visiblePagesRendered(); ++tries)
            waitRendered();
        ASSERT_TRUE(canvas.visiblePagesRendered());
        EXPECT_LT(darkest(canvas.viewport()->grab().toImage(), at(word)), 100);
    }
    EXPECT_FALSE(lexicorn::test::saveScreenshot(canvas, "canvas-sample-book-8x").isEmpty());
}

}  // namespace

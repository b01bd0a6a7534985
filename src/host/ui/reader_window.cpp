#include "host/ui/reader_window.h"

#include "host/app/book_records.h"
#include "host/app/gesture_scope.h"
#include "host/app/note_classes.h"
#include "host/app/scan_reader.h"
#include "host/kit/view_kit.h"
#include "host/ui/event_monitor.h"
#include "host/ui/hud_overlay.h"
#include "host/ui/import_dialog.h"
#include "host/ui/notebook_panel.h"
#include "host/ui/outline_methods.h"
#include "host/ui/research_pane.h"
#include "host/ui/task_progress.h"

#include "foundation/dispatch.h"
#include "foundation/notification_center.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QMimeData>
#include <QShortcut>
#include <QShowEvent>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <string>

namespace lexicorn::host::ui {

namespace {

using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

ReaderWindow*& currentWindow()
{
    static ReaderWindow* window = nullptr;
    return window;
}

}  // namespace

ReaderWindow* ReaderWindow::current()
{
    return currentWindow();
}

ReaderWindow::ReaderWindow(HostApplication& application, QWidget* parent)
    : QMainWindow(parent), application_(application), studyboard_(makeStudyboard())
{
    currentWindow() = this;
    setWindowTitle(QStringLiteral("Lexicorn Reader"));
    setAcceptDrops(true);
    resize(1280, 860);

    board_ = new QWidget(this);
    auto* layout = new QVBoxLayout(board_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    borderLine_ = new QWidget(board_);
    borderLine_->setObjectName(QStringLiteral("toolBarBorderLine"));
    borderLine_->setFixedHeight(1);
    borderLine_->setStyleSheet(QStringLiteral("background: #c8c8c8;"));
    layout->addWidget(borderLine_);
    splitter_ = new QSplitter(Qt::Horizontal, board_);
    contents_ = makeOutlineTable(*application_.bookView);
    QWidget* contents = widgetOf(contents_);
    contents->hide();
    canvas_ = new PageCanvas(splitter_);
    panel_ = new NotebookPanel(splitter_);
    research_ = nullptr;
    splitter_->addWidget(contents);
    splitter_->addWidget(canvas_);
    splitter_->addWidget(panel_);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 3);
    splitter_->setStretchFactor(2, 2);
    layout->addWidget(splitter_, 1);
    setCentralWidget(board_);
    hud_ = new HudOverlay(board_);
    // Views placed above the border line (the dictionary popup) cover the
    // book and the notebook; only the heads-up messages stay above them.
    borderLine_->raise();
    hud_->raise();

    buildActions();
    statusBar()->showMessage(QStringLiteral("Open a PDF with File › Open, or drop one here."));
    progress_ = new TaskProgress(this);
    statusBar()->addPermanentWidget(progress_);
    // Scanned pages: read by OCR as they are shown, with a word in the
    // status line while a page is being read.
    ocrStatus_ = new QLabel(this);
    ocrStatus_->hide();
    statusBar()->addPermanentWidget(ocrStatus_);
    // Without its plug-in the reader is a plain reader; the status line says
    // so, and why, for as long as the window is open.
    if (!application_.plugin.problem.isEmpty()) {
        auto* pluginStatus = new QLabel(QStringLiteral("Dictionary features are off: the plug-in did not load."), this);
        pluginStatus->setObjectName(QStringLiteral("pluginStatus"));
        pluginStatus->setToolTip(QStringLiteral("%1\n%2").arg(application_.plugin.path, application_.plugin.problem));
        statusBar()->addPermanentWidget(pluginStatus);
    }
    routeMouseEvents(*canvas_, application_.delegate);
    studyboard_->selectionSource = [this] {
        return studyboardNotes(application_.notebook, application_.bookView->bookMd5, panel_->selectedNoteIds());
    };

    application_.bookView->display = this;
    application_.delegate->presentHUD = [this](const QString& text, double seconds) { hud_->showMessage(text, seconds); };
    studyboard_->presentHUD = application_.delegate->presentHUD;

    gestures_ = new BookGestures(*canvas_, *application_.bookView, *application_.delegate, this);
    connect(canvas_, &PageCanvas::currentPageChanged, this, [this](int page) {
        send<void>(*application_.bookView, "setCurrentPageNo:", page + 1);
        if (const std::shared_ptr<BookDocument>& book = application_.bookView->book)
            book->scanReader().pageShown(page + 1);
        updateStatus();
    });
    connect(panel_, &NotebookPanel::noteActivated, this, &ReaderWindow::jumpToNote);
    connect(panel_, &NotebookPanel::notesRemoved, this, &ReaderWindow::notesChanged);
    connect(panel_, &NotebookPanel::notesChanged, this, &ReaderWindow::notesChanged);

    // A note editor closing: what the plug-in wrote into the note shows,
    // once the gesture that wrote it is over.
    cancelEditObserver_ = NotificationCenter::defaultCenter().addObserverForName(
        QStringLiteral("CancelEditNote"), [this](const Notification&) {
            if (GestureScope::isOpen() && canvas_->document())
                canvas_->document()->notify(BookDocument::Notes);
            else
                QTimer::singleShot(0, panel_, &NotebookPanel::reload);
        });
    // The plug-in asks the host's web panel to translate a sentence.
    researchObserver_ = NotificationCenter::defaultCenter().addObserverForName(
        QStringLiteral("ResearchOnWeb"),
        [this](const Notification& notification) { showResearchPane(notification.userInfo.value(QStringLiteral("text")).toString()); });

    // The board's view is built: an add-on places its buttons now.
    send<void>(*studyboard_, "viewDidLoad");
}

ReaderWindow::~ReaderWindow()
{
    NotificationCenter::defaultCenter().removeObserver(researchObserver_);
    NotificationCenter::defaultCenter().removeObserver(cancelEditObserver_);
    application_.bookView->display = nullptr;
    application_.delegate->presentHUD = nullptr;
    studyboard_->selectionSource = nullptr;
    if (currentWindow() == this)
        currentWindow() = nullptr;
}

void ReaderWindow::buildActions()
{
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* open = file->addAction(QStringLiteral("&Open…"), this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Open a PDF"), QString(), QStringLiteral("PDF (*.pdf)"));
        if (!path.isEmpty())
            openFile(path);
    });
    open->setShortcut(QKeySequence::Open);
    recentMenu_ = file->addMenu(QStringLiteral("Open &Recent"));
    buildRecentMenu();
    file->addAction(QStringLiteral("Import dictionary…"), this, &ReaderWindow::showImportDialog);
    file->addSeparator();
    file->addAction(QStringLiteral("&Quit"), QKeySequence::Quit, this, &QWidget::close);

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    view->addAction(QStringLiteral("Zoom &In"), QKeySequence::ZoomIn, canvas_, &PageCanvas::zoomIn);
    view->addAction(QStringLiteral("Zoom &Out"), QKeySequence::ZoomOut, canvas_, &PageCanvas::zoomOut);
    view->addAction(QStringLiteral("Fit &Width"), this, [this] { canvas_->setZoomMode(PageCanvas::ZoomMode::FitWidth); });
    view->addAction(QStringLiteral("Fit &Page"), this, [this] { canvas_->setZoomMode(PageCanvas::ZoomMode::FitPage); });
    view->addSeparator();
    contentsAction_ = view->addAction(QStringLiteral("&Contents"));
    contentsAction_->setShortcut(Qt::Key_F4);
    contentsAction_->setCheckable(true);
    contentsAction_->setEnabled(false);
    connect(contentsAction_, &QAction::toggled, this, [this](bool on) { widgetOf(contents_)->setVisible(on); });

    QToolBar* tools = addToolBar(QStringLiteral("Reader"));
    tools->setObjectName(QStringLiteral("readerToolBar"));
    tools->addAction(open);
    QAction* highlighter = tools->addAction(QStringLiteral("Highlighter"));
    highlighter->setCheckable(true);
    connect(highlighter, &QAction::toggled, this,
            [this](bool on) { send<void>(*application_.bookView, "setHighlightMode:", on ? 1 : 0); });
    tools->addAction(QStringLiteral("Highlight"), this, [this] {
        const GestureScope gesture;
        send<void>(*application_.bookView, "highlight:", std::string("toolbar"));
        send<void>(*application_.bookView, "noteHighlight:", std::string("toolbar"));
    });
    // The clip bar: add-on buttons go here.
    clipBar_ = addToolBar(QStringLiteral("Add-ons"));
    clipBar_->setObjectName(QStringLiteral("clipBar"));

    auto* copy = new QShortcut(QKeySequence::Copy, this);
    connect(copy, &QShortcut::activated, this, [this] { send<void>(*application_.bookView, "copy:", std::string("menu")); });
}

void ReaderWindow::buildRecentMenu()
{
    recentMenu_->clear();
    if (!application_.notebook)
        return;
    for (const MbBook& book : MbModelTool(*application_.notebook).recentBooks(10)) {
        const QString path = book.path;
        recentMenu_->addAction(book.bookTitle.isEmpty() ? path : book.bookTitle, this, [this, path] { openFile(path); });
    }
    recentMenu_->setEnabled(!recentMenu_->isEmpty());
}

// How long the book's MD5 waits for its first page to be painted.
constexpr int firstPageWait = 300;

bool ReaderWindow::openFile(const QString& path)
{
    const auto fail = [this, &path](const QString& why) {
        QMessageBox::warning(this, QStringLiteral("Lexicorn Reader"), QStringLiteral("Cannot open %1:\n%2").arg(path, why));
        return false;
    };
    if (!QFileInfo(path).isReadable())
        return fail(QStringLiteral("the file cannot be read."));
    // A file the desktop hands over with "Open with" may be anything.
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent);
    if (!type.inherits(QStringLiteral("application/pdf")))
        return fail(QStringLiteral("it is not a PDF but %1 (%2).").arg(type.comment(), type.name()));
    // The one reading of the file on this thread: the canvas shows this book
    // and the book view takes it over once its MD5 is known.
    auto document = std::make_shared<BookDocument>(path);
    if (!document->pdf().isOpen())
        return fail(QStringLiteral("it is not a PDF, or it is damaged or locked."));
    if (!application_.notebook)
        return fail(QStringLiteral("the notebook is not open."));
    if (!document->isOpen())
        return fail(document->problem());
    // The old book goes, its place remembered while the canvas still shows
    // it; the new one shows while its MD5 is worked out.
    rememberPage();
    canvas_->setDocument(document);
    connect(document.get(), &BookDocument::changed, this, &ReaderWindow::bookChanged);
    send<void>(*application_.bookView, "closeBook");
    panel_->showBook(application_.notebook, QString());
    bookReady_ = false;
    bookPath_ = path;
    openingBook_ = std::move(document);
    setWindowTitle(QStringLiteral("%1 — Lexicorn Reader").arg(QFileInfo(path).fileName()));
    updateStatus();
    const std::uint64_t opening = ++opening_;
    // The hash reads the whole file; it starts once the first page is
    // painted (or soon after, when nothing is shown), so it never slows that.
    auto* start = new QTimer(this);
    start->setSingleShot(true);
    const auto hash = [this, start, opening, path] {
        start->deleteLater();
        if (opening != opening_)
            return;
        QPointer<ReaderWindow> window(this);
        globalQueue().async([window, opening, path] {
            std::optional<QString> md5 = MbModelTool::md5OfFile(path);
            mainQueue().async([window, opening, md5 = std::move(md5)] {
                if (window)
                    window->bookHashed(opening, md5);
            });
        });
    };
    connect(start, &QTimer::timeout, this, hash);
    connect(canvas_, &PageCanvas::pagesRendered, start, [start] { start->start(0); });
    start->start(firstPageWait);
    return true;
}

// The book's MD5 is its key in the notebook: now its notes, highlights and
// reading place are known. A later openFile makes this answer stale.
void ReaderWindow::bookHashed(std::uint64_t opening, const std::optional<QString>& md5)
{
    if (opening != opening_ || !openingBook_)
        return;
    if (!md5) {
        QMessageBox::warning(this, QStringLiteral("Lexicorn Reader"),
                             QStringLiteral("Cannot open %1:\nthe file cannot be read.").arg(bookPath_));
        return;
    }
    const BookRecord record = recordOpenedBook(*application_.notebook, *md5, bookPath_);
    const int page = record.page;
    studyboard_->bookTitle = record.title;
    application_.bookView->openingBook = std::move(openingBook_);
    send<void>(*application_.bookView, "openBook:topicid:noteid:bookLocation:", *md5, QString(), QString(), page);
    // A replacement of openBook may have opened the book anew: the canvas
    // shows the book the book view has.
    if (const std::shared_ptr<BookDocument>& book = application_.bookView->book; book && book != canvas_->document()) {
        canvas_->setDocument(book);
        connect(book.get(), &BookDocument::changed, this, &ReaderWindow::bookChanged);
    }
    // The reader may have scrolled while the book was read; only an untouched
    // first page moves on to where the book was left.
    if (canvas_->currentPage() == 0)
        canvas_->goToPage(page - 1);
    panel_->showBook(application_.notebook, *md5);
    showContents();
    if (const std::shared_ptr<BookDocument>& book = application_.bookView->book) {
        watchScans(book->scanReader());
        book->scanReader().pageShown(canvas_->currentPage() + 1);
    }
    buildRecentMenu();
    updateStatus();
    bookReady_ = true;
    emit bookReady();
}

// The contents pane opens with a book that has an outline and closes with
// one that has none.
void ReaderWindow::showContents()
{
    send<void>(*contents_, "reloadData");
    const bool any = outlineSize(*application_.bookView) > 0;
    contentsAction_->setEnabled(any);
    contentsAction_->setChecked(any);
    widgetOf(contents_)->setVisible(any);
}

void ReaderWindow::rememberPage()
{
    if (application_.notebook)
        host::rememberPage(*application_.notebook, application_.bookView->bookMd5, canvas_->currentPage() + 1);
}

void ReaderWindow::showImportDialog()
{
    auto* dialog = new ImportDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // The plug-in hears of the new dictionary by notification; the host knows nothing of its engine.
    connect(dialog, &ImportDialog::imported, this, [](const QString& slot) {
        NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("LexicornDictionaryImported"), {},
                                                                 QVariantMap{{QStringLiteral("dict"), slot}});
    });
    dialog->show();
}

void ReaderWindow::updateStatus()
{
    if (!canvas_->hasDocument())
        return;
    statusBar()->showMessage(QStringLiteral("Page %1 of %2   ·   %3 %")
                                 .arg(canvas_->currentPage() + 1)
                                 .arg(canvas_->pageCount())
                                 .arg(qRound(canvas_->zoom() * 100)));
}

// Each time the board comes on screen, through the runtime so add-ons act.
void ReaderWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (!event->spontaneous())
        send<void>(*studyboard_, "viewWillAppear:", true);
}

void ReaderWindow::closeEvent(QCloseEvent* event)
{
    rememberPage();
    send<void>(*application_.bookView, "closeBook");
    QMainWindow::closeEvent(event);
}

void ReaderWindow::dragEnterEvent(QDragEnterEvent* event)
{
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile() && url.toLocalFile().endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
            event->acceptProposedAction();
            return;
        }
    }
}

void ReaderWindow::dropEvent(QDropEvent* event)
{
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile() && openFile(url.toLocalFile()))
            break;
    }
}

void ReaderWindow::jumpToNote(const QString& noteid)
{
    if (!application_.notebook)
        return;
    if (const std::optional<NotePlace> place = placeOfNote(*application_.notebook, noteid))
        showPlace(place->pageNo, place->area);
}

QPointF ReaderWindow::pageToViewport(int pageNo, const QPointF& point) const
{
    return canvas_->pageToViewport(pageNo - 1, point);
}

QPointF ReaderWindow::viewportToWindow(const QPointF& point) const
{
    return canvas_->viewport()->mapTo(board_, point);
}

QPointF ReaderWindow::windowToViewport(const QPointF& point) const
{
    return canvas_->viewport()->mapFrom(board_, point);
}

void ReaderWindow::showResearchPane(const QString& sentence)
{
    if (!research_) {
        research_ = new ResearchPane(splitter_);
        splitter_->addWidget(research_);
        connect(research_, &ResearchPane::closed, research_, &QWidget::hide);
    }
    research_->showSentence(sentence);
    research_->show();
}

void ReaderWindow::notesChanged()
{
    if (const std::shared_ptr<BookDocument>& book = canvas_->document())
        book->notify(BookDocument::Highlights | BookDocument::Notes);
    else
        panel_->reload();
}

void ReaderWindow::watchScans(ScanReader& reader)
{
    connect(&reader, &ScanReader::pageReading, this, [this](int page) {
        ocrStatus_->setText(QStringLiteral("Reading scanned page %1…").arg(page));
        ocrStatus_->show();
    });
    connect(&reader, &ScanReader::pageRead, this, [this, &reader] { ocrStatus_->setVisible(reader.pagesWaiting() > 0); });
    connect(&reader, &ScanReader::unavailable, this, [this](const QString& problem) {
        ocrStatus_->setText(QStringLiteral("Scanned pages cannot be read: %1").arg(problem));
        ocrStatus_->show();
    });
}

void ReaderWindow::bookChanged(BookDocument::Changes changes)
{
    if (changes & BookDocument::Notes)
        panel_->reload();
}

void ReaderWindow::showPlace(int pageNo, const QRectF& area)
{
    if (area.isEmpty())
        canvas_->goToPage(pageNo - 1);
    else
        canvas_->scrollToPageRect(pageNo - 1, area);
}

void ReaderWindow::showContextMenu(int pageNo, const QPointF& point)
{
    gestures_->showContextMenu(this, pageNo, point);
}

QPointF ReaderWindow::viewToPage(int pageNo, const QPointF& point) const
{
    const QPointF origin = pageToViewport(pageNo, QPointF(0, 0));
    const double zoom = canvas_->zoom();
    return QPointF((point.x() - origin.x()) / zoom, (point.y() - origin.y()) / zoom);
}

}  // namespace lexicorn::host::ui

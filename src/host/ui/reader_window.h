#pragma once

// The reader's main window, the study board: the book on the left, the
// notebook on the right, a toolbar with the clip bar for add-on buttons, and
// a status line. It is a view over the model: gestures become the book view
// controller's methods (BookGestures, sent through the runtime, so the
// plug-in's replacements act on them) and the book's changes come back from
// its BookDocument, to the views they name.

#include "host/app/host_application.h"
#include "host/app/note_classes.h"
#include "host/ui/book_gestures.h"
#include "host/ui/page_canvas.h"

#include <QMainWindow>
#include <QMenu>
#include <QPointer>


class QLabel;
class QSplitter;
class QToolBar;

namespace lexicorn::host::ui {

class HudOverlay;
class NotebookPanel;
class ResearchPane;
class TaskProgress;


class ReaderWindow : public QMainWindow, public BookDisplay {
    Q_OBJECT
public:
    explicit ReaderWindow(HostApplication& application, QWidget* parent = nullptr);
    ~ReaderWindow() override;

    // Opens a PDF: its first page shows at once; when its MD5 has been
    // worked out in the background it becomes a book of the notebook (its
    // notes, highlights and dictionary lookups) and goes to the page where it
    // was left. A file that is no readable PDF gets a message box and the
    // reader keeps what it showed. False when it did not open.
    bool openFile(const QString& path);
    // Whether the book last opened is in the notebook and ready for lookups.
    bool isBookReady() const { return bookReady_; }

signals:
    void bookReady();

public:
    PageCanvas& canvas() { return *canvas_; }
    NotebookPanel& notebookPanel() { return *panel_; }
    HudOverlay& hud() { return *hud_; }
    // A long task's progress in the status line (the study board's batch).
    TaskProgress& taskProgress() { return *progress_; }
    ResearchPane* researchPane() { return research_; }
    QToolBar& clipBar() { return *clipBar_; }
    // The contents pane's table (the book's outline), hidden for a book without one.
    std::shared_ptr<runtime::Object> contentsTable() const { return contents_; }
    QWidget& boardView() { return *board_; }
    BookViewObject& bookView() { return *application_.bookView; }
    std::shared_ptr<runtime::Object> studyboard() const { return studyboard_; }
    // The context menu of the selection while it is open, else null.
    QMenu* contextMenu() { return gestures_->contextMenu(); }

    // The window that shows the book view controller (one per process).
    static ReaderWindow* current();

    // The page the book view calls the current page, in canvas coordinates.
    QPointF pageToViewport(int pageNo, const QPointF& point) const;
    // Window coordinates are the study board's (see windowContentOf).
    QPointF viewportToWindow(const QPointF& point) const;
    QPointF windowToViewport(const QPointF& point) const;
    void showResearchPane(const QString& sentence);
    // File › Import dictionary…
    void showImportDialog();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

public:
    // BookDisplay
    void showPlace(int pageNo, const QRectF& area) override;
    void showContextMenu(int pageNo, const QPointF& point) override;
    QPointF viewToPage(int pageNo, const QPointF& point) const override;

private:
    void buildActions();
    void buildRecentMenu();
    void rememberPage();
    void jumpToNote(const QString& noteid);
    void updateStatus();
    void showContents();
    void bookHashed(std::uint64_t opening, const std::optional<QString>& md5);
    // The notes changed outside the book's methods (the panel, OCR): the
    // highlights and the panel show them.
    void notesChanged();
    void bookChanged(BookDocument::Changes changes);
    // The status line says which scanned page of the book is being read.
    void watchScans(ScanReader& reader);

    HostApplication& application_;
    std::shared_ptr<StudyboardObject> studyboard_;
    QWidget* board_ = nullptr;
    QWidget* borderLine_ = nullptr;
    QSplitter* splitter_ = nullptr;
    PageCanvas* canvas_ = nullptr;
    NotebookPanel* panel_ = nullptr;
    ResearchPane* research_ = nullptr;
    HudOverlay* hud_ = nullptr;
    TaskProgress* progress_ = nullptr;
    QLabel* ocrStatus_ = nullptr;
    QToolBar* clipBar_ = nullptr;
    QMenu* recentMenu_ = nullptr;
    std::shared_ptr<runtime::Object> contents_;
    QAction* contentsAction_ = nullptr;
    BookGestures* gestures_ = nullptr;
    QString bookPath_;
    // The file being opened: its book, handed to the book view once its MD5
    // is known, so the PDF is read once on this thread.
    std::uint64_t opening_ = 0;
    std::shared_ptr<BookDocument> openingBook_;
    bool bookReady_ = false;
    quint64 researchObserver_ = 0;
    quint64 cancelEditObserver_ = 0;
};

// Registers the window's classes and methods with the runtime (page views,
// the study board's and the book view's view methods, the popup menu). Call
// before the plug-in is loaded, so its replacements find them.
void registerWindowClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

// Starts the reader: window classes registered, then the host launched.
HostApplication launchReader(const QString& pluginPath = host::pluginPath());

}  // namespace lexicorn::host::ui

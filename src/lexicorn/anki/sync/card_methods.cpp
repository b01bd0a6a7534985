#include "lexicorn/anki/sync/card_methods.h"

#include "lexicorn/anki/sync/runtime_note.h"

#include "lexicorn/anki/sync/card_sync.h"

#include "foundation/dispatch.h"

#include "runtime/hosting.h"

#include <chrono>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using Callback = std::function<void(bool, QString)>;

std::shared_ptr<const DictNote> asDictNote(Object& note)
{
    return std::make_shared<RuntimeDictNote>(note.shared_from_this());
}

CardSyncCallback forward(Callback callback)
{
    return [callback = std::move(callback)](bool success, const QString& message) {
        if (callback)
            callback(success, message);
    };
}

void addNoteMethods(runtime::Runtime& runtime, runtime::Class& note)
{
    runtime.addMethod(note, "isDictNote", makeImp([](Object& self) { return isDictNote(RuntimeDictNote(self.shared_from_this())); }));
    runtime.addMethod(note, "isDictTitle", makeImp([](Object& self) { return isDictTitle(RuntimeDictNote(self.shared_from_this())); }));
    // Empty when the card may be synchronised, else why not.
    runtime.addMethod(note, "dictMatch", makeImp([](Object& self) {
        return dictMatch(RuntimeDictNote(self.shared_from_this())).value_or(QString());
    }));
    runtime.addMethod(note, "asyncAddToAnkiWithTitle:wordDict:showHUD:",
                      makeImp([](Object& self, QString bookTitle, QJsonObject params, Callback callback) {
                          asyncAddToAnkiWithTitle_wordDict_showHUD_(asDictNote(self), bookTitle, params, forward(std::move(callback)));
                      }));
    runtime.addMethod(note, "updateToAnkiWithTitle:showHUD:", makeImp([](Object& self, QString bookTitle, Callback callback) {
                          updateToAnkiWithTitle_showHUD_(*asDictNote(self), bookTitle, forward(std::move(callback)));
                      }));
    runtime.addMethod(note, "asyncUpdateToAnkiWithTitle:showHUD:", makeImp([](Object& self, QString bookTitle, Callback callback) {
                          asyncUpdateToAnkiWithTitle_showHUD_(asDictNote(self), bookTitle, forward(std::move(callback)));
                      }));
}

// The study board's batch, kept with the board object.
const char batchKey = 0;

// How long the batch waits for a progress report to be shown.
constexpr std::chrono::seconds reportWait{5};

// The batch's progress, shown while it runs: items looked at of all, and
// cards Anki took.
const QString progressText = QStringLiteral("批量同步中：%1 / %2，完成数：%3");

// Shows the progress in the host's status line when it has one; a host
// without one gets the later reports as heads-up messages.
void showProgress(Object& board, const BatchSync::Counts& counts)
{
    const QString text = progressText.arg(counts.visited).arg(counts.total).arg(counts.done);
    if (runtime::respondsTo(board, "showProgressWithText:done:total:"))
        runtime::send<void>(board, "showProgressWithText:done:total:", text, int(counts.visited), int(counts.total));
    else if (counts.visited > 0)
        runtime::send<void>(board, "showHUD:withDuration:", text, 2.0);
}

std::shared_ptr<BatchSync> batchOf(Object& board)
{
    std::any stored = board.associatedObject(&batchKey);
    if (auto* batch = std::any_cast<std::shared_ptr<BatchSync>>(&stored))
        return *batch;
    std::weak_ptr<Object> weakBoard = board.weak_from_this();
    auto headsUp = [weakBoard](const QString& text, double seconds) {
        if (auto alive = weakBoard.lock())
            runtime::send<void>(*alive, "showHUD:withDuration:", text, seconds);
    };
    // A batch can take minutes: its progress is shown every 20 notes. The
    // batch goes on once the report is on screen, so the progress line shows
    // where it stands; an event loop that no longer runs holds it up for a
    // moment only.
    auto progress = [weakBoard](const BatchSync::Counts& counts) {
        auto shown = std::make_shared<DispatchSemaphore>();
        mainQueue().async([weakBoard, counts, shown] {
            if (auto alive = weakBoard.lock())
                showProgress(*alive, counts);
            shown->signal();
        });
        shown->waitFor(reportWait);
    };
    auto batch = std::make_shared<BatchSync>(headsUp, progress);
    board.setAssociatedObject(&batchKey, batch);
    return batch;
}

// The batch gives no word when it ends, but it holds the notes of its run
// until then: every note of a run shares one watch, and when the last note
// goes the watch takes the progress down, unless another run has started.
class RunWatch {
public:
    RunWatch(std::weak_ptr<Object> board, std::weak_ptr<BatchSync> batch) : board_(std::move(board)), batch_(std::move(batch)) {}
    ~RunWatch()
    {
        mainQueue().async([board = board_, batch = batch_] {
            const auto alive = board.lock();
            const auto running = batch.lock();
            if (alive && running && !running->isUpdating() && runtime::respondsTo(*alive, "hideProgress"))
                runtime::send<void>(*alive, "hideProgress");
        });
    }
    RunWatch(const RunWatch&) = delete;
    RunWatch& operator=(const RunWatch&) = delete;

private:
    std::weak_ptr<Object> board_;
    std::weak_ptr<BatchSync> batch_;
};

class WatchedNote : public RuntimeDictNote {
public:
    WatchedNote(std::shared_ptr<Object> note, std::shared_ptr<RunWatch> watch)
        : RuntimeDictNote(std::move(note)), watch_(std::move(watch))
    {
    }

private:
    std::shared_ptr<RunWatch> watch_;
};

void dictUpdateToAnki(Object& board)
{
    const std::shared_ptr<BatchSync> batch = batchOf(board);
    const auto watch = std::make_shared<RunWatch>(board.weak_from_this(), batch);
    BatchSync::NoteList notes;
    for (const std::shared_ptr<Object>& note : runtime::send<std::vector<std::shared_ptr<Object>>>(board, "selectionNotes"))
        notes.push_back(std::make_shared<WatchedNote>(note, watch));
    BatchSync::Counts start;
    start.total = static_cast<unsigned long>(notes.size());
    const bool wasRunning = batch->isUpdating();
    batch->dictUpdateToAnki(std::move(notes), runtime::send<QString>(board, "currentBookTitle"));
    if (!wasRunning && batch->isUpdating())
        showProgress(board, start);
}

void addStudyboardMethods(runtime::Runtime& runtime, runtime::Class& board)
{
    runtime.addMethod(board, "isUpdating", makeImp([](Object& self) { return batchOf(self)->isUpdating(); }), "^c@:");
    runtime.addMethod(board, "setIsUpdating:", makeImp([](Object& self, bool updating) { batchOf(self)->setIsUpdating(updating); }),
                      "v@:^c");
    // The sender is the button pressed, or null.
    runtime.addMethod(board, "dictUpdateToAnki:",
                      makeImp([](Object& self, std::shared_ptr<Object> /*sender*/) { dictUpdateToAnki(self); }));
}

}  // namespace

void installCardMethods()
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    if (runtime::Class* note = runtime.classNamed("MbBookNote"))
        addNoteMethods(runtime, *note);
    if (runtime::Class* board = runtime.classNamed("MbUIStudyboardController"))
        addStudyboardMethods(runtime, *board);
}

}  // namespace lexicorn

#include "lexicorn/hosting/card_methods.h"

#include "lexicorn/hosting/runtime_note.h"

#include "lexicorn/anki/sync/card_sync.h"

#include "foundation/dispatch.h"

#include "runtime/hosting.h"

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
    // A batch can take minutes: the heads-up follows it every 20 notes.
    auto progress = [headsUp](const BatchSync::Counts& counts) {
        const QString text = QStringLiteral("同步中：%1 / %2").arg(counts.visited).arg(counts.total);
        mainQueue().async([headsUp, text] { headsUp(text, 2.0); });
    };
    auto batch = std::make_shared<BatchSync>(headsUp, progress);
    board.setAssociatedObject(&batchKey, batch);
    return batch;
}

void addStudyboardMethods(runtime::Runtime& runtime, runtime::Class& board)
{
    runtime.addMethod(board, "isUpdating", makeImp([](Object& self) { return batchOf(self)->isUpdating(); }), "^c@:");
    runtime.addMethod(board, "setIsUpdating:", makeImp([](Object& self, bool updating) { batchOf(self)->setIsUpdating(updating); }),
                      "v@:^c");
    runtime.addMethod(board, "dictUpdateToAnki:", makeImp([](Object& self, std::string /*sender*/) {
        BatchSync::NoteList notes;
        for (const std::shared_ptr<Object>& note : runtime::send<std::vector<std::shared_ptr<Object>>>(self, "selectionNotes"))
            notes.push_back(std::make_shared<RuntimeDictNote>(note));
        batchOf(self)->dictUpdateToAnki(std::move(notes), runtime::send<QString>(self, "currentBookTitle"));
    }));
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

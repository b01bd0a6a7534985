#pragma once

// Sending dictionary cards to Anki: one card added or brought up to date
// from its mind-map note, and a batch of notes synchronised in order.
//
// Every operation reads the note through the DictNote interface, never
// changes it, and reports through callbacks. The single-card operations call
// their callback exactly once on the main queue (except an update of a note
// that is no dictionary card, which is ignored); the batch reports its
// summary as an alert.

#include "lexicorn/render/dict_note.h"

#include <QJsonObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lexicorn {

// Success flag and the message for the user; always run on the main queue.
using CardSyncCallback = std::function<void(bool success, const QString& message)>;

// The texts shown to the user and written to the log.
namespace syncmessage {
inline const QString indexError = QStringLiteral("❌ 标题中的索引错误！");
inline const QString dictMismatch = QStringLiteral("❌ 字典不匹配无法同步，请选择：%@");
inline const QString added = QStringLiteral("👍 Anki 成功添加卡片");
inline const QString updated = QStringLiteral("👍 Anki 同步完成卡片");
// Head and short name, joined by a full-width colon.
inline const QString headAndName = QStringLiteral("%@：%@");
inline const QString noConnection = QStringLiteral("AnkiConnect error: Could not connect to the server.");
inline const QString logAdded = QStringLiteral("🌀🌀🌀🌀 KSWAnkiconnect add formatedWord: %@, ankiID: %@");
inline const QString logUpdated = QStringLiteral("🌀🌀🌀🌀 KSWAnkiconnect update formatedWord: %@, ankiID: %@");
inline const QString logError = QStringLiteral("🌀🌀🌀🌀 KSWAnkiconnect addNote error: %@");
// Anki's answer had no "error" member; the answer follows.
inline const QString unexpectedReply = QStringLiteral("AnkiConnect 的回复无法识别：");
// Note type, the configured field name, the setting that holds it.
inline const QString fieldNotInNoteType = QStringLiteral("笔记类型“%@”中没有字段“%@”（%@），请在 Anki 设置中重新选择字段！");
// The deck, and why the card could not be moved there.
inline const QString notInDeck = QStringLiteral("卡片已加入 Anki，但未能移入牌组“%@”：%@");
// The batch.
inline const QString dictNotLoaded = QStringLiteral("字典初始化未完成，请稍后重试！");
inline const QString batchRunning = QStringLiteral("批量更新未完成，请稍后重试！");
inline const QString batchStart = QStringLiteral("总数：%lu，开始批量同步...");
inline const QString errorLine = QStringLiteral("%@\n%@ - %@");
inline const QString summaryWithErrors = QStringLiteral("总数: %lu, 有效数: %lu, 完成数: %lu。错误信息见剪切板！");
inline const QString summaryDone = QStringLiteral("👍 同步完成。总数: %lu, 有效数: %lu。");
}  // namespace syncmessage

// The comment list has at least two entries, the first in group "sentenceCN"
// and the second in group "exts".
bool isDictNote(const DictNote& note);
// The title holds the readings, star, index and end markers of a card title.
bool isDictTitle(const DictNote& note);

// Nothing when a card with this title was made with the dictionary numbered
// selectedDictNumber; else the message that explains why it cannot be
// synchronised: the index error when the index after "📇" has neither two
// nor three "-"-separated parts or its third part is not a whole number of
// at least 1; the mismatch message naming the card's dictionary otherwise.
std::optional<QString> dictMatchForTitle(const QString& notetitle, int selectedDictNumber);
// The same against the dictionary the engine has selected now.
std::optional<QString> dictMatch(const DictNote& note);

// The part of the title before the first ";" (all of it when there is none).
QString cardShortName(const QString& notetitle);

// Sends a new card (the parameters {"note": {...}} made for the note) to
// Anki on a background queue and reports the outcome.
void asyncAddToAnkiWithTitle_wordDict_showHUD_(std::shared_ptr<const DictNote> note, const QString& bookTitle,
                                               const QJsonObject& params, CardSyncCallback callback);

// Rebuilds the card from the note and writes it to Anki: updates the Anki
// note that holds the note id, or adds a new one when there is none. Blocks
// on AnkiConnect, so call it off the main thread.
void updateToAnkiWithTitle_showHUD_(const DictNote& note, const QString& bookTitle, CardSyncCallback callback);
// The same on a background queue; returns at once.
void asyncUpdateToAnkiWithTitle_showHUD_(std::shared_ptr<const DictNote> note, const QString& bookTitle,
                                         CardSyncCallback callback);

// Synchronises many notes with Anki, one request at a time, in list order.
// Notes that are no dictionary cards are counted and skipped; a card that
// fails leaves a line in the error text and the batch goes on. At the end
// the error text (when there is one) replaces the general pasteboard and the
// summary is shown with KSWAnkiconnect::showeAlertWithMessage_.
class BatchSync : public std::enable_shared_from_this<BatchSync> {
public:
    using NoteList = std::vector<std::shared_ptr<const DictNote>>;
    // A transient message and how long to show it, in seconds; called on
    // the thread that called dictUpdateToAnki (the main thread).
    using HeadsUp = std::function<void(const QString& text, double seconds)>;

    struct Counts {
        unsigned long visited = 0;  // notes looked at so far
        unsigned long total = 0;    // notes in the list
        unsigned long valid = 0;    // cards whose rebuild was tried
        unsigned long done = 0;     // cards Anki accepted
    };
    // Called on the batch's background queue after every progressEvery
    // notes, before the next note is sent; the batch waits while it runs.
    // Post to the main queue to show anything.
    using Progress = std::function<void(const Counts& counts)>;
    static constexpr unsigned long progressEvery = 20;

    struct Outcome {
        Counts counts;
        QString errorText;  // empty, or one "\n" TITLE " - " MESSAGE line per failure
        QString summary;
    };

    explicit BatchSync(HeadsUp headsUp, Progress progress = {});

    bool isUpdating() const { return isUpdating_.load(); }
    void setIsUpdating(bool updating) { isUpdating_.store(updating); }

    // The study board's Anki button: checks that the dictionaries are loaded
    // and no batch runs (else a heads-up says so and nothing is sent), then
    // shows the start heads-up and runs the batch on a background queue.
    // Returns at once. Call on the main thread. When this object is owned by
    // a shared_ptr the batch keeps it alive; otherwise keep it alive until the
    // batch has ended (isUpdating() false again).
    void dictUpdateToAnki(NoteList notes, const QString& bookTitle);

    // The batch itself, blocking, without the start checks and without
    // touching isUpdating: visits the notes, fills the pasteboard when there
    // were errors, queues the summary alert and returns what it did.
    Outcome run(const NoteList& notes, const QString& bookTitle) const;

private:
    HeadsUp headsUp_;
    Progress progress_;
    std::atomic<bool> isUpdating_{false};
};

}  // namespace lexicorn

#include "lexicorn/anki/sync/card_sync.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_format.h"

#include "foundation/dispatch.h"
#include "foundation/log.h"
#include "foundation/pasteboard.h"

#include <QJsonDocument>
#include <QStringList>

namespace lexicorn {

namespace {

const QString groupKey = QStringLiteral("group");
const QString errorKey = QStringLiteral("error");
const QString resultKey = QStringLiteral("result");
const QString noteKey = QStringLiteral("note");
const QString idKey = QStringLiteral("id");

// Replaces each "%lu" of format by the next number.
QString formatCounts(const QString& format, std::initializer_list<unsigned long> numbers)
{
    QString text = format;
    qsizetype from = 0;
    for (unsigned long number : numbers) {
        const qsizetype at = text.indexOf(QStringLiteral("%lu"), from);
        if (at < 0)
            break;
        const QString digits = QString::number(number);
        text.replace(at, 3, digits);
        from = at + digits.size();
    }
    return text;
}

void callOnMain(const CardSyncCallback& callback, bool success, const QString& message)
{
    mainQueue().async([callback, success, message] {
        if (callback)
            callback(success, message);
    });
}

// What Anki said to an addNote or updateNoteFields request: success, or the
// message of the failure: the server's error, or the no-connection text when
// nothing (or a reply without an "error" member) came back.
struct SendOutcome {
    bool success = false;
    QString message;  // the failure's message
    QJsonValue result;
};

SendOutcome evaluate(const KSWAnkiconnect::Reply& reply)
{
    if (reply && ankiReplySucceeded(*reply))
        return {true, {}, reply->value(resultKey)};
    if (!reply || !reply->contains(errorKey))
        return {false, syncmessage::noConnection, {}};
    return {false, describeReplyValue(reply->value(errorKey)), {}};
}

// Sends the parameters of a rebuilt card: an update when they name an Anki
// note, else a new note.
KSWAnkiconnect::Reply sendRebuilt(const QJsonObject& params)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    if (params.value(noteKey).toObject().contains(idKey))
        return anki.updateWithParams_(params);
    return anki.addToAnkiWithWordDict_(params);
}

bool usableParams(const QJsonObject& params)
{
    return !params.isEmpty() && params.contains(noteKey);
}

// The name of a dictionary number; a number the engine has no dictionary for
// (a title edited by hand) is named by its digits rather than ending the
// program, as the title is the user's data.
QString dictionaryName(int number)
{
    if (SelectDictType::fromRawValue(number))
        return EnWordServer::shared().dictTypeWithIndex(number);
    return QString::number(number);
}

}  // namespace

bool isDictNote(const DictNote& note)
{
    const QJsonArray comments = note.notes();
    if (comments.size() < 2)
        return false;
    const QJsonValue first = comments[0].toObject().value(groupKey);
    const QJsonValue second = comments[1].toObject().value(groupKey);
    return first.isString() && second.isString() && first.toString() == comment::sentenceCN
        && second.toString() == comment::exts;
}

bool isDictTitle(const DictNote& note)
{
    const QString title = note.notetitle();
    return title.contains(DictData::SEPA_Readings) && title.contains(DictData::SEPA_star)
        && title.contains(DictData::SEPA_Index) && title.contains(DictData::SEPA_End);
}

std::optional<QString> dictMatchForTitle(const QString& notetitle, int selectedDictNumber)
{
    const QString beforeEnd = notetitle.section(DictData::SEPA_End, 0, 0);
    const QStringList afterIndex = beforeEnd.split(DictData::SEPA_Index);
    const QStringList parts = afterIndex.last().split(u'-');
    int cardDict = 0;
    if (parts.size() == 3) {
        bool number = false;
        cardDict = parts[2].toInt(&number);
        if (!number || cardDict < 1)
            return syncmessage::indexError;
    } else if (parts.size() != 2) {
        return syncmessage::indexError;
    }
    if (cardDict == selectedDictNumber)
        return std::nullopt;
    return formatWithObjects(syncmessage::dictMismatch, {dictionaryName(cardDict)});
}

std::optional<QString> dictMatch(const DictNote& note)
{
    return dictMatchForTitle(note.notetitle(), EnWordServer::shared().dictTypeNumber());
}

QString cardShortName(const QString& notetitle)
{
    return notetitle.section(u';', 0, 0);
}

void asyncAddToAnkiWithTitle_wordDict_showHUD_(std::shared_ptr<const DictNote> note, const QString& bookTitle,
                                               const QJsonObject& params, CardSyncCallback callback)
{
    Q_UNUSED(bookTitle);  // the parameters already carry the book
    globalQueue().async([note = std::move(note), params, callback = std::move(callback)] {
        const QString title = note->notetitle();
        const QString successMessage = formatWithObjects(syncmessage::headAndName, {syncmessage::added, cardShortName(title)});
        const SendOutcome outcome = evaluate(KSWAnkiconnect::shareInstance().addToAnkiWithWordDict_(params));
        if (outcome.success) {
            logLine(formatWithObjects(syncmessage::logAdded, {title, describeReplyValue(outcome.result)}));
            callOnMain(callback, true, successMessage);
        } else {
            logLine(formatWithObjects(syncmessage::logError, {outcome.message}));
            callOnMain(callback, false, outcome.message);
        }
    });
}

void updateToAnkiWithTitle_showHUD_(const DictNote& note, const QString& bookTitle, CardSyncCallback callback)
{
    if (!isDictNote(note) && !isDictTitle(note))
        return;
    if (const std::optional<QString> mismatch = dictMatch(note)) {
        callOnMain(callback, false, *mismatch);
        return;
    }
    const CardResult<QJsonObject> rebuilt = makeWith(note, bookTitle);
    if (!rebuilt) {
        callOnMain(callback, false, rebuilt.error().message());
        return;
    }
    const QString title = note.notetitle();
    const QJsonObject& params = rebuilt.value();
    if (!usableParams(params)) {
        callOnMain(callback, false, formatWithObjects(syncmessage::buildError, {title, describeReplyValue(params)}));
        return;
    }
    const SendOutcome outcome = evaluate(sendRebuilt(params));
    if (outcome.success) {
        logLine(formatWithObjects(syncmessage::logUpdated, {title, describeReplyValue(outcome.result)}));
        callOnMain(callback, true, formatWithObjects(syncmessage::headAndName, {syncmessage::updated, cardShortName(title)}));
    } else {
        logLine(formatWithObjects(syncmessage::logError, {outcome.message}));
        callOnMain(callback, false, outcome.message);
    }
}

void asyncUpdateToAnkiWithTitle_showHUD_(std::shared_ptr<const DictNote> note, const QString& bookTitle,
                                         CardSyncCallback callback)
{
    globalQueue().async([note = std::move(note), bookTitle, callback = std::move(callback)] {
        updateToAnkiWithTitle_showHUD_(*note, bookTitle, callback);
    });
}

BatchSync::BatchSync(HeadsUp headsUp, Progress progress) : headsUp_(std::move(headsUp)), progress_(std::move(progress)) {}

void BatchSync::dictUpdateToAnki(NoteList notes, const QString& bookTitle)
{
    const auto show = [this](const QString& text) {
        if (headsUp_)
            headsUp_(text, 2.0);
    };
    if (EnWordServer::shared().cacheDictNull()) {
        show(syncmessage::dictNotLoaded);
        return;
    }
    if (isUpdating()) {
        show(syncmessage::batchRunning);
        return;
    }
    setIsUpdating(true);
    show(formatCounts(syncmessage::batchStart, {static_cast<unsigned long>(notes.size())}));
    globalQueue().async([this, keepAlive = weak_from_this().lock(), notes = std::move(notes), bookTitle] {
        run(notes, bookTitle);
        setIsUpdating(false);
    });
}

BatchSync::Outcome BatchSync::run(const NoteList& notes, const QString& bookTitle) const
{
    Outcome outcome;
    Counts& counts = outcome.counts;
    counts.total = static_cast<unsigned long>(notes.size());
    const auto addLine = [&outcome](const QString& title, const QString& message) {
        outcome.errorText = formatWithObjects(syncmessage::errorLine, {outcome.errorText, title, message});
    };

    for (const std::shared_ptr<const DictNote>& note : notes) {
        if (counts.visited > 0 && counts.visited % progressEvery == 0 && progress_)
            progress_(counts);
        ++counts.visited;
        if (!isDictNote(*note) && !isDictTitle(*note))
            continue;
        const QString title = note->notetitle();
        if (const std::optional<QString> mismatch = dictMatch(*note)) {
            addLine(title, *mismatch);
            continue;
        }
        const CardResult<QJsonObject> rebuilt = makeWith(*note, bookTitle);
        ++counts.valid;
        if (!rebuilt) {
            addLine(title, rebuilt.error().message());
            continue;
        }
        if (!usableParams(rebuilt.value()))
            continue;
        const SendOutcome sent = evaluate(sendRebuilt(rebuilt.value()));
        if (sent.success)
            ++counts.done;
        else
            addLine(title, sent.message);
    }

    if (!outcome.errorText.isEmpty()) {
        Pasteboard::general().setString(outcome.errorText);
        outcome.summary = formatCounts(syncmessage::summaryWithErrors, {counts.total, counts.valid, counts.done});
    } else {
        outcome.summary = formatCounts(syncmessage::summaryDone, {counts.total, counts.valid});
    }
    mainQueue().async([summary = outcome.summary] { KSWAnkiconnect::showeAlertWithMessage_(summary); });
    return outcome;
}

}  // namespace lexicorn

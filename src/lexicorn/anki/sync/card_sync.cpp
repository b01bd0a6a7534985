#include "lexicorn/anki/sync/card_sync.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_writer.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/records.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_format.h"

#include "foundation/dispatch.h"
#include "foundation/log.h"
#include "foundation/pasteboard.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace lexicorn {

namespace {

const QString groupKey = QStringLiteral("group");

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
    globalQueue().async([note = std::move(note), bookTitle, params, callback = std::move(callback)] {
        const QString title = note->notetitle();
        const CardWriter::Outcome outcome = CardWriter(bookTitle).add(*note, params);
        if (outcome.success) {
            logLine(formatWithObjects(syncmessage::logAdded, {title, describeReplyValue(outcome.ankiId)}));
            callOnMain(callback, true, formatWithObjects(syncmessage::headAndName, {syncmessage::added, cardShortName(title)}));
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
    const QString title = note.notetitle();
    const CardWriter::Outcome outcome = CardWriter(bookTitle).write({&note}).front();
    if (outcome.success) {
        logLine(formatWithObjects(syncmessage::logUpdated, {title, describeReplyValue(outcome.ankiId)}));
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
    CardWriter writer(bookTitle);

    // A group of notes at a time: the writer needs a few requests per group.
    for (std::size_t start = 0; start < notes.size(); start += progressEvery) {
        if (start > 0 && progress_)
            progress_(counts);
        const std::size_t end = std::min(notes.size(), start + progressEvery);
        std::vector<std::optional<QString>> problems(end - start);
        std::vector<const DictNote*> cards;
        std::vector<std::size_t> cardAt;
        for (std::size_t index = start; index < end; ++index) {
            ++counts.visited;
            const DictNote& note = *notes[index];
            if (!isDictNote(note) && !isDictTitle(note))
                continue;
            if (const std::optional<QString> mismatch = dictMatch(note)) {
                problems[index - start] = mismatch;
                continue;
            }
            ++counts.valid;
            cards.push_back(&note);
            cardAt.push_back(index - start);
        }
        const std::vector<CardWriter::Outcome> written = writer.write(cards);
        for (std::size_t at = 0; at < written.size(); ++at) {
            if (written[at].success)
                ++counts.done;
            else
                problems[cardAt[at]] = written[at].message;
        }
        for (std::size_t at = 0; at < problems.size(); ++at) {
            if (problems[at]) {
                outcome.errorText = formatWithObjects(syncmessage::errorLine,
                                                      {outcome.errorText, notes[start + at]->notetitle(), *problems[at]});
            }
        }
    }

    if (!outcome.errorText.isEmpty()) {
        // The pasteboard is the reader's clipboard: written on the main thread.
        mainQueue().async([text = outcome.errorText] { Pasteboard::general().setString(text); });
        outcome.summary = formatCounts(syncmessage::summaryWithErrors, {counts.total, counts.valid, counts.done});
    } else {
        outcome.summary = formatCounts(syncmessage::summaryDone, {counts.total, counts.valid});
    }
    mainQueue().async([summary = outcome.summary] { KSWAnkiconnect::showeAlertWithMessage_(summary); });
    return outcome;
}

}  // namespace lexicorn

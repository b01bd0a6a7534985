#include "sync_fixtures.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/note_writer.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

namespace lexicorn::testing {

QJsonObject SyncPeer::fieldsOf(const QJsonValue& ankiId)
{
    const auto info = KSWAnkiconnect::shareInstance().postRequestCommand_params_(QStringLiteral("notesInfo"),
                                                                                 QJsonObject{{"notes", QJsonArray{ankiId}}});
    if (!info)
        return {};
    const QJsonObject fields = info->value("result").toArray().at(0).toObject().value("fields").toObject();
    QJsonObject values;
    for (auto field = fields.begin(); field != fields.end(); ++field)
        values.insert(field.key(), field.value().toObject().value("value"));
    return values;
}

void SyncPeer::deleteNote(const QJsonValue& ankiId)
{
    const auto deleted = KSWAnkiconnect::shareInstance().postRequestCommand_params_(QStringLiteral("deleteNotes"),
                                                                                    QJsonObject{{"notes", QJsonArray{ankiId}}});
    EXPECT_TRUE(deleted && ankiReplySucceeded(*deleted));
}

qsizetype SyncPeer::noteCount()
{
    return notesHolding(QStringLiteral("deck:*")).size();
}

std::optional<NoteRecord> cardFor(const QString& word, const QString& sentence, int section, int row, const QString& noteid)
{
    const DictDataPtr lookup = EnWordServer::shared().query(word, sentence);
    std::optional<NoteRecord> note = makeDictNote(*lookup, section, row, QStringLiteral("她把书带回家了。"));
    if (note)
        note->noteid = noteid;
    return note;
}

NoteRecord plainNote(const QString& title, const QString& noteid)
{
    NoteRecord note;
    note.noteid = noteid;
    note.notetitle = title;
    note.highlight_text = QStringLiteral("A sentence of the book.");
    note.notes = QJsonArray{commentRecord(QStringLiteral("TextNote"), QStringLiteral("a thought"))};
    return note;
}

bool runEventsUntil(const std::function<bool()>& finished, std::chrono::milliseconds limit)
{
    if (finished())
        return true;
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (finished())
            loop.quit();
    });
    poll.start(10);
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    loop.exec();
    return finished();
}

std::function<void(bool, const QString&)> CallbackLog::callback()
{
    return [this](bool success, const QString& message) {
        calls.append({success, message, QThread::currentThread() == QCoreApplication::instance()->thread()});
    };
}

std::optional<CallbackLog::Call> CallbackLog::next()
{
    if (!runEventsUntil([this] { return !calls.isEmpty(); }, std::chrono::seconds(60)))
        return std::nullopt;
    return calls.takeFirst();
}

}  // namespace lexicorn::testing

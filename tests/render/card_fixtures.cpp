#include "card_fixtures.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/services/ksw_translate.h"
#include "lexicorn/services/voice_endpoint.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include <QDir>
#include <QFile>

namespace lexicorn::testing {

CardHome::CardHome()
{
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(ankiset::deckName, QStringLiteral("Default"));
    defaults.set(ankiset::typeName, QStringLiteral("Lexicorn card"));
    for (const QString& item : contentItems)
        defaults.set(QStringLiteral("ANKISET_") + item, item);
    KSWTranslate::shareInstance().setEngine(7);
    setVoiceHost(QStringLiteral("127.0.0.1:%1").arg(closedPort()));
}

void CardHome::setVoiceHost(const QString& address)
{
    UserDefaults::standard().set(keys::voiceHost, QStringLiteral("http://") + address);
}

AlertLog::AlertLog()
{
    setAlertPresenter([this](const QString&, const QString& message, const QString&, std::function<void()> acknowledged) {
        messages << message;
        if (acknowledged)
            acknowledged();
    });
}

AlertLog::~AlertLog()
{
    setAlertPresenter({});
}

QJsonObject commentRecord(const QString& type, const QString& text, const QString& html)
{
    QJsonObject record{{QStringLiteral("type"), type}, {QStringLiteral("text"), text}};
    if (!html.isEmpty())
        record.insert(QStringLiteral("html"), html);
    return record;
}

NoteRecord noteWith(const QString& title, const QString& excerpt, const QStringList& comments, const QString& noteid)
{
    NoteRecord note;
    note.noteid = noteid;
    note.notetitle = title;
    note.highlight_text = excerpt;
    const QString groups[] = {QStringLiteral("sentenceCN"), QStringLiteral("exts")};
    for (qsizetype index = 0; index < comments.size(); ++index) {
        QJsonObject record = commentRecord(QStringLiteral("TextNote"), comments[index]);
        if (index < 2)
            record.insert(QStringLiteral("group"), groups[index]);
        note.notes.append(record);
    }
    return note;
}

QByteArray sampleFile(const QString& name)
{
    QFile file(QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

void loadSampleDictionary(int number)
{
    const QString dict = QDir(qEnvironmentVariable("LEXICORN_HOME")).filePath(QStringLiteral("Dict"));
    for (const char* name : {"LDOCE5_html.json", "collins.json", "wordforms.json"}) {
        const QString target = dict + u'/' + QLatin1StringView(name);
        if (!QFile::exists(target)) {
            ASSERT_TRUE(QFile::copy(QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/") + QLatin1StringView(name), target));
        }
    }
    EnWordServer& server = EnWordServer::shared();
    server.setDictTypeWithNumber(number);
    server.waitForLoadJobs();
    ASSERT_FALSE(server.cacheDictNull()) << "dictionary " << number;
}

AnkiCollection::AnkiCollection(const TempHome& home)
    : folder_(home.path() + QStringLiteral("/anki")),
      peer_(QStringLiteral(LEXICORN_ANKI_PEER), {QStringLiteral("--collection"), folder_})
{
    if (!peer_.started())
        return;
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    anki.setIpString_(peer_.address());
    const QJsonObject model{
        {"modelName", "Lexicorn card"},
        {"inOrderFields", QJsonArray::fromStringList(contentItems)},
        {"cardTemplates", QJsonArray{QJsonObject{{"Front", "{{EXPRESSION}}"}, {"Back", "{{DEFINITION}}"}}}},
    };
    const auto made = anki.postRequestCommand_params_(QStringLiteral("createModel"), model);
    ready_ = made && ankiReplySucceeded(*made);
}

QStringList AnkiCollection::mediaNames() const
{
    return QDir(folder_ + QStringLiteral("/collection.media")).entryList(QDir::Files, QDir::Name);
}

QByteArray AnkiCollection::mediaFile(const QString& name) const
{
    QFile file(folder_ + QStringLiteral("/collection.media/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QJsonArray AnkiCollection::notesHolding(const QString& text)
{
    const auto found = KSWAnkiconnect::shareInstance().findNotesWithNoteid_(text);
    return found ? found->value(QStringLiteral("result")).toArray() : QJsonArray();
}

}  // namespace lexicorn::testing

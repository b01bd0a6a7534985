// lexicorn-bench-batch: a batch of 1000 dictionary cards synchronised to a
// real Anki collection (tools/anki-peer on 127.0.0.1), against the same
// AnkiConnect requests sent directly from Python. Goal: our cards per second
// at least 0.8 times Python's.
//
// What is compared, in each round:
//   - ours: BatchSync::run over 1000 cards, timed from the call to its
//     return. Per card that is everything the batch does: read the note,
//     look the sense up in the dictionary, ask Anki for the note (findNotes),
//     make the sounds (the voice service is pointed at a closed port, so
//     eSpeak NG speaks the word and each example offline) and store them
//     (storeMediaFile), build the fields and add the note (addNote).
//   - Python (tools/anki-peer/replay_requests.py replay): the exact request
//     bodies a batch of the same 1000 cards sent, recorded just before by a
//     recording proxy in front of a second, scratch collection. Python sends
//     them in the same order over one kept-alive connection, serialising each
//     with json.dumps and parsing each reply with json.loads; no dictionary,
//     no sound making. Its cards per second are 1000 over that time.
// Both run against the same peer process, each starting from a collection
// with no notes and an empty media folder (emptied between the sides,
// untimed), and every card is an add: the recorded cards and ours have
// different note ids, and duplicates are allowed because the cards repeat.
// The counters give both rates, their ratio, and the recorded requests per
// action (findNotes and addNote once per card, storeMediaFile once per sound).
//
// The cards are the popup's cards for the 502 senses of the sample LDOCE5
// dictionary's headwords in order, repeated until there are 1000.

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_writer.h"
#include "lexicorn/services/ksw_translate.h"
#include "lexicorn/services/voice_endpoint.h"

#include "foundation/user_defaults.h"

#include "child_server.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>

#include <cstdio>

namespace {

using namespace lexicorn;

constexpr int cardCount = 1000;

const QStringList contentItems{"EXPRESSION", "DEFINITIONS", "SENTENCE", "EXTRAINFO", "URL", "DEFINITION", "READING", "AUDIO"};
const QString bookTitle = QStringLiteral("Sample");

ChildServer* mainPeer = nullptr;
ChildServer* recorder = nullptr;
QString recordFile;
QString mainMedia;  // the main collection's media folder
std::vector<NoteRecord> cards;  // note ids left empty; each round gives its own

// Settings as the card tests make them: deck "Default", note type "Lexicorn
// card" with a field per item, no translation, the voice service at a port
// where nothing listens.
void makeSettings()
{
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(ankiset::deckName, QStringLiteral("Default"));
    defaults.set(ankiset::typeName, QStringLiteral("Lexicorn card"));
    defaults.set(ankiset::duplicate, QStringLiteral("YES"));
    for (const QString& item : contentItems)
        defaults.set(QStringLiteral("ANKISET_") + item, item);
    KSWTranslate::shareInstance().setEngine(7);
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    const quint16 port = closed.serverPort();
    closed.close();
    defaults.set(voiceHostKey, QStringLiteral("http://127.0.0.1:%1").arg(port));
}

bool createNoteType(const QString& address)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    anki.setIpString_(address);
    const QJsonObject model{
        {"modelName", "Lexicorn card"},
        {"inOrderFields", QJsonArray::fromStringList(contentItems)},
        {"cardTemplates", QJsonArray{QJsonObject{{"Front", "{{EXPRESSION}}"}, {"Back", "{{DEFINITION}}"}}}},
    };
    const auto made = anki.postRequestCommand_params_(QStringLiteral("createModel"), model);
    return made && ankiReplySucceeded(*made);
}

// The sample dictionaries in the home, LDOCE5 loaded, and the popup's card
// for every sense of every headword, in order, until there are enough.
bool makeCards(const QString& home)
{
    const QString sample = QStringLiteral(LEXICORN_SAMPLE_DIR "/Dict/");
    QDir().mkpath(home + QStringLiteral("/Dict"));
    for (const char* name : {"LDOCE5_html.json", "collins.json", "wordforms.json"})
        QFile::copy(sample + QLatin1StringView(name), home + QStringLiteral("/Dict/") + QLatin1StringView(name));
    EnWordServer& server = EnWordServer::shared();
    server.setDictTypeWithNumber(0);
    server.waitForLoadJobs();
    if (server.cacheDictNull())
        return false;

    QFile file(sample + QStringLiteral("LDOCE5_html.json"));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QStringList words = QJsonDocument::fromJson(file.readAll()).object().keys();
    std::vector<NoteRecord> senses;
    for (const QString& word : words) {
        const DictDataPtr lookup = server.query(word, QStringLiteral("She used the word %1 twice.").arg(word));
        for (int section = 1;; ++section) {
            int row = 0;
            for (;; ++row) {
                std::optional<NoteRecord> note = makeDictNote(*lookup, section, row, QStringLiteral("她用了两次这个词。"));
                if (!note)
                    break;
                senses.push_back(std::move(*note));
            }
            if (row == 0)
                break;
        }
    }
    if (senses.empty())
        return false;
    for (std::size_t i = 0; cards.size() < cardCount; ++i)
        cards.push_back(senses[i % senses.size()]);
    return true;
}

BatchSync::NoteList notesWithIds(const QString& prefix)
{
    BatchSync::NoteList notes;
    for (std::size_t i = 0; i < cards.size(); ++i) {
        NoteRecord note = cards[i];
        note.noteid = QStringLiteral("%1-%2").arg(prefix).arg(i, 4, 10, QChar(u'0'));
        notes.push_back(std::make_shared<JsonDictNote>(note));
    }
    return notes;
}

// Deletes every note of the main collection and every file of its media
// folder, so that each side starts from the same state: otherwise the side
// that comes second finds the sounds stored already and Anki first moves the
// old file to its trash for every storeMediaFile.
bool emptyCollection()
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    const auto found = anki.postRequestCommand_params_(QStringLiteral("findNotes"), QJsonObject{{"query", "deck:*"}});
    if (!found || !ankiReplySucceeded(*found))
        return false;
    const QJsonArray ids = found->value(QStringLiteral("result")).toArray();
    if (!ids.isEmpty()) {
        const auto deleted = anki.postRequestCommand_params_(QStringLiteral("deleteNotes"), QJsonObject{{"notes", ids}});
        if (!deleted || !ankiReplySucceeded(*deleted))
            return false;
    }
    QDir media(mainMedia);
    for (const QString& name : media.entryList(QDir::Files))
        media.remove(name);
    return true;
}

// The batch as the study board's button runs it, with a progress callback
// like the command line's (counting instead of printing).
BatchSync::Outcome runBatch(const BatchSync::NoteList& notes)
{
    unsigned long reports = 0;
    const BatchSync batch({}, [&reports](const BatchSync::Counts&) { ++reports; });
    return batch.run(notes, bookTitle);
}

void batch_of_1000_cards_ours_vs_python(benchmark::State& state)
{
    KSWAnkiconnect& anki = KSWAnkiconnect::shareInstance();
    static int round = 0;
    for (auto _ : state) {
        ++round;
        // Record the requests of a batch of the same cards (also warms up the
        // dictionary and the offline voice). The file is emptied, not
        // removed: the proxy keeps it open for appending.
        QFile::resize(recordFile, 0);
        anki.setIpString_(recorder->address);
        const BatchSync::Outcome recorded = runBatch(notesWithIds(QStringLiteral("py-%1").arg(round)));
        if (recorded.counts.done != cardCount) {
            state.SkipWithError("the recorded batch did not add every card");
            break;
        }

        anki.setIpString_(mainPeer->address);
        if (!emptyCollection()) {
            state.SkipWithError("cannot empty the collection");
            break;
        }
        const BatchSync::NoteList notes = notesWithIds(QStringLiteral("ours-%1").arg(round));
        QElapsedTimer timer;
        timer.start();
        const BatchSync::Outcome outcome = runBatch(notes);
        const double ours = double(timer.nsecsElapsed()) / 1e9;
        if (outcome.counts.done != cardCount) {
            state.SkipWithError(("our batch added " + std::to_string(outcome.counts.done) + " cards").c_str());
            break;
        }

        if (!emptyCollection()) {
            state.SkipWithError("cannot empty the collection");
            break;
        }
        QProcess python;
        python.start(QStringLiteral(LEXICORN_ANKI_PEER_PYTHON),
                     {QStringLiteral(LEXICORN_REPLAY_REQUESTS), QStringLiteral("replay"), QStringLiteral("--url"),
                      QStringLiteral("http://") + mainPeer->address, QStringLiteral("--requests"), recordFile});
        python.waitForFinished(600000);
        const QString output = QString::fromUtf8(python.readAllStandardOutput());
        // "seconds S requests N adds A", then "action NAME COUNT" lines.
        const QStringList words = output.section(u'\n', 0, 0).split(u' ');
        const double direct = words.value(1).toDouble();
        const int adds = words.value(5).toInt();
        if (direct <= 0 || adds != cardCount) {
            state.SkipWithError(("replay_requests.py: " + output + QString::fromUtf8(python.readAllStandardError())).toStdString().c_str());
            break;
        }
        emptyCollection();

        state.SetIterationTime(ours);
        state.counters["ours_cards_per_s"] = cardCount / ours;
        state.counters["python_cards_per_s"] = cardCount / direct;
        state.counters["ours_over_python_rate"] = direct / ours;
        state.counters["requests"] = words.value(3).toDouble();
        // What the recorded batch asked, per action.
        for (const QString& line : output.split(u'\n')) {
            const QStringList parts = line.split(u' ');
            if (parts.size() == 3 && parts[0] == QStringLiteral("action"))
                state.counters[parts[1].toStdString()] = parts[2].toDouble();
        }
        state.counters["python_s"] = direct;
    }
}

BENCHMARK(batch_of_1000_cards_ours_vs_python)->Iterations(1)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    // The client and the batch log every reply to stderr; keep the terminal
    // out of the measurement. Problems of the set-up go to stdout.
    std::freopen("/dev/null", "w", stderr);
    QTemporaryDir home;
    qputenv("LEXICORN_HOME", home.path().toUtf8());
    makeSettings();
    if (!makeCards(home.path())) {
        std::printf("cannot make the cards from the sample dictionary in %s\n", LEXICORN_SAMPLE_DIR);
        return 1;
    }

    ChildServer peer(QStringLiteral(LEXICORN_ANKI_PEER), {QStringLiteral("--collection"), home.path() + QStringLiteral("/anki")});
    ChildServer scratch(QStringLiteral(LEXICORN_ANKI_PEER),
                        {QStringLiteral("--collection"), home.path() + QStringLiteral("/anki-recorded")});
    if (peer.address.isEmpty() || scratch.address.isEmpty()) {
        std::printf("cannot start %s (run scripts/setup)\n", LEXICORN_ANKI_PEER);
        return 1;
    }
    recordFile = home.path() + QStringLiteral("/requests.jsonl");
    mainMedia = home.path() + QStringLiteral("/anki/collection.media");
    ChildServer proxy(QStringLiteral(LEXICORN_ANKI_PEER_PYTHON),
                      {QStringLiteral(LEXICORN_REPLAY_REQUESTS), QStringLiteral("record"), QStringLiteral("--upstream"),
                       QStringLiteral("http://") + scratch.address, QStringLiteral("--out"), recordFile});
    if (proxy.address.isEmpty() || !createNoteType(peer.address) || !createNoteType(scratch.address)) {
        std::printf("cannot set up the Anki collections\n");
        return 1;
    }
    mainPeer = &peer;
    recorder = &proxy;
    std::printf("%zu cards\n", cards.size());

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

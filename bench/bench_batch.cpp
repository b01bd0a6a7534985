// lexicorn-bench-batch: a batch of 100 dictionary cards with word and
// example audio synchronised to a real Anki collection (tools/anki-peer on
// 127.0.0.1, serving as the AnkiConnect add-on does: one request per
// connection, on a 25 ms timer), against 100 plain addNote calls sent from
// Python to the same peer in the same run. Goal: ours at most 2x Python's
// time.
//
// What is compared, in each round:
//   - ours: BatchSync::run over 100 new cards, timed from the call to its
//     return. That is everything the batch does: read each note, look the
//     sense up in the dictionary, look for the card in Anki, fetch the word's
//     and the examples' sounds from the voice service (a local stand-in),
//     store them in Anki's media folder, resolve the field names, add the
//     notes and check that their cards are in the configured deck.
//   - Python (tools/anki-peer/direct_adds.py): 100 addNote calls with a
//     one-field note, each on a new connection, as a Python client would
//     send them; no dictionary, no sounds, no lookups.
// Both start from a collection with no notes and an empty media folder
// (emptied between the sides, untimed). The counters give both times, their
// ratio and the requests our batch sent.
//
// The cards are the popup's cards for the senses of the sample LDOCE5
// dictionary's headwords in order, repeated until there are 100.

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
#include <QTemporaryDir>

#include <cstdio>

namespace {

using namespace lexicorn;

constexpr int cardCount = 100;

const QStringList contentItems{"EXPRESSION", "DEFINITIONS", "SENTENCE", "EXTRAINFO", "URL", "DEFINITION", "READING", "AUDIO"};
const QString bookTitle = QStringLiteral("Sample");

ChildServer* mainPeer = nullptr;
QString mainMedia;  // the main collection's media folder
std::vector<NoteRecord> cards;  // note ids left empty; each round gives its own

// Settings as the card tests make them: deck "Default", note type "Lexicorn
// card" with a field per item, no translation, the voice service at the
// stand-in's address.
void makeSettings(const QString& voiceAddress)
{
    UserDefaults& defaults = UserDefaults::standard();
    defaults.set(ankiset::deckName, QStringLiteral("Default"));
    defaults.set(ankiset::typeName, QStringLiteral("Lexicorn card"));
    defaults.set(ankiset::duplicate, QStringLiteral("YES"));
    for (const QString& item : contentItems)
        defaults.set(QStringLiteral("ANKISET_") + item, item);
    KSWTranslate::shareInstance().setEngine(7);
    defaults.set(keys::voiceHost, QStringLiteral("http://") + voiceAddress);
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

// The requests the peer has answered so far (it counts them for us).
double requestsServed()
{
    const auto count = KSWAnkiconnect::shareInstance().postRequestCommand_params_(QStringLiteral("peerRequests"), QJsonObject());
    return count ? count->result().toDouble() : 0;
}

void batch_of_100_cards_ours_vs_python(benchmark::State& state)
{
    static int round = 0;
    for (auto _ : state) {
        ++round;
        if (!emptyCollection()) {
            state.SkipWithError("cannot empty the collection");
            break;
        }
        const BatchSync::NoteList notes = notesWithIds(QStringLiteral("ours-%1").arg(round));
        const double requestsBefore = requestsServed();
        QElapsedTimer timer;
        timer.start();
        const BatchSync::Outcome outcome = BatchSync({}).run(notes, bookTitle);
        const double ours = double(timer.nsecsElapsed()) / 1e9;
        // Less the one request that asked for the count.
        const double requests = requestsServed() - requestsBefore - 1;
        if (outcome.counts.done != cardCount) {
            state.SkipWithError(("our batch added " + std::to_string(outcome.counts.done) + " cards: " + outcome.errorText.toStdString()).c_str());
            break;
        }

        if (!emptyCollection()) {
            state.SkipWithError("cannot empty the collection");
            break;
        }
        QProcess python;
        python.start(QStringLiteral(LEXICORN_ANKI_PEER_PYTHON),
                     {QStringLiteral(LEXICORN_DIRECT_ADDS), QStringLiteral("--url"), QStringLiteral("http://") + mainPeer->address,
                      QStringLiteral("--count"), QString::number(cardCount), QStringLiteral("--deck"), QStringLiteral("Default"),
                      QStringLiteral("--model"), QStringLiteral("Lexicorn card")});
        python.waitForFinished(600000);
        const QString output = QString::fromUtf8(python.readAllStandardOutput()).trimmed();
        const double direct = output.section(u' ', 1, 1).toDouble();  // "seconds S"
        if (direct <= 0) {
            state.SkipWithError(("direct_adds.py: " + output + QString::fromUtf8(python.readAllStandardError())).toStdString().c_str());
            break;
        }
        emptyCollection();

        state.SetIterationTime(ours);
        state.counters["ours_s"] = ours;
        state.counters["python_s"] = direct;
        state.counters["ours_over_python_time"] = ours / direct;
        state.counters["requests"] = requests;
    }
}

BENCHMARK(batch_of_100_cards_ours_vs_python)->Iterations(1)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    // The client and the batch log every reply to stderr; keep the terminal
    // out of the measurement. Problems of the set-up go to stdout.
    std::freopen("/dev/null", "w", stderr);
    QTemporaryDir home;
    qputenv("LEXICORN_HOME", home.path().toUtf8());
    ChildServer voice(QStringLiteral("python3"), {QStringLiteral(LEXICORN_VOICE_SERVER)});
    ChildServer peer(QStringLiteral(LEXICORN_ANKI_PEER), {QStringLiteral("--collection"), home.path() + QStringLiteral("/anki")});
    if (voice.address.isEmpty() || peer.address.isEmpty()) {
        std::printf("cannot start the voice stand-in or %s (run scripts/setup)\n", LEXICORN_ANKI_PEER);
        return 1;
    }
    makeSettings(voice.address);
    if (!makeCards(home.path())) {
        std::printf("cannot make the cards from the sample dictionary in %s\n", LEXICORN_SAMPLE_DIR);
        return 1;
    }
    mainMedia = home.path() + QStringLiteral("/anki/collection.media");
    if (!createNoteType(peer.address)) {
        std::printf("cannot set up the Anki collection\n");
        return 1;
    }
    mainPeer = &peer;
    std::printf("%zu cards\n", cards.size());

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

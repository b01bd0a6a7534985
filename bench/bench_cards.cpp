// lexicorn-bench-cards: reading a dictionary card back out of its note, the
// step every update and every card of a batch synchronisation goes through
// before Anki is asked anything. No Anki, no dictionary, no network.
//
// The figure is the Time column of BM_ParseTypicalCard; the goal is at most
// 20 microseconds a card, so a notebook of thousands of cards is read in well
// under the time of one Anki round trip.

#include "lexicorn/render/html_text.h"
#include "lexicorn/render/note_format.h"

#include <benchmark/benchmark.h>

#include <QJsonArray>
#include <QJsonObject>

namespace {

using namespace lexicorn;

// A typical card: a word form and its headword, a sentence from a book, the
// sentence's translation, a definition line with a signpost and grammar, and
// the two examples the popup shows.
NoteRecord typicalCard()
{
    NoteRecord note;
    note.noteid = QStringLiteral("5F0C3A2E-8B1D-4C6A-9E2F-1A2B3C4D5E6F");
    note.notetitle = QStringLiteral("took; take;🗣teɪk🔝●●●༒verb📇1-0🔚;");
    note.highlight_text = QStringLiteral("After dinner she took the old dictionary from the shelf and carried it upstairs to read.");
    note.notes = QJsonArray{
        QJsonObject{{"text", "晚饭后她从书架上<b>拿</b>了那本旧词典，带上楼去读。"}, {"type", "TextNote"}, {"group", "sentenceCN"}},
        QJsonObject{{"text",
                     "💫MOVE🌒带走🌓[T]🌕get hold of; have with you as you go🇨🇳拿；带走\n"
                     "📌Don't forget to take an umbrella.🇨🇳别忘了带伞。\n"
                     "📌Take this book to your teacher.🇨🇳把这本书带给你的老师。"},
                    {"type", "TextNote"},
                    {"group", "exts"}},
    };
    return note;
}

void BM_ParseTypicalCard(benchmark::State& state)
{
    const JsonDictNote note(typicalCard());
    for (auto _ : state) {
        CardResult<ParsedCard> card = parseDictNote(note);
        benchmark::DoNotOptimize(card);
        if (!card)
            state.SkipWithError("the card did not parse");
    }
}
BENCHMARK(BM_ParseTypicalCard);

// The same card with two extra comments, one rich, one plain.
void BM_ParseCardWithExtraComments(benchmark::State& state)
{
    NoteRecord record = typicalCard();
    record.notes.append(QJsonObject{{"type", "HtmlNote"}, {"html", "<p>My own note about <i>take</i>.</p>"}, {"text", "My own note"}});
    record.notes.append(QJsonObject{{"type", "TextNote"}, {"text", "take after = look like"}});
    const JsonDictNote note(record);
    for (auto _ : state) {
        CardResult<ParsedCard> card = parseDictNote(note);
        benchmark::DoNotOptimize(card);
    }
}
BENCHMARK(BM_ParseCardWithExtraComments);

// One example sentence to HTML with the headword in bold, as each example of
// a card's definition field is made.
void BM_ExampleToHtml(benchmark::State& state)
{
    const QString example = QStringLiteral("Don't forget to <b>take</b> an umbrella when you take the dog out.");
    for (auto _ : state)
        benchmark::DoNotOptimize(htmlBoldWord(example, QStringLiteral("take")));
}
BENCHMARK(BM_ExampleToHtml);

}  // namespace

BENCHMARK_MAIN();

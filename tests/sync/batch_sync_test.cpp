// Many notes synchronised in one batch: counts, error lines on the
// pasteboard and the summary, against a real Anki collection.

#include "sync_fixtures.h"

#include "lexicorn/anki/anki_reply.h"
#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/note_format.h"

#include "foundation/pasteboard.h"
#include "foundation/user_defaults.h"

#include <gtest/gtest.h>

#include <mutex>
#include <utility>

namespace lexicorn {
namespace {

using namespace std::chrono_literals;

// A heads-up's text and how many seconds it shows.
using HeadsUpShown = std::pair<QString, double>;

class Sync : public testing::CardHome {
protected:
    void SetUp() override
    {
        // Many copies of one card: Anki must take notes with the same first field.
        UserDefaults::standard().set(ankiset::duplicate, QStringLiteral("YES"));
    }

    BatchSync makeBatch(BatchSync::Progress progress = {})
    {
        return BatchSync([this](const QString& text, double seconds) { headsUps_.append({text, seconds}); }, std::move(progress));
    }

    // Starts the batch and waits for its summary and its end.
    QString runToSummary(BatchSync& batch, const BatchSync::NoteList& notes)
    {
        alerts_.messages.clear();
        batch.dictUpdateToAnki(notes, QStringLiteral("Sample"));
        const bool ended = testing::runEventsUntil([&] { return !alerts_.messages.isEmpty() && !batch.isUpdating(); }, 3min);
        EXPECT_TRUE(ended) << "the batch did not end";
        EXPECT_EQ(alerts_.messages.size(), 1);
        return alerts_.messages.value(0);
    }

    // The popup's card for "took" with the note id given.
    std::shared_ptr<const DictNote> card(const QString& noteid, const char* index = nullptr)
    {
        if (!took_) {
            took_ = testing::cardFor("took", "She took the book home.", 1, 0, {});
            EXPECT_TRUE(took_);
        }
        NoteRecord note = took_.value_or(NoteRecord{});
        note.noteid = noteid;
        if (index)
            note.notetitle.replace(QStringLiteral("📇1-0"), QString::fromUtf8(index));
        return std::make_shared<JsonDictNote>(note);
    }
    static std::shared_ptr<const DictNote> plain(int number)
    {
        // Some plain titles hold card markers, but never all four.
        const QString title = number % 2 ? QStringLiteral("Thought %1").arg(number) : QStringLiteral("Thought %1 📇1-0🔚;").arg(number);
        return std::make_shared<JsonDictNote>(testing::plainNote(title, QStringLiteral("P-%1").arg(number, 4, 10, QChar(u'0'))));
    }

    QList<HeadsUpShown> headsUps_;
    testing::AlertLog alerts_;
    std::optional<NoteRecord> took_;
};

TEST_F(Sync, StartChecksComeFirst)
{
    BatchSync batch = makeBatch();
    const BatchSync::NoteList one{plain(1)};

    // Nothing loaded yet.
    batch.dictUpdateToAnki(one, QStringLiteral("Sample"));
    EXPECT_EQ(headsUps_, (QList<HeadsUpShown>{{QStringLiteral("字典初始化未完成，请稍后重试！"), 2.0}}));
    EXPECT_FALSE(batch.isUpdating());

    // A batch still running.
    testing::loadSampleDictionary(0);
    headsUps_.clear();
    batch.setIsUpdating(true);
    batch.dictUpdateToAnki(one, QStringLiteral("Sample"));
    EXPECT_EQ(headsUps_, (QList<HeadsUpShown>{{QStringLiteral("批量更新未完成，请稍后重试！"), 2.0}}));
    EXPECT_TRUE(batch.isUpdating());
    testing::runEventsUntil([] { return false; }, 200ms);
    EXPECT_TRUE(alerts_.messages.isEmpty()) << "nothing ran";

    // An empty selection runs and ends at once.
    batch.setIsUpdating(false);
    headsUps_.clear();
    const long pasted = Pasteboard::general().changeCount();
    EXPECT_EQ(runToSummary(batch, {}), QStringLiteral("👍 同步完成。总数: 0, 有效数: 0。"));
    EXPECT_EQ(headsUps_, (QList<HeadsUpShown>{{QStringLiteral("总数：0，开始批量同步..."), 2.0}}));
    EXPECT_EQ(Pasteboard::general().changeCount(), pasted);
}

TEST_F(Sync, ABatchOfFiveHundredNotes)
{
    testing::loadSampleDictionary(0);
    testing::SyncPeer anki(home_);
    ASSERT_TRUE(anki.ready()) << anki.problem().toStdString();

    // Every eighth note is a card (63 of them); three of those cannot be sent.
    BatchSync::NoteList notes;
    QStringList cardIds;
    QString expectedErrors;
    for (int number = 0; number < 500; ++number) {
        if (number % 8 != 3) {
            notes.push_back(plain(number));
            continue;
        }
        const QString id = QStringLiteral("SB-%1").arg(number, 4, 10, QChar(u'0'));
        const char* index = number == 43 ? "📇1-0-1" : number == 251 ? "📇1-0-x" : number == 475 ? "📇1-0-1" : nullptr;
        notes.push_back(card(id, index));
        if (index) {
            const QString message = QByteArray(index).endsWith('x') ? QStringLiteral("❌ 标题中的索引错误！")
                                                                     : QStringLiteral("❌ 字典不匹配无法同步，请选择：collins");
            expectedErrors += u'\n' + notes.back()->notetitle() + QStringLiteral(" - ") + message;
        } else {
            cardIds << id;
        }
    }
    ASSERT_EQ(cardIds.size(), 60);

    // A few are in Anki already: those are updated, not added again.
    KSWAnkiconnect& client = KSWAnkiconnect::shareInstance();
    QJsonArray before;
    for (int at = 0; at < 3; ++at) {
        const CardResult<QJsonObject> params = makeWith(*card(cardIds[at]), QStringLiteral("Sample"));
        ASSERT_TRUE(params);
        const auto added = client.addToAnkiWithWordDict_(params.value());
        ASSERT_TRUE(added && ankiReplySucceeded(*added));
        before.append(added->value("result"));
    }

    std::mutex mutex;
    QList<BatchSync::Counts> progress;
    BatchSync batch = makeBatch([&](const BatchSync::Counts& counts) {
        std::lock_guard lock(mutex);
        progress.append(counts);
    });
    const QString summary = runToSummary(batch, notes);

    EXPECT_EQ(summary, QStringLiteral("总数: 500, 有效数: 60, 完成数: 60。错误信息见剪切板！"));
    EXPECT_EQ(Pasteboard::general().string(), expectedErrors);
    EXPECT_EQ(headsUps_, (QList<HeadsUpShown>{{QStringLiteral("总数：500，开始批量同步..."), 2.0}}));
    {
        std::lock_guard lock(mutex);
        ASSERT_EQ(progress.size(), 24);
        for (qsizetype at = 0; at < progress.size(); ++at) {
            EXPECT_EQ(progress[at].visited, unsigned(20 * (at + 1)));
            EXPECT_EQ(progress[at].total, 500u);
        }
        // Cards 483, 491 and 499 come after the last report.
        EXPECT_EQ(progress.back().done, 57u);
        EXPECT_EQ(progress.back().valid, 57u);
    }
    for (qsizetype at = 0; at < cardIds.size(); ++at) {
        const QJsonArray held = anki.notesHolding(cardIds[at]);
        ASSERT_EQ(held.size(), 1) << cardIds[at].toStdString();
        if (at < before.size()) {
            EXPECT_EQ(held[0], before[at]) << "updated in place";
        }
    }
    EXPECT_EQ(anki.noteCount(), 60);

    // Three plain notes and one good card: the plain summary, pasteboard left as it was.
    const long pasted = Pasteboard::general().changeCount();
    EXPECT_EQ(runToSummary(batch, {plain(1), card(cardIds[5]), plain(2), plain(3)}), QStringLiteral("👍 同步完成。总数: 4, 有效数: 1。"));
    EXPECT_EQ(Pasteboard::general().changeCount(), pasted);
    EXPECT_EQ(anki.noteCount(), 60);
}

}  // namespace
}  // namespace lexicorn

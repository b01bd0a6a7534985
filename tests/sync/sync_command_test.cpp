// lexicorn sync: the notebook's cards sent to a real Anki collection by the
// command-line tool.

#include "sync_fixtures.h"

#include "support/cli_run.h"

#include "host/notebook/notebook.h"

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

class SyncCommand : public testing::CardHome {
protected:
    // Stores the notes in the home's notebook, as the reader would.
    void store(const std::vector<NoteRecord>& records)
    {
        host::Notebook notebook;
        ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
        for (const NoteRecord& record : records) {
            host::MbBookNote note(record);
            ASSERT_TRUE(notebook.add(note)) << notebook.errorString().toStdString();
        }
    }
};

TEST_F(SyncCommand, SendsTheNotebooksCardsAndReportsWhatFailed)
{
    testing::SyncPeer peer(home_);
    ASSERT_TRUE(peer.ready()) << peer.problem().toStdString();
    testing::loadSampleDictionary(1);
    const auto took = testing::cardFor(QStringLiteral("took"), QStringLiteral("She took the book."), 1, 0, QStringLiteral("N1"));
    const auto market = testing::cardFor(QStringLiteral("market"), QStringLiteral("A market day."), 1, 0, QStringLiteral("N2"));
    ASSERT_TRUE(took && market);
    store({*took, testing::plainNote(QStringLiteral("a plain note"), QStringLiteral("N3")), *market});

    const testing::CliRun first = testing::runLexicorn({QStringLiteral("sync")});
    EXPECT_EQ(first.status, 0) << first.err.toStdString();
    EXPECT_EQ(peer.noteCount(), 2);

    // Named notes only; with Anki gone each card gets its line.
    peer.stop();
    const testing::CliRun second = testing::runLexicorn({QStringLiteral("sync"), QStringLiteral("N1"), QStringLiteral("N3")});
    EXPECT_EQ(second.status, 1);
    EXPECT_TRUE(second.out.contains(QStringLiteral("总数: 2, 有效数: 1, 完成数: 0。错误信息见剪切板！"))) << second.out.toStdString();
    EXPECT_TRUE(second.out.contains(QStringLiteral("pasteboard:\n") + took->notetitle + QStringLiteral(" - Ankiconnect 连接失败！")))
        << second.out.toStdString();

    const testing::CliRun missing = testing::runLexicorn({QStringLiteral("sync"), QStringLiteral("nope")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("no note nope"))) << missing.err.toStdString();
}

}  // namespace
}  // namespace lexicorn

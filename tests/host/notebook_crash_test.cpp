// A writer killed with SIGKILL in the middle of its writes must leave a
// notebook that opens, with every note whole at either its old or new state.

#include "host/notebook/notebook.h"
#include "notebook_states.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lexicorn::host {
namespace {

using testing::stateOf;

constexpr int noteCount = 20;

// Starts the writer and kills it once it reports the given round (or a later
// one) complete.
void runWriterUntilRound(const QString& path, long round)
{
    QProcess writer;
    writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    writer.start(QStringLiteral(LEXICORN_NOTEBOOK_WRITER), {path, QString::number(noteCount)});
    ASSERT_TRUE(writer.waitForStarted(30000));
    long reported = -1;
    while (reported < round) {
        if (!writer.canReadLine()) {
            // Waits for the writer's next line; false only when the writer
            // ended or went silent, which is a hang, not slowness.
            ASSERT_TRUE(writer.waitForReadyRead(120000)) << "the writer ended or hung before round " << round;
            continue;
        }
        const QByteArray line = writer.readLine().trimmed();
        ASSERT_TRUE(line.startsWith("round ")) << line.toStdString();
        reported = line.mid(6).toLong();
    }
    writer.kill();  // SIGKILL
    ASSERT_TRUE(writer.waitForFinished(30000));
    ASSERT_EQ(writer.exitStatus(), QProcess::CrashExit);
}

class NotebookCrashTest : public ::testing::TestWithParam<long> {};

TEST_P(NotebookCrashTest, KilledWriterLeavesEveryNoteWholeAtOldOrNewState)
{
    const long round = GetParam();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("notebook.sqlite"));
    runWriterUntilRound(path, round);
    if (HasFatalFailure())
        return;

    Notebook notebook(path);
    ASSERT_TRUE(notebook.open()) << notebook.errorString().toStdString();
    const std::vector<MbBookNote> notes = notebook.notes();
    ASSERT_EQ(notes.size(), size_t(noteCount)) << notebook.errorString().toStdString();

    // The writer updates the notes in order, each in its own transaction, so
    // a kill leaves a run of notes at state s + 1 followed by notes at s.
    std::vector<long> states;
    for (int i = 0; i < noteCount; ++i) {
        const std::optional<long> state = stateOf(notes[size_t(i)]);
        ASSERT_TRUE(state) << "note " << i << " mixes two states: "
                           << notes[size_t(i)].notetitle().toStdString() << " / "
                           << notes[size_t(i)].highlight_text().toStdString();
        ASSERT_EQ(notes[size_t(i)].noteid(), QStringLiteral("note-%1").arg(i));
        states.push_back(*state);
    }
    EXPECT_GE(states.back(), round) << "a round reported complete was lost";
    for (size_t i = 1; i < states.size(); ++i) {
        EXPECT_TRUE(states[i] == states[i - 1] || states[i] == states[i - 1] - 1)
            << "note " << i << " at state " << states[i] << " after state " << states[i - 1];
    }

    // The recovered notebook takes writes again.
    MbBookNote extra = testing::noteAtState(noteCount, 0);
    EXPECT_TRUE(notebook.add(extra)) << notebook.errorString().toStdString();
    EXPECT_TRUE(notebook.update(testing::noteAtState(0, states.front() + 1))) << notebook.errorString().toStdString();
}

// Round 0 kills it just after the notes were made; later rounds in the middle
// of updates after the file and its log have grown.
INSTANTIATE_TEST_SUITE_P(Rounds, NotebookCrashTest, ::testing::Values(0L, 1L, 5L, 25L));

}  // namespace
}  // namespace lexicorn::host

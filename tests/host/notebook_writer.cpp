// Rewrites every note of a notebook round after round, until it is killed.
//
//   lexicorn_notebook_writer PATH COUNT
//
// Makes notes "note-0" .. "note-(COUNT-1)" at state 0, prints "round 0", then
// for r = 1, 2, ... updates each note in turn to state r and prints "round r"
// once all of them hold it. Every field of a note is derived from its state,
// so a reader can tell a note written whole from one written in part.

#include "host/notebook/notebook.h"
#include "notebook_states.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: lexicorn_notebook_writer PATH COUNT\n");
        return 2;
    }
    lexicorn::host::Notebook notebook(QString::fromLocal8Bit(argv[1]));
    const int count = std::atoi(argv[2]);
    const auto fail = [&notebook] {
        std::fprintf(stderr, "%s\n", qPrintable(notebook.errorString()));
        return 1;
    };
    if (!notebook.open())
        return fail();
    for (int i = 0; i < count; ++i) {
        lexicorn::host::MbBookNote note = lexicorn::testing::noteAtState(i, 0);
        if (!notebook.add(note))
            return fail();
    }
    for (long round = 0;; ++round) {
        for (int i = 0; round > 0 && i < count; ++i) {
            if (!notebook.update(lexicorn::testing::noteAtState(i, round)))
                return fail();
        }
        std::printf("round %ld\n", round);
        std::fflush(stdout);
    }
}

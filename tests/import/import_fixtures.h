#pragma once

// Shared pieces of the import tests: the Dict folder as it is on disk, the
// tool's lookups decoded, and a card made from an imported entry read back.

#include "support/cli_run.h"

#include "lexicorn/dictionary/import/source_entry.h"
#include "lexicorn/dictionary/records.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <functional>
#include <vector>

namespace lexicorn::testing {

// Every file under the folder (hidden ones too) with its bytes.
QMap<QString, QByteArray> folderSnapshot(const QString& folder);

// `lexicorn lookup --json` of one word in the home's dictionary.
DictDataPtr lookupJson(const QString& home, const QString& dict, const QString& word);
// The title of the first entry that lookup finds, "(nothing)" when it finds none.
QString titleFound(const QString& home, const QString& dict, const QString& word);

// Makes the popup's note for row `row` (0 for its first sense) of section 1 with `lexicorn card
// make`, and reads the card back out of it. Fails the test when either fails.
struct CardBack {
    QString headword;
    QString defEn;
    QString defCn;
};
CardBack cardBack(const QString& home, const QString& dict, const QString& word, int row);

void writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);

// Runs a dictionary reader that must fail, and checks that its message starts
// with the file's path and names the place.
void expectImportError(const std::function<void()>& read, const QString& path, const QString& place);

// Keeps what a dictionary reader hands on.
struct CollectingSink : dictimport::ImportSink {
    std::vector<dictimport::SourceEntry> entries;
    QMap<QString, QByteArray> resources;
    qint64 done = -1;
    qint64 total = -1;
    void entry(dictimport::SourceEntry e) override { entries.push_back(std::move(e)); }
    void wordForm(const QString&, const QString&) override {}
    void resource(const QString& name, const QByteArray& bytes) override { resources.insert(name, bytes); }
    void progress(qint64 d, qint64 t) override { done = d, total = t; }
    QMap<QString, const dictimport::SourceEntry*> byHeadword() const;
};

}  // namespace lexicorn::testing

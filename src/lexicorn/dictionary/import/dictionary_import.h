#pragma once

// Imports dictionary files the user already owns into one of the engine's two
// dictionary slots: every file is read by the reader of its format, their
// entries are converted into the cache shape, and the cache file (with the
// word-form map and sound files) replaces the old one only once the whole
// import has succeeded. A failed import leaves the Dict folder as it was.

#include "lexicorn/dictionary/import/dictionary_sources.h"
#include "lexicorn/dictionary/records.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace lexicorn::dictimport {

struct ImportRequest {
    QStringList files;  // any file of each dictionary, or folders holding them (dictionary_sources.h)
    SelectDictType slot = SelectDictType::collins();
    bool wordForms = false;  // merge the files' forms into wordforms.json
    QString dictDir;         // the Dict folder
};

struct ImportReport {
    size_t dictionaries = 0;  // each once, however many of its files were named
    size_t headwords = 0;
    size_t entries = 0;
    size_t resources = 0;
    size_t formsAdded = 0;
    QString cachePath;
    QStringList warnings;  // one line each, naming the file and the place
};

// How far the import is: the file being read (index counting from 0, of
// count) and how far that file's reader is through it.
using ImportProgress = std::function<void(int fileIndex, int fileCount, const QString& file, qint64 done, qint64 total)>;

// Throws ImportError (from source_entry.h) naming the file and the place in it.
ImportReport importDictionaries(const ImportRequest& request, const ImportProgress& progress = {});

}  // namespace lexicorn::dictimport

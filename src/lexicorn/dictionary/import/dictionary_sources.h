#pragma once

// What the user names to import, as dictionaries: any file of a dictionary
// stands for the whole dictionary, a folder for every dictionary in it.
//   StarDict   .ifo, .idx, .idx.gz, .dict, .dict.dz, .syn, .syn.gz -> its .ifo
//   MDict      .mdx, and the .mdd of its sounds                     -> the .mdx
//   ECDICT     .csv                                                 -> the file
//   WordNet    the database files (data.noun, index.verb, verb.exc…) -> their folder

#include <QString>
#include <QStringList>

#include <vector>

namespace lexicorn::dictimport {

enum class SourceFormat { StarDict, Mdict, Ecdict, WordNet };

struct DictionarySource {
    SourceFormat format;
    QString path;  // the .ifo, the .mdx, the .csv, or the WordNet folder
    friend bool operator==(const DictionarySource&, const DictionarySource&) = default;
};

// Every dictionary the paths stand for, once each, in the order first named.
// A folder may hold several; its other files are passed over. Throws
// ImportError naming the path: a missing path, a file of no dictionary, a
// set without its main file (a .mdd without its .mdx, a .dict without its
// .ifo), a folder with nothing to import.
std::vector<DictionarySource> dictionariesIn(const QStringList& paths);

}  // namespace lexicorn::dictimport

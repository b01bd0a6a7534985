#pragma once

// Sound files stored in Anki's media folder, in one request for many files.

#include <QByteArray>
#include <QString>

#include <vector>

namespace lexicorn {

struct MediaFile {
    QString name;  // the name asked for
    QByteArray bytes;
};

// Where a file ended up: the name Anki holds it under (which may differ from
// the name asked for: some Anki versions lower-case it), or why it is not
// in Anki.
struct StoredMedia {
    QString name;
    QString problem;
    bool ankiAnswered = true;  // false: the problem is that Anki did not answer
    bool stored() const { return problem.isEmpty(); }
};

// Stores the files with one request and returns, per file in order, the
// name Anki answered with. When the answer did not come, Anki is asked which
// of the names it holds (in any case of letters) before a file is taken as
// stored. Blocks on AnkiConnect.
std::vector<StoredMedia> storeMediaFiles(const std::vector<MediaFile>& files);

}  // namespace lexicorn

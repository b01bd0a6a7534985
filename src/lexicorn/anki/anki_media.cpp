#include "lexicorn/anki/anki_media.h"

#include "lexicorn/anki/anki_search.h"
#include "lexicorn/anki/ksw_ankiconnect.h"

#include <QJsonArray>

namespace lexicorn {

namespace {

const QString noAnswer = QStringLiteral("Anki did not answer");
const QString notInAnki = QStringLiteral("Anki does not hold it");

// The name Anki holds the file under, asked after a store got no answer:
// the name itself when present, else one that differs only in case.
StoredMedia heldName(const QString& asked, const AnkiReply& reply)
{
    if (!ankiReplySucceeded(reply))
        return {QString(), describeReplyValue(reply.error())};
    const QJsonArray names = reply.result().toArray();
    if (names.contains(asked))
        return {asked, QString()};
    if (!names.isEmpty() && names.first().isString())
        return {names.first().toString(), QString()};
    return {QString(), notInAnki};
}

std::vector<StoredMedia> askWhichAreHeld(const std::vector<MediaFile>& files)
{
    std::vector<KSWAnkiconnect::Action> asks;
    for (const MediaFile& file : files)
        asks.push_back({QStringLiteral("getMediaFilesNames"), QJsonObject{{QStringLiteral("pattern"), anyCaseFilePattern(file.name)}}});
    const auto replies = KSWAnkiconnect::shareInstance().multi(asks);
    std::vector<StoredMedia> held;
    for (std::size_t index = 0; index < files.size(); ++index)
        held.push_back(replies ? heldName(files[index].name, (*replies)[index]) : StoredMedia{QString(), noAnswer, false});
    return held;
}

}  // namespace

std::vector<StoredMedia> storeMediaFiles(const std::vector<MediaFile>& files)
{
    std::vector<KSWAnkiconnect::Action> stores;
    for (const MediaFile& file : files) {
        stores.push_back({QStringLiteral("storeMediaFile"),
                          QJsonObject{{QStringLiteral("filename"), file.name},
                                      {QStringLiteral("data"), QString::fromLatin1(file.bytes.toBase64())}}});
    }
    const auto replies = KSWAnkiconnect::shareInstance().multi(stores);
    if (!replies)
        return askWhichAreHeld(files);

    std::vector<StoredMedia> stored;
    std::vector<std::size_t> unsure;  // stored, but Anki did not say under which name
    for (std::size_t index = 0; index < files.size(); ++index) {
        const AnkiReply& reply = (*replies)[index];
        const QJsonValue name = reply.result();
        if (!ankiReplySucceeded(reply)) {
            stored.push_back({QString(), describeReplyValue(reply.error())});
        } else if (name.isString() && !name.toString().isEmpty()) {
            stored.push_back({name.toString(), QString()});
        } else {
            stored.push_back({});
            unsure.push_back(index);
        }
    }
    if (!unsure.empty()) {
        std::vector<MediaFile> ask;
        for (std::size_t index : unsure)
            ask.push_back({files[index].name, {}});
        const std::vector<StoredMedia> held = askWhichAreHeld(ask);
        for (std::size_t at = 0; at < unsure.size(); ++at)
            stored[unsure[at]] = held[at];
    }
    return stored;
}

}  // namespace lexicorn

#include "lexicorn/render/anki_fields.h"

#include "lexicorn/render/html_text.h"
#include "lexicorn/render/note_format.h"
#include "lexicorn/services/ksw_play_sound.h"
#include "lexicorn/services/voice_endpoint.h"
#include "lexicorn/services/word_audio.h"

#include "foundation/log.h"
#include "foundation/user_defaults.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace lexicorn {

namespace {

const QString sectionOutOfRangeLog = QStringLiteral("🌀🌀🌀 section 超出范围！");
const QString sectionOutOfRange = QStringLiteral("索引 section 超出范围");
const QString itemOutOfRangeLog = QStringLiteral("🌀🌀🌀 item 超出范围！");
const QString itemOutOfRange = QStringLiteral("索引 item 超出范围");
const QString deckOrTypeMissing = QStringLiteral("未设置正确的 Deck、Type 名称！");
const QString soundNotStored = QStringLiteral("声音文件未能存入 Anki：");

const QString soundScheme = QStringLiteral("sound://");
const QString localPrefix = QStringLiteral("MN3_LW_");
const QString voicePrefix = QStringLiteral("MN3_YD_");

// ---- sound files

// A name Anki can store a file under: characters that file systems refuse
// become "_", and so do brackets, which would end a [sound:…] tag early.
QString mediaSafe(const QString& name)
{
    QString safe = name;
    for (QChar& c : safe) {
        if (c.unicode() < 0x20 || c == u'/' || c == u'\\' || c == u':' || c == u'*' || c == u'?' || c == u'"' || c == u'<'
            || c == u'>' || c == u'|' || c == u'[' || c == u']')
            c = u'_';
    }
    return safe;
}

QString soundTag(const QString& fileName)
{
    return fileName.isEmpty() ? QString() : QStringLiteral("[sound:") + fileName + u']';
}

// The local file a dictionary's sound reference names: "sound://FILE", or a
// bare FILE (no scheme), in the Dict folder.
struct LocalSound {
    QString reference;  // FILE
    QString path;
};
std::optional<LocalSound> localSound(const QString& reference)
{
    const QString trimmed = reference.trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;
    QString full = trimmed;
    if (!full.startsWith(soundScheme)) {
        if (full.contains(QStringLiteral("://")))
            return std::nullopt;
        full = soundScheme + full;
    }
    const std::optional<QString> path = KSWPlaySound::localSoundPathWith_(full);
    if (!path)
        return std::nullopt;
    return LocalSound{full.mid(soundScheme.size()), *path};
}

// The sound of a text read by the voice service, or, when the service
// cannot be reached from here, by the offline voice. The voice service's
// file is uploaded from the bytes already fetched rather than by its
// address: Anki would fetch it a second time, and a slow service then makes
// Anki's answer come after the client has given up.
std::optional<MediaFile> spokenSound(const QString& text, const QString& voiceName, const QString& offlineName)
{
    WordAudio audio = wordAudio(text);
    switch (audio.source) {
    case WordAudio::Source::voiceService:
        return MediaFile{voiceName, std::move(audio.bytes)};
    case WordAudio::Source::offlineVoice:
        return MediaFile{offlineName, std::move(audio.bytes)};
    case WordAudio::Source::none:
        break;
    }
    logLine(QStringLiteral("🌀🌀🌀 no sound for \"%1\": %2").arg(text, audio.voiceServiceProblem));
    return std::nullopt;
}

std::optional<MediaFile> localSoundFile(const LocalSound& local)
{
    QFile file(local.path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return MediaFile{localPrefix + mediaSafe(local.reference), file.readAll()};
}

std::optional<MediaFile> wordSoundFile(const QString& word, const QString& amePron)
{
    if (const std::optional<LocalSound> local = localSound(amePron))
        return localSoundFile(*local);
    if (word.trimmed().isEmpty())
        return std::nullopt;
    return spokenSound(word, voiceFileName(mediaSafe(word)), localPrefix + mediaSafe(word) + QStringLiteral(".wav"));
}

std::optional<MediaFile> exampleSoundFile(const EnWordExt& example)
{
    if (const std::optional<LocalSound> local = localSound(example.speaker))
        return localSoundFile(*local);
    QString sentence = example.en;
    sentence.remove(QStringLiteral("<b>"));
    sentence.remove(QStringLiteral("</b>"));
    sentence = sentence.trimmed();
    if (sentence.isEmpty())
        return std::nullopt;
    const QString key = QStringLiteral("ex_")
        + QString::fromLatin1(QCryptographicHash::hash(sentence.toUtf8(), QCryptographicHash::Sha1).toHex().left(12));
    return spokenSound(sentence, voicePrefix + key + QStringLiteral("_1.mp3"), localPrefix + key + QStringLiteral(".wav"));
}

// ---- HTML

QString senseHtml(const EnWord& entry, const EnWordDef& sense, const std::vector<QString>& exampleSounds)
{
    const auto e = htmlEscapeEliminateB;
    QString html;
    html.reserve(1024);
    html += QStringLiteral("<span class='star'>") + e(entry.star);
    html += QStringLiteral("</span><span class='pos en'>") + e(entry.pos_en);
    html += QStringLiteral("</span><span class='gram'>");
    if (!sense.gram.isEmpty())
        html += u'[' + e(sense.gram) + u']';
    html += QStringLiteral("</span><br></style><span class='subTitle'>") + e(sense.subTitle);
    html += QStringLiteral("</span><span class='tran'><span class='signpos en'>") + e(sense.signpos_en);
    html += QStringLiteral("<span class='signpos cn'>") + e(sense.signpos_cn);
    html += QStringLiteral("</span></span><span class='eng_tran'>") + e(sense.def_en);
    html += QStringLiteral("</span><span class='chn_tran'>") + e(sense.def_cn);
    html += QStringLiteral("</span></span>");
    for (std::size_t index = 0; index < sense.exts.size(); ++index) {
        const EnWordExt& example = *sense.exts[index];
        html += index == 0 ? QStringLiteral("<ul class='sents'><li class='sent'><span class='speak_sent'>")
                           : QStringLiteral("<li class='sent'><span class='speak_sent'>");
        html += e(exampleSounds[index]);
        html += QStringLiteral("</span><span class='eng_sent'>") + htmlBoldWord(example.en, entry.title);
        html += QStringLiteral("</span><span class='chn_sent'>") + e(example.cn);
        html += QStringLiteral("</span></li>");
    }
    if (!sense.exts.empty())
        html += QStringLiteral("</ul>");
    return html;
}

QString sentenceHtml(const QString& quoteSentence, const QString& word)
{
    // The card rebuilt from a note brings the sentence with the word already
    // in <b>; the popup brings the page's plain text.
    if (quoteSentence.contains(QStringLiteral("<b>")))
        return htmlEscapeEliminateB(quoteSentence);
    return htmlBoldWord(quoteSentence, word);
}

QString extraInfoHtml(const QString& bookTitle, const QString& sentenceCN, const std::optional<QString>& appendHtml)
{
    QStringList parts;
    if (!bookTitle.isEmpty())
        parts << QStringLiteral("《") + htmlEscape(bookTitle) + QStringLiteral("》");
    if (!sentenceCN.isEmpty())
        parts << htmlEscapeEliminateB(sentenceCN);
    if (appendHtml && !appendHtml->isEmpty())
        parts << *appendHtml;
    return parts.join(QStringLiteral("<br>"));
}

}  // namespace

QString formatWithObjects(const QString& format, std::initializer_list<QString> arguments)
{
    static const QString placeholder = QStringLiteral("%@");
    QString out;
    out.reserve(format.size() + 64);
    auto next = arguments.begin();
    qsizetype copied = 0;
    qsizetype at = format.indexOf(placeholder);
    while (at >= 0 && next != arguments.end()) {
        out += QStringView(format).mid(copied, at - copied);
        out += *next++;
        copied = at + placeholder.size();
        at = format.indexOf(placeholder, copied);
    }
    out += QStringView(format).mid(copied);
    return out;
}

CardResult<AnkiCardDraft> draftForAnki(const DictData& data, const QString& word, const QString& bookTitle, SenseIndex indexPath,
                                       const QString& sentenceCN, std::optional<QJsonValue> ankiID,
                                       std::optional<QString> appendHtml, const QString& noteId)
{
    const EnWordList& entries = data.enWords();
    if (indexPath.section < 0 || std::size_t(indexPath.section) >= entries.size()) {
        logLine(sectionOutOfRangeLog);
        return CardError::make(ErrorCode::structure, sectionOutOfRange);
    }
    const EnWordPtr& entry = entries[std::size_t(indexPath.section)];
    if (indexPath.item < 0 || std::size_t(indexPath.item) >= entry->defs.size()) {
        logLine(itemOutOfRangeLog);
        return CardError::make(ErrorCode::structure, itemOutOfRange);
    }
    const EnWordDefPtr& sense = entry->defs[std::size_t(indexPath.item)];

    UserDefaults& defaults = UserDefaults::standard();
    AnkiCardDraft draft;
    draft.deckName = defaults.string(ankiset::deckName);
    draft.modelName = defaults.string(ankiset::typeName);
    if (draft.deckName.isEmpty() || draft.modelName.isEmpty())
        return CardError::make(ErrorCode::structure, deckOrTypeMissing);

    draft.entry = entry;
    draft.sense = sense;
    draft.word = word;
    draft.quoteSentence = data.quoteSentence();
    draft.bookTitle = bookTitle;
    draft.sentenceCN = sentenceCN;
    draft.ankiID = std::move(ankiID);
    draft.appendHtml = std::move(appendHtml);
    draft.noteId = noteId;
    draft.wordSound = wordSoundFile(word, entry->amePron);
    for (const EnWordExtPtr& example : sense->exts)
        draft.exampleSounds.push_back(exampleSoundFile(*example));
    return draft;
}

std::vector<MediaFile> AnkiCardDraft::soundFiles() const
{
    std::vector<MediaFile> files;
    if (wordSound)
        files.push_back(*wordSound);
    for (const std::optional<MediaFile>& sound : exampleSounds) {
        if (sound)
            files.push_back(*sound);
    }
    return files;
}

CardResult<QJsonObject> AnkiCardDraft::noteWith(const std::vector<StoredMedia>& stored) const
{
    // The stored files come in the order of soundFiles().
    QStringList unstored;
    bool ankiAnswered = true;
    auto next = stored.begin();
    const auto tagFor = [&](const std::optional<MediaFile>& sound) {
        if (!sound || next == stored.end())
            return QString();
        const StoredMedia& file = *next++;
        if (!file.stored()) {
            unstored << QStringLiteral("%1（%2）").arg(sound->name, file.problem);
            ankiAnswered = ankiAnswered && file.ankiAnswered;
            return QString();
        }
        return soundTag(file.name);
    };
    const QString wordTag = tagFor(wordSound);
    std::vector<QString> exampleTags;
    for (const std::optional<MediaFile>& sound : exampleSounds)
        exampleTags.push_back(tagFor(sound));
    if (!ankiAnswered)
        return CardError::make(ErrorCode::ankiUnreachable, cardmessage::ankiUnreachable);
    if (!unstored.isEmpty())
        return CardError::make(ErrorCode::structure, soundNotStored + unstored.join(QStringLiteral("、")));

    UserDefaults& defaults = UserDefaults::standard();
    const auto e = htmlEscapeEliminateB;
    const QString oneLine = formatWithObjects(cardStyleSheet, {e(entry->pos_en), e(sense->def_en), e(sense->def_cn)});
    const QString link = noteId.isEmpty() ? QString() : htmlEscape(formatWithObjects(noteLinkFormat, {noteId}));
    const std::pair<const QString&, QString> contents[] = {
        {ankiset::expression, htmlEscape(word)},
        {ankiset::definitions, oneLine},
        {ankiset::sentence, sentenceHtml(quoteSentence, word)},
        {ankiset::extraInfo, extraInfoHtml(bookTitle, sentenceCN, appendHtml)},
        {ankiset::url, link},
        {ankiset::definition, senseHtml(*entry, *sense, exampleTags)},
        {ankiset::reading, e(entry->readings)},
        {ankiset::audio, htmlEscape(wordTag)},
    };
    QJsonObject fields;
    for (const auto& [key, content] : contents)
        fields.insert(defaults.string(key), content);

    QJsonObject note{
        {QStringLiteral("deckName"), deckName},
        {QStringLiteral("modelName"), modelName},
        {QStringLiteral("fields"), fields},
        {QStringLiteral("options"),
         QJsonObject{{QStringLiteral("allowDuplicate"), defaults.string(ankiset::duplicate) == QStringLiteral("YES")},
                     {QStringLiteral("duplicateScope"), QStringLiteral("deck")}}},
        {QStringLiteral("tags"), QJsonArray{ankiCardTag}},
    };
    if (ankiID)
        note.insert(QStringLiteral("id"), *ankiID);
    return note;
}

CardResult<QJsonObject> wordDictForAnki(const DictData& data, const QString& word, const QString& bookTitle, SenseIndex indexPath,
                                        const QString& sentenceCN, std::optional<QJsonValue> ankiID,
                                        std::optional<QString> appendHtml, const QString& noteId)
{
    CardResult<AnkiCardDraft> draft = draftForAnki(data, word, bookTitle, indexPath, sentenceCN, std::move(ankiID),
                                                   std::move(appendHtml), noteId);
    if (!draft)
        return draft.error();
    return draft->noteWith(storeMediaFiles(draft->soundFiles()));
}

}  // namespace lexicorn

#include "lexicorn/dictionary/import/cache_writer.h"

#include "lexicorn/dictionary/import/html_senses.h"
#include "lexicorn/dictionary/import/utf8_text.h"
#include "lexicorn/dictionary/json_writer.h"
#include "lexicorn/dictionary/records.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace lexicorn::dictimport {

namespace {

// Readings as the engine shows them, between slashes: "[rʌn]" and "rʌn" -> "/rʌn/".
QString slashedReadings(QString readings)
{
    readings = withoutCardMarkers(readings).simplified();
    if (readings.isEmpty())
        return {};
    if (readings.size() >= 2 && readings.startsWith(u'[') && readings.endsWith(u']'))
        readings = readings.mid(1, readings.size() - 2).trimmed();
    if (readings.size() >= 2 && readings.startsWith(u'/') && readings.endsWith(u'/'))
        return readings;
    return u'/' + readings + u'/';
}

// Senses grouped by part of speech, in the order the parts first appear;
// one entry per part, like the dictionaries the engine already reads.
EnWordList entriesOf(const SourceEntry& source)
{
    std::vector<SourceSense> senses = source.senses.empty() ? sensesFromMarkup(source.text, source.markup) : source.senses;
    EnWordList entries;
    const QString readings = slashedReadings(source.readings);
    const QString stars = withoutCardMarkers(source.stars).trimmed();
    const QString sound = source.sound.isEmpty() ? QString() : QStringLiteral("sound://") + safeResourceName(source.sound);
    const QString title = withoutCardMarkers(source.headword).simplified();
    for (SourceSense& sense : senses) {
        const QString pos = withoutCardMarkers(sense.pos).simplified();
        EnWordPtr entry;
        for (const EnWordPtr& existing : entries) {
            if (existing->pos_en == pos)
                entry = existing;
        }
        if (!entry) {
            entry = std::make_shared<EnWord>(title, EnWordDefList{});
            entry->star = stars;
            entry->readings = readings;
            entry->amePron = sound;
            entry->pos_en = pos;
            entry->pos_cn = chinesePartOfSpeech(pos);
            entries.push_back(entry);
        }
        auto def = std::make_shared<EnWordDef>();
        def->def_en = withoutCardMarkers(sense.defEn).simplified();
        def->def_cn = withoutCardMarkers(sense.defCn).simplified();
        for (const QString& example : sense.examples) {
            auto ext = std::make_shared<EnWordExt>();
            ext->en = withoutCardMarkers(example).simplified();
            if (!ext->en.isEmpty())
                def->exts.push_back(std::move(ext));
        }
        if (!def->def_en.isEmpty() || !def->def_cn.isEmpty() || !def->exts.empty())
            entry->defs.push_back(std::move(def));
    }
    std::erase_if(entries, [](const EnWordPtr& entry) { return entry->defs.empty(); });
    return entries;
}

}  // namespace

QString chinesePartOfSpeech(const QString& pos)
{
    static const QHash<QString, QString> names{
        {QStringLiteral("n."), QStringLiteral("名词")},     {QStringLiteral("noun"), QStringLiteral("名词")},
        {QStringLiteral("v."), QStringLiteral("动词")},     {QStringLiteral("verb"), QStringLiteral("动词")},
        {QStringLiteral("vt."), QStringLiteral("及物动词")}, {QStringLiteral("vi."), QStringLiteral("不及物动词")},
        {QStringLiteral("adj."), QStringLiteral("形容词")}, {QStringLiteral("a."), QStringLiteral("形容词")},
        {QStringLiteral("adjective"), QStringLiteral("形容词")},
        {QStringLiteral("adv."), QStringLiteral("副词")},   {QStringLiteral("ad."), QStringLiteral("副词")},
        {QStringLiteral("adverb"), QStringLiteral("副词")},
        {QStringLiteral("prep."), QStringLiteral("介词")},  {QStringLiteral("conj."), QStringLiteral("连词")},
        {QStringLiteral("pron."), QStringLiteral("代词")},  {QStringLiteral("int."), QStringLiteral("感叹词")},
        {QStringLiteral("interj."), QStringLiteral("感叹词")}, {QStringLiteral("num."), QStringLiteral("数词")},
        {QStringLiteral("art."), QStringLiteral("冠词")},   {QStringLiteral("abbr."), QStringLiteral("缩写")},
        {QStringLiteral("aux."), QStringLiteral("助动词")},
    };
    return names.value(pos.toLower());
}

QString safeResourceName(const QString& name)
{
    QString clean = name;
    clean.replace(u'\\', u'/');
    QStringList parts;
    for (const QString& part : clean.split(u'/', Qt::SkipEmptyParts)) {
        if (part == u"." )
            continue;
        if (part == u".." || part.contains(QChar(0)))
            return {};
        parts.append(part);
    }
    return parts.join(u'/');
}

CacheWriter::CacheWriter(QString stagingDir) : staging_(std::move(stagingDir)) {}

void CacheWriter::beginFile(const QString& path)
{
    currentFile_ = path;
    nextIndex_ = 0;
}

void CacheWriter::addRecord(std::string_view headword, std::string_view recordJson, unsigned wordClasses)
{
    const auto record = uint32_t(records_.size());
    records_.push_back(Record{nextIndex_++, recordJson});
    const auto fresh = uint32_t(slots_.size());
    const uint32_t slot = slotIndex_.findOrAdd(headword, fresh, [this](uint32_t s) { return slots_[s].key; });
    if (slot == fresh) {
        slots_.push_back(Slot{headword, record, record, wordClasses});
        return;
    }
    records_[slots_[slot].last].next = record;
    slots_[slot].last = record;
    slots_[slot].wordClasses |= wordClasses;
}

void CacheWriter::entry(SourceEntry source)
{
    const QString headword = withoutCardMarkers(source.headword).simplified();
    if (headword.isEmpty())
        return;
    EnWordData record;
    record.word = headword;
    unsigned classes = 0;
    if (!source.linkTo.isEmpty()) {
        record.link = withoutCardMarkers(source.linkTo).simplified();
        if (record.link->isEmpty() || *record.link == headword)
            return skipRecord();  // a cross-reference to nothing, or to itself, leads nowhere
    } else {
        record.enWords = entriesOf(source);
        if (record.enWords.empty())
            return skipRecord();  // nothing the popup could show
        for (const EnWordPtr& entry : record.enWords)
            classes |= 1u << unsigned(wordClassOf(entry->pos_en));
    }
    // The index is written when the cache is: the JSON kept starts after it.
    std::string json;
    json::appendEnWordData(json, record);
    constexpr std::string_view indexZero = "{\"index\":0";
    addRecord(text_.add(headword.toStdString()), text_.add(std::string_view(json).substr(indexZero.size())), classes);
}

void CacheWriter::wordForm(const QString& form, const QString& headword)
{
    const QString f = form.simplified();
    const QString h = headword.simplified();
    if (f.isEmpty() || h.isEmpty() || f == h)
        return;
    addWordForm(text_.add(f.toStdString()), text_.add(h.toStdString()));
}

void CacheWriter::resource(const QString& name, const QByteArray& bytes)
{
    const QString relative = safeResourceName(name);
    // The Dict folder's own files (the dictionaries, the word-form map) are
    // never taken from a dictionary's resources.
    if (relative.isEmpty() || relative.endsWith(QStringLiteral(".json"), Qt::CaseInsensitive))
        return;
    const QString path = staging_ + u'/' + relative;
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw ImportError(QStringLiteral("%1: cannot stage the resource %2: %3").arg(currentFile_, name, file.errorString()).toStdString());
    resources_.push_back(relative);
}

void CacheWriter::progress(qint64 done, qint64 total)
{
    if (progressHandler_)
        progressHandler_(done, total);
}

void CacheWriter::writeCacheJson(const std::function<void(std::string_view)>& write) const
{
    constexpr size_t pieceSize = size_t(1) << 20;
    std::string piece;
    piece.reserve(pieceSize);
    const auto add = [&](std::string_view text) {
        if (piece.size() + text.size() > pieceSize) {
            write(piece);
            piece.clear();
        }
        if (text.size() > pieceSize)
            write(text);
        else
            piece += text;
    };
    piece += '{';
    bool firstSlot = true;
    for (const Slot& slot : slots_) {
        if (!firstSlot)
            piece += ',';
        firstSlot = false;
        // Keys have always been written as Qt decodes UTF-8, which drops a
        // byte-order mark at the start.
        std::string_view key = slot.key;
        if (key.starts_with("\xEF\xBB\xBF"))
            key.remove_prefix(3);
        utf8::appendJsonString(piece, key);
        piece += ":[";
        for (uint32_t r = slot.first; r != TextIndex::none; r = records_[r].next) {
            if (r != slot.first)
                piece += ',';
            piece += "{\"index\":";
            piece += std::to_string(records_[r].index);
            add(records_[r].json);
        }
        piece += ']';
    }
    piece += '}';
    write(piece);
}

std::string CacheWriter::cacheJson() const
{
    std::string out;
    writeCacheJson([&](std::string_view piece) { out += piece; });
    return out;
}

WordFormList CacheWriter::wordForms() const
{
    WordFormList forms;
    std::vector<std::pair<std::string_view, std::string_view>>& pairs = forms.pairs;
    pairs.reserve(fileForms_.size() + slots_.size() * 2);
    TextIndex taken;
    const auto formOf = [&pairs](uint32_t item) { return pairs[item].first; };
    const auto keyOf = [this](uint32_t slot) { return slots_[slot].key; };
    const auto add = [&](std::string_view form, uint32_t hash, std::string_view headword, bool generated) {
        if (generated && slotIndex_.find(form, hash, keyOf) != TextIndex::none)
            return;
        const auto item = uint32_t(pairs.size());
        if (taken.findOrAdd(form, hash, item, formOf) != item)
            return;
        pairs.emplace_back(generated ? forms.generated.add(form) : form, headword);
    };
    for (const auto& [form, headword] : fileForms_)
        add(form, TextIndex::hashOf(form), headword, false);

    // Regular forms of a batch of headwords at a time, their places in both
    // tables fetched before any is looked up.
    struct Generated {
        std::string form;
        std::string_view headword;
        uint32_t hash;
    };
    std::vector<Generated> batch;
    constexpr size_t batchSlots = 64;
    for (size_t start = 0; start < slots_.size(); start += batchSlots) {
        batch.clear();
        for (size_t s = start; s < std::min(slots_.size(), start + batchSlots); ++s) {
            const Slot& slot = slots_[s];
            for (unsigned c = 0; c <= unsigned(WordClass::Other); ++c) {
                if (!(slot.wordClasses & (1u << c)))
                    continue;
                for (std::string& form : regularForms(slot.key, WordClass(c))) {
                    const uint32_t hash = TextIndex::hashOf(form);
                    slotIndex_.prefetch(hash);
                    taken.prefetch(hash);
                    batch.push_back({std::move(form), slot.key, hash});
                }
            }
        }
        for (const Generated& g : batch)
            add(g.form, g.hash, g.headword, true);
    }
    return forms;
}

}  // namespace lexicorn::dictimport

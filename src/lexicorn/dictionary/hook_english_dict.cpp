#include "lexicorn/dictionary/hook_english_dict.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"
#include "lexicorn/dictionary/text_helpers.h"

#include "foundation/log.h"
#include "foundation/paths.h"

#include <QFileInfo>

namespace lexicorn {

namespace {

// The text of a string member, or "" when it is missing or not a string.
QString textOf(simdjson::dom::element object, std::string_view key)
{
    std::string_view text;
    if (object[key].get_string().get(text))
        return QString("");
    return jsonread::textFromUtf8(text);
}

// Calls visit for each element of an array member; nothing when it is missing or not an array.
template <typename Visit>
void forEachIn(simdjson::dom::element object, std::string_view key, Visit visit)
{
    simdjson::dom::array array;
    if (object[key].get_array().get(array))
        return;
    for (simdjson::dom::element element : array)
        visit(element);
}

}  // namespace

HookEnglishDict::HookEnglishDict(EnWordServer& engine) : engine_(engine) {}

HookEnglishDict& HookEnglishDict::shareInstance()
{
    static HookEnglishDict* instance = new HookEnglishDict(EnWordServer::shared());
    return *instance;
}

QString HookEnglishDict::dictName_(int64_t index)
{
    return index == 1 ? QStringLiteral("collins.json") : QStringLiteral("LDOCE5_html.json");
}

const HookEnglishDict::RawJson* HookEnglishDict::enDict()
{
    if (enDict_)
        return enDict_.get();
    // Always the raw Collins file, whatever selectedDict says.
    const QString path = dictDirectory() + u'/' + dictName_(1);
    if (!QFileInfo::exists(path))
        return nullptr;
    QString error;
    const std::optional<JsonBuffer> bytes = JsonBuffer::readFile(path, error);
    if (!bytes) {
        logLine(QStringLiteral("read enDict error: %1").arg(error));
        return nullptr;
    }
    auto raw = std::make_unique<RawJson>();
    if (auto code = raw->parser.parse(bytes->data(), bytes->size(), false).get(raw->root)) {
        logLine(QStringLiteral("JSON serialization error: %1").arg(QString::fromUtf8(simdjson::error_message(code))));
        return nullptr;
    }
    simdjson::dom::object members;
    if (!raw->root.get_object().get(members)) {
        for (auto [key, value] : members)
            raw->members.insert_or_assign(key, value);
    }
    enDict_ = std::move(raw);
    return enDict_.get();
}

const std::unordered_map<std::string, std::string>* HookEnglishDict::wordforms()
{
    if (wordforms_)
        return &*wordforms_;
    const QString path = dictDirectory() + QStringLiteral("/wordforms.json");
    if (!QFileInfo::exists(path))
        return nullptr;
    QString ignored;
    const std::optional<JsonBuffer> bytes = JsonBuffer::readFile(path, ignored);
    simdjson::dom::parser parser;
    simdjson::dom::object object;
    if (!bytes || parser.parse(bytes->data(), bytes->size(), false).get_object().get(object))
        return nullptr;
    std::unordered_map<std::string, std::string> forms;
    for (auto [key, value] : object) {
        std::string_view headword;
        if (!value.get_string().get(headword))
            forms.insert_or_assign(std::string(key), std::string(headword));
    }
    wordforms_ = std::move(forms);
    return &*wordforms_;
}

std::optional<std::string> HookEnglishDict::headwordFor(const QString& form)
{
    const auto* forms = wordforms();
    if (!forms)
        return std::nullopt;
    const auto found = forms->find(form.toStdString());
    if (found == forms->end())
        return std::nullopt;
    return found->second;
}

QString HookEnglishDict::formatWord_(const QString& word)
{
    QString w = word.toLower().trimmed();
    if (selectedDict != 1)
        return w;
    if (!headwordFor(w)) {
        const QString withoutHyphens = deletingHyphen(w);
        w = headwordFor(withoutHyphens) ? withoutHyphens : deletingSpaceAndBr(withoutHyphens);
    }
    if (const std::optional<std::string> headword = headwordFor(w))
        return QString::fromStdString(*headword);
    return w;
}

std::shared_ptr<HookEnWordData> HookEnglishDict::queryWord_(const QString& word)
{
    const QString formatted = formatWord_(word);
    if (selectedDict == 0) {
        engine_.enDict(dictDirectory() + QStringLiteral("/LDOCE5_html.json"));
        return engine_.query(formatted);
    }
    if (selectedDict != 1)
        return HookEnWordData::initWithWord_(word);
    const RawJson* raw = enDict();
    if (!raw)
        return HookEnWordData::initWithWord_(word);
    const QByteArray key = formatted.toUtf8();
    const auto found = raw->members.find(std::string_view(key.constData(), size_t(key.size())));
    if (found == raw->members.end())
        return HookEnWordData::initWithWord_(word);
    return collinsRecord(word, found->second);
}

std::shared_ptr<HookEnWordData> HookEnglishDict::collinsRecord(const QString& word, simdjson::dom::element entry)
{
    // Unlike the engine, senses stay in file order and keep an empty part of speech.
    std::vector<std::shared_ptr<HookEnWordDef>> defs;
    forEachIn(entry, "defs", [&](simdjson::dom::element sense) {
        std::vector<std::shared_ptr<HookEnWordExt>> exts;
        forEachIn(sense, "ext", [&](simdjson::dom::element example) {
            exts.push_back(HookEnWordExt::initWithCn_en_(textOf(example, "ext_cn"), textOf(example, "ext_en")));
        });
        defs.push_back(HookEnWordDef::initWithExts_def_cn_def_en_pos_cn_pos_en_(
            std::move(exts), textOf(sense, "def_cn"), textOf(sense, "def_en"), textOf(sense, "pos_cn"), textOf(sense, "pos_en")));
    });
    QStringList readings;
    forEachIn(entry, "readings", [&](simdjson::dom::element reading) {
        std::string_view text;
        if (!reading.get_string().get(text))
            readings.append(jsonread::textFromUtf8(text));
    });
    return HookEnWordData::initWithWord_defs_readings_star_(word, std::move(defs), readings, textOf(entry, "star"));
}

std::shared_ptr<HookEnWordData> HookEnglishDict::queryWord_quoteSentence_(const QString& word, const QString& quoteSentence)
{
    std::shared_ptr<HookEnWordData> record = queryWord_(word);
    record->quoteSentence = quoteSentence;
    return record;
}

}  // namespace lexicorn

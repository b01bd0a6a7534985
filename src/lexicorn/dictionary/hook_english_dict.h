#pragma once

#include "lexicorn/dictionary/legacy_records.h"

#include <QString>

#include <simdjson.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace lexicorn {

class EnWordServer;

// The older dictionary front end. It reads the raw Collins file itself and
// builds legacy records; for LDOCE5 it asks the dictionary engine.
class HookEnglishDict {
public:
    explicit HookEnglishDict(EnWordServer& engine);
    HookEnglishDict(const HookEnglishDict&) = delete;
    HookEnglishDict& operator=(const HookEnglishDict&) = delete;

    static HookEnglishDict& shareInstance();

    // 1 = collins, 0 = LDOCE5, as the engine numbers them.
    uint64_t selectedDict = 1;

    // The raw Collins file as parsed JSON (any JSON value, fragments allowed).
    struct RawJson {
        simdjson::dom::parser parser;
        simdjson::dom::element root;
        std::unordered_map<std::string_view, simdjson::dom::element> members;  // when root is an object
    };

    // "collins.json" for 1, "LDOCE5_html.json" for any other value.
    static QString dictName_(int64_t index);

    // Loaded on first successful read; a missing or broken file is retried on the next read.
    const RawJson* enDict();
    // Form -> headword, string values only; loaded like enDict.
    const std::unordered_map<std::string, std::string>* wordforms();

    QString formatWord_(const QString& word);
    std::shared_ptr<HookEnWordData> queryWord_(const QString& word);
    std::shared_ptr<HookEnWordData> queryWord_quoteSentence_(const QString& word, const QString& quoteSentence);

private:
    std::optional<std::string> headwordFor(const QString& form);
    std::shared_ptr<HookEnWordData> collinsRecord(const QString& word, simdjson::dom::element entry);

    EnWordServer& engine_;
    std::unique_ptr<RawJson> enDict_;
    std::optional<std::unordered_map<std::string, std::string>> wordforms_;
};

}  // namespace lexicorn

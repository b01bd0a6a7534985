#pragma once

#include "lexicorn/dictionary/json_reader.h"

#include <QString>

#include <optional>
#include <string>
#include <unordered_map>

namespace lexicorn {

// The word-form map: an inflected or variant form -> its headword.
class WordForms {
public:
    // Decodes an object of string -> string; nothing when the bytes do not decode.
    static std::optional<WordForms> decode(const simdjson::padded_string& bytes, jsonread::Failure& failure);

    // Reads the file at path: no file gives an empty map silently; a file that
    // cannot be read or decoded gives an empty map and a diagnostic line.
    static WordForms load(const QString& path);

    std::optional<QString> headwordFor(const QString& form) const;
    size_t size() const { return map_.size(); }

private:
    std::unordered_map<std::string, std::string> map_;
};

}  // namespace lexicorn

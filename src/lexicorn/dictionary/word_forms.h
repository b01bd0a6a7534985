#pragma once

#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace lexicorn {

// The word-form map: an inflected or variant form -> its headword.
class WordForms {
public:
    // Decodes an object of string -> string; nothing when the bytes do not decode.
    static std::optional<WordForms> decode(const JsonBuffer& bytes, jsonread::Failure& failure);

    // Reads the file at path: no file gives an empty map silently; a file that
    // cannot be read or decoded gives an empty map and a diagnostic line.
    static WordForms load(const QString& path);

    std::optional<QString> headwordFor(const QString& form) const;
    size_t size() const { return map_.size(); }

private:
    // Lets a lookup probe with a string_view, so it allocates nothing.
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    std::unordered_map<std::string, std::string, Hash, std::equal_to<>> map_;
};

}  // namespace lexicorn

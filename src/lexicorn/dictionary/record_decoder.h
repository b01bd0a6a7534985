#pragma once

// Decoding of the cache-shape records (and of DictData) from JSON. Every key
// except "link" is required; a record lacking one does not decode.

#include "lexicorn/dictionary/json_reader.h"
#include "lexicorn/dictionary/records.h"

#include <optional>
#include <string_view>

namespace lexicorn {

// Reads one array of EnWordData; with a null target it only checks the shape.
bool readEnWordDataList(jsonread::value& v, EnWordDataList* target, jsonread::Failure& failure);

// Parses a padded buffer holding one array of EnWordData.
std::optional<EnWordDataList> decodeEnWordDataList(simdjson::ondemand::parser& parser, const char* data,
                                                   size_t length, size_t capacity, jsonread::Failure& failure);
bool checkEnWordDataList(simdjson::ondemand::parser& parser, const char* data, size_t length, size_t capacity,
                         jsonread::Failure& failure);

// Decodes the JSON encoding of a DictData ("word", "quoteSentence", "enWords").
DictDataPtr decodeDictData(std::string_view json, jsonread::Failure& failure);

}  // namespace lexicorn

#pragma once

// JSON encoding of the dictionary records with their exact keys. Output is
// compact UTF-8; "link" is written only when present.

#include "lexicorn/dictionary/records.h"

#include <QStringView>

#include <string>

namespace lexicorn::json {

void appendString(std::string& out, QStringView text);
void appendEnWordExt(std::string& out, const EnWordExt& ext);
void appendEnWordDef(std::string& out, const EnWordDef& def);
void appendEnWord(std::string& out, const EnWord& word);
void appendEnWordData(std::string& out, const EnWordData& data);
void appendEnWordDataList(std::string& out, const EnWordDataList& list);
void appendDictData(std::string& out, const DictData& data);

std::string encode(const DictData& data);

}  // namespace lexicorn::json

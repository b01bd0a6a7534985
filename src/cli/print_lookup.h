#pragma once

#include "lexicorn/dictionary/legacy_records.h"
#include "lexicorn/dictionary/records.h"

#include <QString>

namespace lexicorn::cli {

// A readable listing of a lookup: each entry with its senses and examples.
QString describeLookup(const DictData& lookup, const QString& dictName);

// A readable listing of a legacy record.
QString describeLegacy(const HookEnWordData& record);

// The legacy record as one line of JSON.
QString legacyJson(const HookEnWordData& record);

}  // namespace lexicorn::cli

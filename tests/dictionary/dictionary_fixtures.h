#pragma once

// Small dictionaries written in the files' own JSON shapes, for the tests.

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/dictionary/legacy_records.h"
#include "lexicorn/dictionary/records.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace lexicorn::testing {

// An entry with one sense per given English definition; each sense has one example.
EnWordPtr makeEntry(const QString& title, const QString& pos, std::initializer_list<const char*> definitions);

EnWordDataPtr makeRecord(const QString& word, std::initializer_list<EnWordPtr> entries,
                         std::optional<QString> link = std::nullopt);

// One record of one entry with one sense, filed under `word`.
EnWordDataList oneSense(const QString& word, const char* definition);

// A cache-shape file: headword -> list of records, in the order given.
QByteArray cacheJson(const std::vector<std::pair<QString, EnWordDataList>>& records);

// A legacy record as "word|quote|star|readings", then "pos_en|def_en|def_cn|examples" for each sense.
QStringList described(const HookEnWordData& record);

// The first definition of each entry a lookup finds, in order.
QStringList definitionsFound(EnWordServer& server, const QString& word);

}  // namespace lexicorn::testing

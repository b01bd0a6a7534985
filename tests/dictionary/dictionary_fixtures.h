#pragma once

// Small dictionaries written in the files' own JSON shapes, for the tests.

#include "lexicorn/dictionary/records.h"

#include <QByteArray>
#include <QString>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace lexicorn::testing {

// An entry with one sense per given English definition; each sense has one example.
EnWordPtr makeEntry(const QString& title, const QString& pos, std::initializer_list<const char*> definitions);

EnWordDataPtr makeRecord(const QString& word, std::initializer_list<EnWordPtr> entries,
                         std::optional<QString> link = std::nullopt);

// A cache-shape file: headword -> list of records, in the order given.
QByteArray cacheJson(const std::vector<std::pair<QString, EnWordDataList>>& records);

}  // namespace lexicorn::testing

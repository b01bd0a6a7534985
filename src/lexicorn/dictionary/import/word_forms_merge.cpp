#include "lexicorn/dictionary/import/word_forms_merge.h"

#include "lexicorn/dictionary/import/source_entry.h"
#include "lexicorn/dictionary/import/utf8_text.h"
#include "lexicorn/dictionary/json_buffer.h"
#include "lexicorn/dictionary/json_reader.h"
#include "lexicorn/dictionary/json_writer.h"

#include <QFile>
#include <QFileInfo>

#include <string>
#include <unordered_set>

namespace lexicorn::dictimport {

namespace {

void appendPair(std::string& out, std::string_view form, std::string_view headword, bool& first)
{
    if (!first)
        out += ',';
    first = false;
    json::appendString(out, QString::fromUtf8(form.data(), qsizetype(form.size())));
    out += ':';
    json::appendString(out, QString::fromUtf8(headword.data(), qsizetype(headword.size())));
}

}  // namespace

WordFormsMerge mergeWordForms(const QString& existingPath, const std::vector<std::pair<std::string_view, std::string_view>>& forms,
                              const QString& outPath)
{
    WordFormsMerge merge;
    std::string out = "{";
    bool first = true;
    std::unordered_set<std::string> known;
    if (QFileInfo::exists(existingPath)) {
        jsonread::Failure failure;
        std::optional<JsonBuffer> bytes = JsonBuffer::readFile(existingPath, failure.what);
        simdjson::ondemand::parser parser;
        const bool ok = bytes && jsonread::readDocument(parser, bytes->data(), bytes->size(), bytes->capacity(), failure,
                                                        [&](jsonread::value& root) {
            simdjson::ondemand::object object;
            if (root.get_object().get(object))
                return jsonread::fail(failure, QStringLiteral("the top level is not an object"));
            for (auto field : object) {
                std::string_view key;
                if (field.unescaped_key().get(key))
                    return jsonread::fail(failure, QStringLiteral("malformed key"));
                std::string form(key);
                std::string_view headword;
                if (field.value().get_string().get(headword))
                    return jsonread::fail(failure, QStringLiteral("the form \"%1\" has no headword text").arg(QString::fromStdString(form)));
                appendPair(out, form, headword, first);
                known.insert(std::move(form));
                ++merge.kept;
            }
            return true;
        });
        if (!ok) {
            throw ImportError(QStringLiteral("%1 cannot be read (%2); it is left as it is and nothing was imported")
                                  .arg(existingPath, failure.describe())
                                  .toStdString());
        }
    }
    // The forms come without repeats; only the user's own entries can take
    // one of them, and then the user's stays.
    out.reserve(out.size() + forms.size() * 24);
    for (const auto& [form, headword] : forms) {
        if (!known.empty() && known.contains(std::string(form)))
            continue;
        if (!first)
            out += ',';
        first = false;
        utf8::appendJsonString(out, form);
        out += ':';
        utf8::appendJsonString(out, headword);
        ++merge.added;
    }
    out += '}';
    QFile file(outPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(out.data(), qint64(out.size())) != qint64(out.size()))
        throw ImportError(QStringLiteral("cannot write %1: %2").arg(outPath, file.errorString()).toStdString());
    return merge;
}

}  // namespace lexicorn::dictimport

#include "lexicorn/dictionary/word_forms.h"

#include "foundation/log.h"

#include <QFileInfo>

namespace lexicorn {

using namespace jsonread;

std::optional<WordForms> WordForms::decode(const JsonBuffer& bytes, Failure& failure)
{
    simdjson::ondemand::parser parser;
    WordForms forms;
    forms.map_.reserve(bytes.size() / 24);  // about one form per 24 bytes of file
    const bool ok = readDocument(parser, bytes.data(), bytes.size(), bytes.capacity(), failure,
                                 [&](value& root) {
        simdjson::ondemand::object object;
        if (root.get_object().get(object))
            return fail(failure, QStringLiteral("the top level is not an object"));
        for (auto entry : object) {
            simdjson::ondemand::field field;
            std::string_view form;
            std::string_view headword;
            if (std::move(entry).get(field) || field.unescaped_key().get(form))
                return fail(failure, QStringLiteral("malformed key"));
            std::string key(form);  // the parser's buffer is reused by the next string
            if (field.value().get_string().get(headword)) {
                failure.where = QString::fromStdString(key);
                return fail(failure, QStringLiteral("is not a string"));
            }
            forms.map_.insert_or_assign(std::move(key), std::string(headword));
        }
        return true;
    });
    if (!ok)
        return std::nullopt;
    return forms;
}

WordForms WordForms::load(const QString& path)
{
    if (!QFileInfo::exists(path))
        return {};
    Failure failure;
    if (const std::optional<JsonBuffer> bytes = JsonBuffer::readFile(path, failure.what)) {
        if (std::optional<WordForms> forms = decode(*bytes, failure))
            return std::move(*forms);
    }
    logLine(QStringLiteral("🌀🌀🌀 wordforms 读取错误! %1: %2").arg(path, failure.describe()));
    return {};
}

std::optional<QString> WordForms::headwordFor(const QString& form) const
{
    const QByteArray key = form.toUtf8();
    const auto found = map_.find(std::string_view(key.constData(), size_t(key.size())));
    if (found == map_.end())
        return std::nullopt;
    return QString::fromStdString(found->second);
}

}  // namespace lexicorn

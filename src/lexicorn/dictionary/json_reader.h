#pragma once

// Small helpers for reading typed records with simdjson's on-demand API.
// Every reader takes a target that may be null: with null it only checks the
// shape, which lets the loader validate a large file without building objects.

#include <QString>

#include <simdjson.h>

#include <cstdint>
#include <string_view>

namespace lexicorn::jsonread {

using simdjson::ondemand::value;

// What was wrong and where, e.g. where "enWords[1].defs[0]", what "key \"def_en\" is missing".
struct Failure {
    QString where;
    QString what;

    // Adds one step of the path in front, as the error travels outwards.
    void prefix(const QString& step)
    {
        if (where.isEmpty() || where.startsWith(u'['))
            where = step + where;
        else
            where = step + u'.' + where;
    }
    QString describe() const { return where.isEmpty() ? what : where + QStringLiteral(": ") + what; }
};

// Text of a JSON string. Unlike a plain QString::fromUtf8, a leading U+FEFF is
// kept: inside JSON it is a character of the text, not a byte-order mark.
inline QString textFromUtf8(std::string_view text)
{
    QString marks;
    while (text.starts_with("\xEF\xBB\xBF")) {
        marks.append(QChar(0xFEFF));
        text.remove_prefix(3);
    }
    const QString rest = QString::fromUtf8(text.data(), qsizetype(text.size()));
    return marks.isEmpty() ? rest : marks + rest;
}

inline bool fail(Failure& failure, QString what)
{
    failure.what = std::move(what);
    return false;
}

inline bool readText(value& v, QString* out, Failure& failure)
{
    std::string_view text;
    if (v.get_string().get(text))
        return fail(failure, QStringLiteral("is not a string"));
    if (out)
        *out = textFromUtf8(text);
    return true;
}

inline bool readInt64(value& v, int64_t* out, Failure& failure)
{
    int64_t number = 0;
    if (v.get_int64().get(number))
        return fail(failure, QStringLiteral("is not a 64-bit integer"));
    if (out)
        *out = number;
    return true;
}

// Calls readItem(value&, index) for each element; a failure gets "[i]" in its path.
template <typename ReadItem>
bool readArray(value& v, Failure& failure, ReadItem readItem)
{
    simdjson::ondemand::array array;
    if (v.get_array().get(array))
        return fail(failure, QStringLiteral("is not an array"));
    size_t index = 0;
    for (auto element : array) {
        value item;
        if (element.get(item))
            return fail(failure, QStringLiteral("is malformed"));
        if (!readItem(item, index)) {
            failure.prefix(QStringLiteral("[%1]").arg(index));
            return false;
        }
        ++index;
    }
    return true;
}

// One key of an object and how to read its value into the target.
template <typename Target>
struct FieldRule {
    std::string_view key;
    bool (*read)(value&, Target*, Failure&);
    bool optional = false;
};

// Reads an object by its rules. Unknown keys are skipped; a key that appears
// twice keeps its last value; every key not marked optional must be present.
template <typename Target, size_t N>
bool readObject(value& v, Target* target, const FieldRule<Target> (&rules)[N], Failure& failure)
{
    static_assert(N <= 64);
    simdjson::ondemand::object object;
    if (v.get_object().get(object))
        return fail(failure, QStringLiteral("is not an object"));
    uint64_t seen = 0;
    for (auto entry : object) {
        simdjson::ondemand::field field;
        std::string_view key;
        if (std::move(entry).get(field) || field.unescaped_key().get(key))
            return fail(failure, QStringLiteral("is malformed"));
        for (size_t i = 0; i < N; ++i) {
            if (rules[i].key != key)
                continue;
            value fieldValue = field.value();
            if (!rules[i].read(fieldValue, target, failure)) {
                failure.prefix(QString::fromUtf8(key.data(), qsizetype(key.size())));
                return false;
            }
            seen |= uint64_t(1) << i;
            break;
        }
    }
    for (size_t i = 0; i < N; ++i) {
        if (!(seen & (uint64_t(1) << i)) && !rules[i].optional)
            return fail(failure, QStringLiteral("key \"%1\" is missing").arg(QLatin1StringView(rules[i].key.data(), qsizetype(rules[i].key.size()))));
    }
    return true;
}

template <auto Member>
struct MemberOf;
template <typename Class, typename Type, Type Class::*Member>
struct MemberOf<Member> {
    using Owner = Class;
};

// A rule reader for a string member.
template <auto Member>
bool text(value& v, typename MemberOf<Member>::Owner* target, Failure& failure)
{
    return readText(v, target ? &(target->*Member) : nullptr, failure);
}

// Parses one padded document and requires it to end after the value.
template <typename ReadRoot>
bool readDocument(simdjson::ondemand::parser& parser, const char* data, size_t length, size_t capacity,
                  Failure& failure, ReadRoot readRoot)
{
    simdjson::ondemand::document document;
    if (auto error = parser.iterate(data, length, capacity).get(document))
        return fail(failure, QString::fromUtf8(simdjson::error_message(error)));
    value root;
    if (auto error = document.get_value().get(root)) {
        if (error == simdjson::SCALAR_DOCUMENT_AS_VALUE)
            return fail(failure, QStringLiteral("is a single value, not an array or an object"));
        return fail(failure, QString::fromUtf8(simdjson::error_message(error)));
    }
    if (!readRoot(root))
        return false;
    // At the end of the document there is no current location.
    if (!document.current_location().error())
        return fail(failure, QStringLiteral("unexpected content after the value"));
    return true;
}

}  // namespace lexicorn::jsonread

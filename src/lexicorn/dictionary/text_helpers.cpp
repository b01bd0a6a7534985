#include "lexicorn/dictionary/text_helpers.h"

namespace lexicorn {

namespace {

template <typename Drop>
QString removing(const QString& text, Drop drop)
{
    QString result;
    result.reserve(text.size());
    for (QChar c : text) {
        if (!drop(c))
            result.append(c);
    }
    return result;
}

}  // namespace

QString deletingHyphen(const QString& text)
{
    return removing(text, [](QChar c) { return c == u'\u2010' || c == u'-'; });
}

QString deletingSpaceAndBr(const QString& text)
{
    return removing(text, [](QChar c) { return c == u' ' || c == u'\n'; });
}

}  // namespace lexicorn

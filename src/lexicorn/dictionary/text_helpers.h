#pragma once

#include <QString>

namespace lexicorn {

// Removes every U+2010 HYPHEN and every ASCII hyphen-minus.
QString deletingHyphen(const QString& text);

// Removes every blank " " and every line feed.
QString deletingSpaceAndBr(const QString& text);

}  // namespace lexicorn

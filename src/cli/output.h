#pragma once

#include <QString>

#include <cstdio>

namespace lexicorn::cli {

// Writes text to standard output as UTF-8.
inline void print(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

}  // namespace lexicorn::cli

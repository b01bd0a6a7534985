#include "foundation/log.h"

#include <cstdio>
#include <mutex>

namespace lexicorn {

void logLine(const QString& line)
{
    static std::mutex mutex;
    const QByteArray bytes = line.toUtf8() + '\n';
    std::lock_guard lock(mutex);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

}  // namespace lexicorn

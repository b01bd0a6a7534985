#include "foundation/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace lexicorn {

void fatalError(const QString& message)
{
    const QByteArray bytes = "lexicorn: fatal error: " + message.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
    // _Exit: no static destructors while a background queue may still be running.
    std::_Exit(70);
}

}  // namespace lexicorn

#include "cli/commands.h"

namespace lexicorn::cli {

int runRows(Arguments&)
{
    throw CommandError(QStringLiteral("rows is not available yet"));
}

}  // namespace lexicorn::cli

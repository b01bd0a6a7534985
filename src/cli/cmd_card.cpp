#include "cli/commands.h"

namespace lexicorn::cli {

int runCard(Arguments&)
{
    throw CommandError(QStringLiteral("card is not available yet"));
}

}  // namespace lexicorn::cli

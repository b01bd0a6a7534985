#pragma once

#include "cli/arguments.h"

namespace lexicorn::cli {

int runLookup(Arguments& arguments);
int runLegacy(Arguments& arguments);
int runConvert(Arguments& arguments);
int runDemo(Arguments& arguments);

}  // namespace lexicorn::cli

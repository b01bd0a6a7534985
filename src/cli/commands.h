#pragma once

#include "cli/arguments.h"

namespace lexicorn::cli {

int runLookup(Arguments& arguments);
int runLegacy(Arguments& arguments);
int runConvert(Arguments& arguments);
int runImport(Arguments& arguments);
int runDemo(Arguments& arguments);
int runAnki(Arguments& arguments);
int runDefaults(Arguments& arguments);
int runTranslate(Arguments& arguments);
int runSay(Arguments& arguments);
int runRows(Arguments& arguments);
int runCard(Arguments& arguments);
int runSentences(Arguments& arguments);
int runNotebook(Arguments& arguments);
int runSync(Arguments& arguments);

}  // namespace lexicorn::cli

#include "lexicorn/settings/debug_flag.h"

namespace lexicorn {

unsigned char IS_DEBUG = 0;

}  // namespace lexicorn

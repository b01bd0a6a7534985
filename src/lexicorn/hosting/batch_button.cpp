#include "lexicorn/hosting/batch_button.h"

namespace lexicorn {

void placeBatchButton(runtime::Object& /*board*/)
{
}

}  // namespace lexicorn

#pragma once

namespace lexicorn {

// The process-wide debugging flag: zero as built, and nothing in the plug-in
// writes it. It gates debugging behaviour of the start-up and the popup.
inline unsigned char IS_DEBUG = 0;

}  // namespace lexicorn

#pragma once

namespace lexicorn {

// Points the sentence cutter at the host's page text, and adds the running
// text of a multi-line selection to the host's book views.
void installReaderMethods();

}  // namespace lexicorn

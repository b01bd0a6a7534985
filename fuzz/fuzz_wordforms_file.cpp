// Feeds arbitrary bytes to the word-form map decoder.

#include "lexicorn/dictionary/word_forms.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lexicorn::jsonread::Failure failure;
    const auto forms = lexicorn::WordForms::decode(lexicorn::JsonBuffer::copyOf({reinterpret_cast<const char*>(data), size}), failure);
    if (!forms && failure.what.isEmpty())
        std::abort();
    return 0;
}

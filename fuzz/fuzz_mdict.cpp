// Any bytes as an MDict dictionary (.mdx) and as its resource file (.mdd):
// header, key-info, key and record blocks either read or an ImportError
// naming the place.

#include "lexicorn/dictionary/import/mdict_reader.h"

#include <cstddef>
#include <cstdint>

namespace {

struct DiscardingSink : lexicorn::dictimport::ImportSink {
    void entry(lexicorn::dictimport::SourceEntry) override {}
    void wordForm(const QString&, const QString&) override {}
    void resource(const QString&, const QByteArray&) override {}
    void progress(qint64, qint64) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace lexicorn::dictimport;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    DiscardingSink sink;
    try {
        readMdictBytes(bytes, {}, QStringLiteral("fuzz.mdx"), sink);
    } catch (const ImportError&) {
    }
    try {
        readMdictBytes({}, bytes, QStringLiteral("fuzz.mdd"), sink);
    } catch (const ImportError&) {
    }
    return 0;
}

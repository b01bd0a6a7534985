#pragma once

#include "lexicorn/dictionary/mapped_file.h"

#include <QString>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

namespace lexicorn {

// Bytes of a JSON document followed by the zeroed padding the parser may read
// past the end.
class JsonBuffer {
public:
    JsonBuffer() = default;

    static JsonBuffer copyOf(std::string_view text);

    // Reads a whole file. Large files are read into huge pages, which makes
    // touching a few hundred megabytes markedly cheaper. Fills error and
    // returns nothing when the file cannot be read. Fills stamp, when given,
    // with the stamp of the file that was read.
    static std::optional<JsonBuffer> readFile(const QString& path, QString& error, FileStamp* stamp = nullptr);

    const char* data() const { return bytes_.get(); }
    size_t size() const { return size_; }
    // Bytes readable from data(): the size and the padding.
    size_t capacity() const;
    std::string_view view() const { return {data(), size_}; }

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };
    static JsonBuffer allocate(size_t size);

    std::unique_ptr<char, Free> bytes_;
    size_t size_ = 0;
};

}  // namespace lexicorn

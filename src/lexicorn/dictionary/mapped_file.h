#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

struct stat;

namespace lexicorn {

// When a file was last changed and how long it was then, as the file system
// reports them. Two equal stamps mean the file was not rewritten in between.
struct FileStamp {
    uint64_t size = 0;
    int64_t modifiedNs = 0;  // nanoseconds since the epoch
    bool operator==(const FileStamp&) const = default;
};

// A whole regular file mapped read-only into memory. Pages are read from the
// page cache only when touched, so mapping a file of hundreds of megabytes
// costs nothing until its bytes are used.
class MappedFile {
public:
    // Fills error and returns null when the file cannot be opened or mapped.
    static std::shared_ptr<const MappedFile> open(const QString& path, QString& error);

    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::string_view bytes() const { return {data_, size_}; }
    const FileStamp& stamp() const { return stamp_; }

private:
    MappedFile() = default;

    const char* data_ = nullptr;
    size_t size_ = 0;
    FileStamp stamp_;
};

// The stamp of the file at path now; nothing when it cannot be read.
std::optional<FileStamp> fileStampOf(const QString& path);
// The stamp in a status the system filled in.
FileStamp fileStampOf(const struct stat& status);

}  // namespace lexicorn

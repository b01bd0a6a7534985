#include "lexicorn/dictionary/json_buffer.h"

#include <simdjson.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexicorn {

namespace {

constexpr size_t hugePage = size_t(2) << 20;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// Closes a file descriptor on every way out.
struct FileDescriptor {
    int fd;
    ~FileDescriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

}  // namespace

size_t JsonBuffer::capacity() const
{
    return size_ + simdjson::SIMDJSON_PADDING;
}

JsonBuffer JsonBuffer::allocate(size_t size)
{
    JsonBuffer buffer;
    buffer.size_ = size;
    const size_t wanted = size + simdjson::SIMDJSON_PADDING;
    char* bytes = nullptr;
    if (wanted >= 2 * hugePage) {
        const size_t rounded = (wanted + hugePage - 1) / hugePage * hugePage;
        bytes = static_cast<char*>(std::aligned_alloc(hugePage, rounded));
        if (bytes)
            ::madvise(bytes, rounded, MADV_HUGEPAGE);  // a hint; without it the read still works
    } else {
        bytes = static_cast<char*>(std::malloc(wanted));
    }
    if (!bytes)
        throw std::bad_alloc();
    std::memset(bytes + size, 0, simdjson::SIMDJSON_PADDING);
    buffer.bytes_.reset(bytes);
    return buffer;
}

JsonBuffer JsonBuffer::copyOf(std::string_view text)
{
    JsonBuffer buffer = allocate(text.size());
    if (!text.empty())
        std::memcpy(buffer.bytes_.get(), text.data(), text.size());
    return buffer;
}

std::optional<JsonBuffer> JsonBuffer::readFile(const QString& path, QString& error, FileStamp* stamp)
{
    const FileDescriptor file{::open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC)};
    struct stat status {};
    if (file.fd < 0 || ::fstat(file.fd, &status) != 0) {
        error = systemError();
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        error = QStringLiteral("not a regular file");
        return std::nullopt;
    }
    if (stamp)
        *stamp = fileStampOf(status);
    JsonBuffer buffer = allocate(size_t(status.st_size));
    size_t done = 0;
    while (done < buffer.size_) {
        const ssize_t got = ::read(file.fd, buffer.bytes_.get() + done, buffer.size_ - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            error = got < 0 ? systemError() : QStringLiteral("the file became shorter while it was read");
            return std::nullopt;
        }
        done += size_t(got);
    }
    return buffer;
}

}  // namespace lexicorn

#include "lexicorn/dictionary/mapped_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexicorn {

FileStamp fileStampOf(const struct stat& status)
{
    return {uint64_t(status.st_size), int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec};
}

std::shared_ptr<const MappedFile> MappedFile::open(const QString& path, QString& error)
{
    const int fd = ::open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = QString::fromLocal8Bit(std::strerror(errno));
        return nullptr;
    }
    struct stat status {};
    std::shared_ptr<MappedFile> file(new MappedFile);
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        error = QStringLiteral("not a regular file");
    } else {
        file->stamp_ = fileStampOf(status);
        file->size_ = size_t(status.st_size);
        // An empty file cannot be mapped; it is an empty view.
        void* mapped = file->size_ ? ::mmap(nullptr, file->size_, PROT_READ, MAP_SHARED, fd, 0) : nullptr;
        if (mapped == MAP_FAILED) {
            error = QString::fromLocal8Bit(std::strerror(errno));
            file->size_ = 0;
        } else {
            file->data_ = static_cast<const char*>(mapped);
        }
    }
    ::close(fd);  // the mapping stays valid without the descriptor
    return error.isEmpty() ? file : nullptr;
}

MappedFile::~MappedFile()
{
    if (data_)
        ::munmap(const_cast<char*>(data_), size_);
}

std::optional<FileStamp> fileStampOf(const QString& path)
{
    struct stat status {};
    if (::stat(path.toLocal8Bit().constData(), &status) != 0)
        return std::nullopt;
    return fileStampOf(status);
}

}  // namespace lexicorn

#include <hexmire/hosting/FileDescriptor.h>
#include <hexmire/hosting/SystemPath.h>
#include <hexmire/hosting/XmlFile.h>

#include <fcntl.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace hexmire {

namespace {

constexpr std::size_t kChunk = std::size_t{64} * 1024;

XmlFile Failure(std::int32_t code) { return {.ErrorCode = code, .Bytes = {}}; }

XmlFile SystemFailure(int error) {
    switch (error) {
        case ENOENT:
            return Failure(XML_IO_ENOENT);
        case ENOTDIR:
            return Failure(XML_IO_ENOTDIR);
        case EACCES:
            return Failure(XML_IO_EACCES);
        case EISDIR:
            return Failure(XML_IO_EISDIR);
        case ENAMETOOLONG:
            return Failure(XML_IO_ENAMETOOLONG);
        default:
            return Failure(XML_IO_UNKNOWN);
    }
}

}  // namespace

XmlFile ReadXmlFile(const std::string& path, std::size_t limit) {
    const auto system = SystemPath(path);
    if (!system) return Failure(XML_IO_EINVAL);
    const FileDescriptor file(
        ::open(system->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) return SystemFailure(errno);
    if (S_ISDIR(status.st_mode)) return Failure(XML_IO_EISDIR);
    if (!S_ISREG(status.st_mode)) return Failure(XML_IO_EINVAL);

    XmlFile read;
    for (std::size_t size = 0;;) {
        // One byte more than the limit, so that a longer file is noticed and not cut.
        read.Bytes.resize(std::min(size + kChunk, limit + 1));
        const ssize_t count =
            ::read(file.Get(), read.Bytes.data() + size, read.Bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return SystemFailure(errno);
        size += static_cast<std::size_t>(count);
        if (size > limit) return Failure(XML_IO_EFBIG);
        if (count == 0) {
            read.Bytes.resize(size);
            return read;
        }
    }
}

}  // namespace hexmire

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ext/stdio_filebuf.h>

#include "platform/output_stream.h"

namespace vorn {

std::string openOutputStream(std::fstream& stream, const std::string& name, Opening opening) {
    const bool append = opening == Opening::append;
    // Without O_NONBLOCK a named pipe would hold the run up until somebody reads it. The file is
    // cut only when it is known to be a regular one.
    const int file = ::open(
        name.c_str(),
        O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | (append ? O_APPEND : 0), 0666);
    if (file < 0) {
        return errno == ELOOP ? "a link is not followed" : std::strerror(errno);
    }
    struct stat status {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(file);
        return "not a regular file";
    }
    if (!append && ::ftruncate(file, 0) != 0) {
        std::string reason = std::strerror(errno);
        ::close(file);
        return reason;
    }
    const std::ios::openmode mode =
        append ? std::ios::in | std::ios::out | std::ios::app : std::ios::in | std::ios::out;
    __gnu_cxx::stdio_filebuf<char> buffer(file, mode);
    static_cast<std::filebuf&>(*stream.rdbuf()) = std::move(static_cast<std::filebuf&>(buffer));
    stream.clear();
    return {};
}

}  // namespace vorn

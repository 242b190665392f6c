#include <windows.h>

#include <cerrno>
#include <cstring>

#include "platform/output_stream.h"

namespace vorn {

std::string openOutputStream(std::fstream& stream, const std::string& name, Opening opening) {
    const DWORD attributes = GetFileAttributesA(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return "a link is not followed";
    }
    stream.open(name, opening == Opening::append ? std::ios::out | std::ios::app
                                                 : std::ios::in | std::ios::out | std::ios::trunc);
    return stream ? std::string() : std::strerror(errno);
}

}  // namespace vorn

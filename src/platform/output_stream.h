// Opening the files that a run writes.
#pragma once

#include <fstream>
#include <string>

namespace vorn {

enum class Opening { replace, append };

/// Opens a file for reading and writing (for writing at its end with `append`), a new one with the
/// permissions that the user's mask leaves. Only a regular file is taken, and a link is not
/// followed: the current directory may be one that others write to. Returns why the file cannot be
/// opened, empty when it is open; `stream` must not be open and is closed after a failure.
std::string openOutputStream(std::fstream& stream, const std::string& name, Opening opening);

}  // namespace vorn

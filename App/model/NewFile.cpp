#include "NewFile.hpp"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

namespace tessel::new_file {

namespace fs = std::filesystem;

fs::path beside(const fs::path& target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string pattern = (folder / ("." + target.filename().string() + "-XXXXXX")).string();
    const int descriptor = ::mkstemp(pattern.data());
    if (descriptor < 0) throw fs::filesystem_error("mkstemp", folder, std::error_code(errno, std::generic_category()));
    ::close(descriptor);
    return pattern;
}

bool place(const fs::path& finished, const fs::path& target) {
    // A link either appears whole or not at all, and fails rather than replace what is there.
    const bool placed = ::link(finished.c_str(), target.c_str()) == 0;
    const int error = errno;
    std::error_code ignored;
    fs::remove(finished, ignored);
    if (!placed && error != EEXIST) throw fs::filesystem_error("link", target, std::error_code(error, std::generic_category()));
    return placed;
}

}  // namespace tessel::new_file

#include "NewFile.hpp"

#include <cerrno>
#include <cstdlib>
#include <fstream>
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

bool write(const fs::path& target, std::string_view bytes) {
    std::error_code ignored;
    try {
        const fs::path building = beside(target);
        std::ofstream out(building, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            fs::remove(building, ignored);
            return false;
        }
        return place(building, target);
    } catch (const fs::filesystem_error&) {
        return false;
    }
}

}  // namespace tessel::new_file

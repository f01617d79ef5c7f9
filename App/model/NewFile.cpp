#include "NewFile.hpp"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
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

namespace {

// The bytes in a new file beside the target (private to the user until placed); nothing when they could
// not be written, and nothing left behind.
std::optional<fs::path> built(const fs::path& target, std::string_view bytes) {
    const fs::path building = beside(target);
    std::ofstream out(building, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    std::error_code ignored;
    if (!out) {
        fs::remove(building, ignored);
        return std::nullopt;
    }
    return building;
}

}  // namespace

bool write(const fs::path& target, std::string_view bytes) {
    try {
        const auto building = built(target, bytes);
        return building && place(*building, target);
    } catch (const fs::filesystem_error&) {
        return false;
    }
}

bool replace(const fs::path& target, std::string_view bytes) {
    std::optional<fs::path> building;
    try {
        building = built(target, bytes);
        if (!building) return false;
        // A document the user hands on, readable as their other files are.
        fs::permissions(*building, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_read);
        fs::rename(*building, target);
        return true;
    } catch (const fs::filesystem_error&) {
        std::error_code ignored;
        if (building) fs::remove(*building, ignored);
        return false;
    }
}

}  // namespace tessel::new_file

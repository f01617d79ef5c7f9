#pragma once

#include <filesystem>
#include <string_view>

// Files the program writes for the user (a store, a support package, a ruleset file) are built beside
// their final name and put in place whole, and never over a file that is already there.
namespace tessel::new_file {

// A new, empty file in the target's folder, named after the target, for building it.
std::filesystem::path beside(const std::filesystem::path& target);

// Links the finished file to the target name unless something is there already, then removes the
// finished file's own name. True when placed, false when the target exists; throws a filesystem error
// for any other failure.
bool place(const std::filesystem::path& finished, const std::filesystem::path& target);

// Writes the bytes as a new file at the target, whole or not at all. False when the target exists or
// the file could not be written; nothing is left behind then.
bool write(const std::filesystem::path& target, std::string_view bytes);

// Writes the bytes at the target whole or not at all, replacing what is there (a file the program
// made and makes again, such as an exported DTS). False when it could not be written.
bool replace(const std::filesystem::path& target, std::string_view bytes);

}  // namespace tessel::new_file

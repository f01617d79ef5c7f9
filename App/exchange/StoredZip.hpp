#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// ZIP archives of stored (uncompressed) entries, as the diagnostic package uses them: UTF-8 names,
// zero times and dates, one local header and one central directory header per entry, 32-bit sizes.
// Small and fixed enough that no compression library is wanted.
namespace tessel::stored_zip {

// An archive that cannot be written ("An entry is too large.") or that is not a well-formed stored
// ZIP of this layout; the text says what is wrong.
class FormatError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Writes entries one after another to a file; finish() writes the central directory. Sizes, offsets,
// names and the entry count are checked against the format's limits before anything is written. The
// file is not flushed to disk: an archive cut short by a crash fails its own checks when read, and the
// files it packs are still where they were.
class Writer {
public:
    explicit Writer(const std::filesystem::path& file);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer();

    void add(std::string_view name, std::string_view data);
    // Adds a file's bytes as they are on disk.
    void addFile(std::string_view name, const std::filesystem::path& source);
    void finish();

private:
    struct Central {
        std::string name;
        std::uint32_t crc;
        std::uint32_t size;
        std::uint32_t offset;
    };
    void write(std::string_view bytes);
    void writeHeader(std::string_view name, std::size_t dataSize, std::uint32_t crc);

    int descriptor_ = -1;
    std::uint64_t offset_ = 0;
    std::vector<Central> entries_;
};

struct Entry {
    std::string name;
    std::string_view data;  // a view into the archive's bytes
};

// Reads every entry of an archive held in memory, checking each header against the central directory,
// every size and offset against the bytes there are, and every CRC. Throws FormatError.
std::vector<Entry> read(std::string_view archive);

}  // namespace tessel::stored_zip

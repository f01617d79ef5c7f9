#include "StoredZip.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <set>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "App/exchange/Crc32.hpp"

namespace tessel::stored_zip {
namespace {

constexpr std::uint32_t localSignature = 0x04034b50;
constexpr std::uint32_t centralSignature = 0x02014b50;
constexpr std::uint32_t endSignature = 0x06054b50;
constexpr std::uint16_t version = 20;
constexpr std::uint16_t utf8Names = 0x0800;
constexpr std::size_t localHeaderSize = 30;
constexpr std::size_t centralHeaderSize = 46;
constexpr std::size_t endRecordSize = 22;
constexpr std::uint64_t limit32 = std::numeric_limits<std::uint32_t>::max();

void put16(std::string& out, std::uint16_t value) {
    out.push_back(static_cast<char>(value & 0xFF));
    out.push_back(static_cast<char>(value >> 8));
}

void put32(std::string& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

// A cursor over the archive that refuses to read past its end.
class Bytes {
public:
    explicit Bytes(std::string_view all) : all_(all) {}
    std::string_view at(std::uint64_t offset, std::uint64_t size, const char* what) const {
        if (offset > all_.size() || size > all_.size() - offset) throw FormatError(std::string(what) + " runs past the end of the file.");
        return all_.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
    }
    static std::uint16_t u16(std::string_view bytes, std::size_t at) {
        return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8);
    }
    static std::uint32_t u32(std::string_view bytes, std::size_t at) {
        return static_cast<std::uint32_t>(u16(bytes, at)) | static_cast<std::uint32_t>(u16(bytes, at + 2)) << 16;
    }
    std::size_t size() const { return all_.size(); }

private:
    std::string_view all_;
};

std::size_t findEndRecord(const Bytes& bytes, std::string_view archive) {
    if (archive.size() < endRecordSize) throw FormatError("The file is too short to be a ZIP archive.");
    const std::size_t earliest = archive.size() > endRecordSize + 0xFFFF ? archive.size() - endRecordSize - 0xFFFF : 0;
    for (std::size_t at = archive.size() - endRecordSize + 1; at-- > earliest;) {
        if (Bytes::u32(archive, at) == endSignature &&
            at + endRecordSize + Bytes::u16(archive, at + 20) == bytes.size()) {
            return at;
        }
    }
    throw FormatError("The end of the ZIP central directory is missing.");
}

// A name that unpacks inside the folder it is unpacked into, and nowhere else.
void checkName(const std::string& name) {
    if (name.empty()) throw FormatError("An entry has no name.");
    if (name.find('\0') != std::string::npos || name.find('\\') != std::string::npos) {
        throw FormatError("The entry name \u201C" + name + "\u201D holds a character a file name cannot.");
    }
    if (name.front() == '/') throw FormatError("The entry name \u201C" + name + "\u201D is an absolute path.");
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t slash = std::min(name.find('/', start), name.size());
        const std::string part = name.substr(start, slash - start);
        if (part == ".." || part == "." || (part.empty() && slash != name.size())) {
            throw FormatError("The entry name \u201C" + name + "\u201D leads outside the package.");
        }
        start = slash + 1;
    }
}

}  // namespace

Writer::Writer(const std::filesystem::path& file) {
    // Truncated only when it holds something: truncating makes the file system flush the file on close.
    descriptor_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    struct stat status {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0 || (status.st_size > 0 && ::ftruncate(descriptor_, 0) != 0)) {
        const std::error_code error(errno, std::generic_category());
        if (descriptor_ >= 0) ::close(descriptor_);
        throw std::filesystem::filesystem_error("open", file, error);
    }
}

Writer::~Writer() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void Writer::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) throw std::filesystem::filesystem_error("write", std::error_code(errno, std::generic_category()));
        bytes.remove_prefix(static_cast<std::size_t>(written));
        offset_ += static_cast<std::uint64_t>(written);
    }
}

void Writer::add(std::string_view name, std::string_view data) {
    writeHeader(name, data.size(), crc32::of(data));
    write(data);
}

void Writer::writeHeader(std::string_view name, std::size_t dataSize, std::uint32_t crc) {
    if (dataSize > limit32 || offset_ > limit32) throw FormatError("An entry is too large.");
    if (name.size() > 0xFFFF) throw FormatError("An entry name is too long.");
    if (entries_.size() >= 0xFFFF) throw FormatError("There are too many entries.");
    const auto size = static_cast<std::uint32_t>(dataSize);
    std::string header;
    put32(header, localSignature);
    put16(header, version);
    put16(header, utf8Names);
    put16(header, 0);  // stored
    put16(header, 0);  // time: the package carries its instant in its manifest
    put16(header, 0);  // date
    put32(header, crc);
    put32(header, size);
    put32(header, size);
    put16(header, static_cast<std::uint16_t>(name.size()));
    put16(header, 0);
    header += name;
    entries_.push_back({std::string(name), crc, size, static_cast<std::uint32_t>(offset_)});
    write(header);
}

namespace {

// A source file open for reading and mapped, released whatever happens.
struct MappedFile {
    int descriptor = -1;
    void* bytes = MAP_FAILED;
    std::size_t size = 0;

    explicit MappedFile(const std::filesystem::path& source) {
        const auto failed = [&](const char* what) {
            return std::filesystem::filesystem_error(what, source, std::error_code(errno, std::generic_category()));
        };
        descriptor = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) throw failed("open");
        struct stat status {};
        if (::fstat(descriptor, &status) != 0) throw failed("stat");
        size = static_cast<std::size_t>(status.st_size);
        if (size == 0) return;
        bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (bytes == MAP_FAILED) throw failed("mmap");
        ::madvise(bytes, size, MADV_SEQUENTIAL);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() {
        if (bytes != MAP_FAILED) ::munmap(bytes, size);
        if (descriptor >= 0) ::close(descriptor);
    }
    std::string_view data() const { return size ? std::string_view(static_cast<const char*>(bytes), size) : std::string_view(); }
};

}  // namespace

void Writer::addFile(std::string_view name, const std::filesystem::path& source) {
    const MappedFile file(source);
    const std::string_view data = file.data();
    writeHeader(name, data.size(), crc32::update(0, reinterpret_cast<const unsigned char*>(data.data()), data.size()));
    // The kernel copies the bytes file to file, as a plain copy does; where it cannot, they are written.
    std::size_t copied = 0;
    while (copied < data.size()) {
        const ssize_t step = ::copy_file_range(file.descriptor, nullptr, descriptor_, nullptr, data.size() - copied, 0);
        if (step <= 0) break;
        copied += static_cast<std::size_t>(step);
        offset_ += static_cast<std::uint64_t>(step);
    }
    write(data.substr(copied));
}

void Writer::finish() {
    if (offset_ > limit32) throw FormatError("An entry is too large.");
    const auto directoryOffset = static_cast<std::uint32_t>(offset_);
    std::string directory;
    for (const auto& entry : entries_) {
        put32(directory, centralSignature);
        put16(directory, version);  // made by
        put16(directory, version);  // needed
        put16(directory, utf8Names);
        put16(directory, 0);
        put16(directory, 0);
        put16(directory, 0);
        put32(directory, entry.crc);
        put32(directory, entry.size);
        put32(directory, entry.size);
        put16(directory, static_cast<std::uint16_t>(entry.name.size()));
        put16(directory, 0);  // extra
        put16(directory, 0);  // comment
        put16(directory, 0);  // disk
        put16(directory, 0);  // internal attributes
        put32(directory, 0);  // external attributes
        put32(directory, entry.offset);
        directory += entry.name;
    }
    if (directory.size() > limit32 || offset_ + directory.size() > limit32) throw FormatError("An entry is too large.");
    std::string end;
    put32(end, endSignature);
    put16(end, 0);
    put16(end, 0);
    put16(end, static_cast<std::uint16_t>(entries_.size()));
    put16(end, static_cast<std::uint16_t>(entries_.size()));
    put32(end, static_cast<std::uint32_t>(directory.size()));
    put32(end, directoryOffset);
    put16(end, 0);
    write(directory + end);
}

std::vector<Entry> read(std::string_view archive) {
    const Bytes bytes(archive);
    const std::size_t endAt = findEndRecord(bytes, archive);
    const std::string_view end = bytes.at(endAt, endRecordSize, "The end record");
    if (Bytes::u16(end, 4) != 0 || Bytes::u16(end, 6) != 0) throw FormatError("The archive spans several disks.");
    const std::uint16_t count = Bytes::u16(end, 10);
    if (Bytes::u16(end, 8) != count) throw FormatError("The entry counts of the end record disagree.");
    const std::uint32_t directorySize = Bytes::u32(end, 12);
    const std::uint32_t directoryOffset = Bytes::u32(end, 16);
    if (static_cast<std::uint64_t>(directoryOffset) + directorySize != endAt) {
        throw FormatError("The central directory is not where the end record says.");
    }

    std::vector<Entry> entries;
    std::set<std::string> names;
    std::uint64_t at = directoryOffset;
    std::uint64_t expectedLocal = 0;  // entries follow one another from the start of the file
    for (std::uint16_t i = 0; i < count; ++i) {
        const std::string_view central = bytes.at(at, centralHeaderSize, "A central directory header");
        if (Bytes::u32(central, 0) != centralSignature) throw FormatError("A central directory header is damaged.");
        const std::uint16_t flags = Bytes::u16(central, 8);
        if ((flags & ~utf8Names) != 0) throw FormatError("An entry uses a ZIP feature this package never uses.");
        if (Bytes::u16(central, 10) != 0) throw FormatError("An entry is compressed; package entries are stored.");
        const std::uint32_t crc = Bytes::u32(central, 16);
        const std::uint32_t size = Bytes::u32(central, 20);
        if (Bytes::u32(central, 24) != size) throw FormatError("The sizes of an entry disagree.");
        const std::uint16_t nameLength = Bytes::u16(central, 28);
        const std::uint64_t extrasLength = Bytes::u16(central, 30) + static_cast<std::uint64_t>(Bytes::u16(central, 32));
        const std::uint32_t localOffset = Bytes::u32(central, 42);
        std::string name(bytes.at(at + centralHeaderSize, nameLength, "An entry name"));
        checkName(name);
        if (!names.insert(name).second) throw FormatError("The entry \u201C" + name + "\u201D appears twice.");
        at += centralHeaderSize + nameLength + extrasLength;

        if (localOffset != expectedLocal) throw FormatError("The entry \u201C" + name + "\u201D is not where the directory says.");
        const std::string_view local = bytes.at(localOffset, localHeaderSize, "A local header");
        if (Bytes::u32(local, 0) != localSignature) throw FormatError("The local header of \u201C" + name + "\u201D is damaged.");
        if (Bytes::u16(local, 6) != flags || Bytes::u16(local, 8) != 0 || Bytes::u32(local, 14) != crc ||
            Bytes::u32(local, 18) != size || Bytes::u32(local, 22) != size || Bytes::u16(local, 26) != nameLength) {
            throw FormatError("The local header of \u201C" + name + "\u201D disagrees with the central directory.");
        }
        const std::uint64_t localExtra = Bytes::u16(local, 28);
        if (bytes.at(localOffset + localHeaderSize, nameLength, "An entry name") != name) {
            throw FormatError("The local header of \u201C" + name + "\u201D names another entry.");
        }
        const std::uint64_t dataAt = localOffset + localHeaderSize + nameLength + localExtra;
        const std::string_view data = bytes.at(dataAt, size, "The data of an entry");
        if (crc32::of(data) != crc) throw FormatError("The data of \u201C" + name + "\u201D does not match its checksum.");
        expectedLocal = dataAt + size;
        entries.push_back({std::move(name), data});
    }
    if (at != endAt) throw FormatError("The central directory holds more than its entries.");
    if (expectedLocal != directoryOffset) throw FormatError("There are bytes between the entries and the central directory.");
    return entries;
}

}  // namespace tessel::stored_zip

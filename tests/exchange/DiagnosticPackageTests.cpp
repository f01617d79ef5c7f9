#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "../support/TemporaryFolder.hpp"
#include "App/exchange/Crc32.hpp"
#include "App/exchange/DiagnosticPackage.hpp"
#include "App/exchange/StoredZip.hpp"
#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

using testing::TemporaryFolder;
using testing::readFile;
using testing::snapshotFiles;
using testing::writeFile;
namespace package = diagnostic_package;

const auto someTime = std::chrono::sys_days(std::chrono::November / 22 / 2026) + std::chrono::hours(16);

// What a shell command printed, and how it ended.
std::pair<int, std::string> shell(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char buffer[4096];
    while (const std::size_t read = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, read);
    return {pclose(pipe), output};
}

std::size_t inspectionFolders(const fs::path& temporary) {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(temporary)) {
        count += entry.path().filename().string().starts_with("Tessel-Diagnostic-Inspection-");
    }
    return count;
}

class DiagnosticPackage : public ::testing::Test {
protected:
    TemporaryFolder folder;
    TesselStoreEnvironment environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path() / "data");
    fs::path temporary = folder.path() / "tmp";

    void SetUp() override {
        fs::create_directories(temporary);
        setenv("TMPDIR", temporary.c_str(), 1);  // inspection folders land here, where the test can see them
    }
    void TearDown() override { unsetenv("TMPDIR"); }

    void openStoreTwice() {
        for (int i = 0; i < 2; ++i) {
            auto result = openTesselStore(environment);
            auto& store = *std::get<std::unique_ptr<TesselStore>>(result);
            store.perform([&](ModelContext& c) { production_repository::create(c, "Show " + std::to_string(i), {}, someTime); });
        }
    }

    fs::path writePackage() {
        const fs::path file = folder.path() / "support.tesseldiagnostic";
        package::write(environment, {"0.1.0", "Test"}, file, someTime);
        return file;
    }
};

TEST_F(DiagnosticPackage, StandardToolsListAndExtractItsEntriesUnchanged) {
    openStoreTwice();
    const auto storeBefore = snapshotFiles(environment.storeURL.parent_path());
    const fs::path file = writePackage();
    EXPECT_EQ(snapshotFiles(environment.storeURL.parent_path()), storeBefore);  // only read

    const auto [tested, testOutput] = shell("unzip -t '" + file.string() + "'");
    EXPECT_EQ(tested, 0) << testOutput;
    const auto [listed, listing] = shell("zipinfo -1 '" + file.string() + "'");
    EXPECT_EQ(listed, 0);
    EXPECT_EQ(listing, "manifest.json\ncanonical-store/Tessel.store\npre-open-backup/Tessel.store\n");

    const fs::path extracted = folder.path() / "extracted.store";
    const auto [status, output] = shell("python3 -c \"import zipfile,sys; z=zipfile.ZipFile(sys.argv[1]); "
                                        "open(sys.argv[2],'wb').write(z.read('canonical-store/Tessel.store'))\" '" +
                                        file.string() + "' '" + extracted.string() + "'");
    ASSERT_EQ(status, 0) << output;
    EXPECT_EQ(readFile(extracted), readFile(environment.storeURL));

    const auto inspection = package::inspect(readFile(file));
    EXPECT_TRUE(inspection.folder.filename().string().starts_with("Tessel-Diagnostic-Inspection-"));
    EXPECT_EQ(readFile(inspection.folder / "canonical-store" / "Tessel.store"), readFile(environment.storeURL));
    EXPECT_EQ(inspection.manifest["backupDirectoryName"], listStoreBackups(environment).back().directoryURL.filename().string());
    EXPECT_EQ(inspection.manifest["storeOpenError"], "");
    EXPECT_EQ(inspection.manifest["createdAt"], "2026-11-22T16:00:00Z");
    fs::remove_all(inspection.folder);
}

TEST_F(DiagnosticPackage, AStoreWithoutBackupsHasNoBackupEntriesAndNoBackupName) {
    openTesselStore(environment);  // created, never backed up
    const auto manifest = package::inspect(readFile(writePackage())).manifest;
    EXPECT_FALSE(manifest.contains("backupDirectoryName"));
    EXPECT_EQ(manifest["backupFiles"], nlohmann::json::array());
}

// The package's main use: the store cannot be opened, and support needs it as it is.
TEST_F(DiagnosticPackage, PackagesAStoreThatCannotBeOpenedAndSaysWhy) {
    writeFile(environment.storeURL, "damaged beyond reading");
    const auto inspection = package::inspect(readFile(writePackage()));
    EXPECT_EQ(inspection.manifest["storeOpenError"], "Tessel could not open or migrate the data store. No automatic reset was attempted.");
    EXPECT_TRUE(inspection.manifest["storedMetadataSummary"].get<std::string>().starts_with("Store metadata could not be read:"));
    EXPECT_EQ(readFile(inspection.folder / "canonical-store" / "Tessel.store"), "damaged beyond reading");
}

TEST_F(DiagnosticPackage, NoStoreFilesIsRefusedAndWritesNothing) {
    try {
        writePackage();
        FAIL() << "a package was written";
    } catch (const TesselDiagnosticPackageError& error) {
        EXPECT_EQ(error.description(), "No Tessel store files were available to package.");
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);  // only tmp
}

TEST(StoredZip, AnEmptyFileIsAnEntryWithCRCZeroAndSizesZero) {
    TemporaryFolder folder;
    const fs::path file = folder.path() / "one.zip";
    {
        stored_zip::Writer zip(file);
        zip.add("canonical-store/Tessel.store-wal", "");
        zip.add("canonical-store/Sch\u00E9ma.txt", "caf\u00E9");
        zip.finish();
    }
    const std::string bytes = readFile(file);
    EXPECT_EQ(bytes.substr(14, 12), std::string(12, '\0'));  // CRC, compressed and uncompressed size of the empty entry
    const auto entries = stored_zip::read(bytes);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].data, "");
    EXPECT_EQ(entries[1].name, "canonical-store/Sch\u00E9ma.txt");
    const auto [status, names] = shell("python3 -c \"import zipfile,sys; print(zipfile.ZipFile(sys.argv[1]).namelist()[1])\" '" +
                                       file.string() + "'");
    EXPECT_EQ(names, "canonical-store/Sch\u00E9ma.txt\n");  // read as UTF-8 because the entry says so
    EXPECT_EQ(crc32::of("123456789"), 0xCBF43926u);      // the standard check value
}

// A package damaged or forged in any of these ways is refused whole, and no folder is left behind.
struct Damage {
    const char* name;
    std::function<std::string(std::string)> apply;
    const char* detailFragment;
};

class DamagedPackage : public DiagnosticPackage, public ::testing::WithParamInterface<Damage> {};

std::string forged(const std::vector<std::pair<std::string, std::string>>& entries) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "forged.zip";
    {
        stored_zip::Writer zip(file);
        for (const auto& [name, data] : entries) zip.add(name, data);
        zip.finish();
    }
    return readFile(file);
}

const std::string minimalManifest = R"({"formatVersion":1})";

TEST_P(DamagedPackage, IsRefusedAndLeavesNoFolder) {
    openStoreTwice();
    const std::string good = readFile(writePackage());
    const std::string damaged = GetParam().apply(good);
    try {
        package::inspect(std::string_view(damaged));
        FAIL() << "the package was accepted";
    } catch (const TesselDiagnosticPackageError& error) {
        EXPECT_EQ(error.description(), "The diagnostic package is invalid.");
        EXPECT_NE(error.detail().find(GetParam().detailFragment), std::string::npos) << error.detail();
    }
    EXPECT_EQ(inspectionFolders(temporary), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Inspection, DamagedPackage,
    ::testing::Values(
        Damage{"empty", [](std::string) { return std::string(); }, "too short"},
        Damage{"truncated", [](std::string bytes) { return bytes.substr(0, bytes.size() / 2); }, "missing"},
        Damage{"truncatedDirectory", [](std::string bytes) { return bytes.substr(0, bytes.size() - 30); }, "missing"},
        Damage{"flippedStoreByte",
               [](std::string bytes) {
                   bytes.at(bytes.find("SQLite format 3") + 200) ^= 0x01;
                   return bytes;
               },
               "does not match its checksum"},
        Damage{"sizeDisagrees",
               [](std::string bytes) {
                   bytes.at(22) = static_cast<char>(bytes.at(22) + 1);  // the manifest's uncompressed size in its local header
                   return bytes;
               },
               "disagrees"},
        Damage{"parentFolderName", [](std::string) { return forged({{"manifest.json", minimalManifest}, {"../escaped", "x"}}); },
               "leads outside"},
        Damage{"nestedParentName",
               [](std::string) { return forged({{"manifest.json", minimalManifest}, {"canonical-store/../../escaped", "x"}}); },
               "leads outside"},
        Damage{"absoluteName", [](std::string) { return forged({{"manifest.json", minimalManifest}, {"/tmp/escaped", "x"}}); },
               "absolute"},
        Damage{"strayEntry", [](std::string) { return forged({{"manifest.json", minimalManifest}, {"notes.txt", "x"}}); },
               "does not belong"},
        Damage{"noManifestFirst", [](std::string) { return forged({{"canonical-store/Tessel.store", "x"}}); },
               "manifest"},
        Damage{"manifestNotJSON", [](std::string) { return forged({{"manifest.json", "{"}}); }, "not a JSON object"},
        Damage{"manifestIncomplete", [](std::string) { return forged({{"manifest.json", minimalManifest}}); }, "has no"},
        Damage{"notAZip", [](std::string) { return std::string(4096, 'x'); }, "missing"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel

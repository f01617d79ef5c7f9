#pragma once

#include <string>

#include "App/model/ModelContext.hpp"
#include "PayrollDomain/DomainError.hpp"

// A production moved between installations as one JSON document (".tesselarchive"): every record it
// owns, with every field, read from the store through the archive's one description of its records.
namespace tessel {

enum class ProductionArchiveExportErrorCase { incompleteRelationships, positionTermsOwnership, exportFailed };

// Why a production cannot be exported; nothing is written then. The window shows it under
// "Couldn’t Export Production".
class ProductionArchiveExportError : public CaseError<ProductionArchiveExportErrorCase> {
public:
    using Case = ProductionArchiveExportErrorCase;
    explicit ProductionArchiveExportError(Case errorCase);
};

enum class ProductionArchiveErrorCase { unsupportedVersion, invalidArchive, importFailed };

// Why an archive cannot be imported; nothing is written then. The window shows it under
// "Couldn’t Import Production".
class ProductionArchiveError : public CaseError<ProductionArchiveErrorCase> {
public:
    using Case = ProductionArchiveErrorCase;
    static ProductionArchiveError unsupportedVersion(std::int64_t version);
    static ProductionArchiveError invalidArchive(const std::string& detail);
    static ProductionArchiveError importFailed(const std::string& detail);

private:
    using CaseError::CaseError;
};

namespace production_archive {

inline constexpr int formatVersion = 2;
inline constexpr std::string_view defaultFileName = "Tessel-Production.tesselarchive";
inline constexpr std::string_view exportTitle = "Couldn\u2019t Export Production";

// The archive of the production, pretty printed with sorted keys, stamped with the export instant and
// the application's version. Throws ProductionArchiveExportError.
std::string exportProduction(ModelContext& context, const Uuid& productionID, Instant exportedAt, const std::string& applicationVersion,
                             const std::string& applicationBuild);

inline constexpr std::string_view importTitle = "Couldn\u2019t Import Production";
inline constexpr std::string_view copySuffix = " (Imported Copy)";
inline constexpr std::string_view legacyPositionLabel = "Legacy Position; package provenance unknown.";
inline constexpr std::string_view pendingIdentityNotice =
    "This Production archive includes Department Head identity from another installation. It has been preserved, but it will not be used on "
    "DTS exports unless you accept it.";

struct ImportedProduction {
    Uuid productionID;
    std::string name;
    bool copy = false;             // the store held the archive's production: the import is a copy
    bool pendingIdentity = false;  // a Department Head name or signature waits to be accepted
};

// Decodes and checks the whole archive without writing anything; throws ProductionArchiveError.
void checkArchive(const std::string& archiveBytes);

// Decodes and checks the whole archive, then writes the production and everything it owns in the
// caller's transaction. Throws ProductionArchiveError before anything is written.
ImportedProduction importProduction(ModelContext& context, const std::string& archiveBytes);

}  // namespace production_archive
}  // namespace tessel

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

namespace production_archive {

inline constexpr int formatVersion = 2;
inline constexpr std::string_view defaultFileName = "Tessel-Production.tesselarchive";
inline constexpr std::string_view exportTitle = "Couldn\u2019t Export Production";

// The archive of the production, pretty printed with sorted keys, stamped with the export instant and
// the application's version. Throws ProductionArchiveExportError.
std::string exportProduction(ModelContext& context, const Uuid& productionID, Instant exportedAt, const std::string& applicationVersion,
                             const std::string& applicationBuild);

}  // namespace production_archive
}  // namespace tessel

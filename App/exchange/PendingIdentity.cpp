#include "PendingIdentity.hpp"

#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/model/ProductionProfile.hpp"

namespace tessel::pending_identity {

std::optional<PendingIdentity> find(ModelContext& context, const Uuid& productionID) {
    auto& pending = context.prepare("SELECT departmentHeadName, signatureImageData FROM PendingImportedProductionDTSIdentity WHERE productionID = ?1");
    columns::bind(pending, 1, productionID);
    return columns::readFirst(pending, [](SQLite::Statement& row) {
        return PendingIdentity{row.getColumn(0).getString(),
                               row.getColumn(1).isNull() ? std::optional<std::string>() : std::optional(columns::blob(row.getColumn(1)))};
    });
}

void accept(ModelContext& context, const Uuid& productionID) {
    const auto identity = find(context, productionID);
    if (!identity) throw PendingIdentityError(std::string(nothingPending));
    auto profile = production_profile::identity(context, productionID);
    profile.departmentHeadName = identity->departmentHeadName;
    production_profile::setIdentity(context, productionID, profile);
    if (identity->signatureImage) dts_export::setSignature(context, productionID, *identity->signatureImage);
    auto& remove = context.prepare("DELETE FROM PendingImportedProductionDTSIdentity WHERE productionID = ?1");
    columns::bind(remove, 1, productionID);
    remove.exec();
}

}  // namespace tessel::pending_identity

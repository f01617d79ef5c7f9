#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "App/model/ModelContext.hpp"

// A Department Head name and signature that came in with an imported production archive: kept apart
// from the production's own DTS export identity until the user accepts it, so that another
// installation's signature never appears on an export unasked.
namespace tessel::pending_identity {

inline constexpr std::string_view useTitle = "Use Imported Identity";
inline constexpr std::string_view useFailedTitle = "Couldn\u2019t Use Imported Identity";
inline constexpr std::string_view reviewLater = "Reviewing later keeps it in the Production archive without using it on DTS exports.";
inline constexpr std::string_view accepted = "The imported Department Head identity is used on DTS exports from now on.";
inline constexpr std::string_view nothingPending = "This Production has no imported Department Head identity waiting.";

struct PendingIdentity {
    std::string departmentHeadName;
    std::optional<std::string> signatureImage;
};

class PendingIdentityError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::optional<PendingIdentity> find(ModelContext& context, const Uuid& productionID);

// Copies the waiting identity into the production's DTS export identity and forgets it; refused with
// PendingIdentityError (nothingPending) when none waits.
void accept(ModelContext& context, const Uuid& productionID);

}  // namespace tessel::pending_identity

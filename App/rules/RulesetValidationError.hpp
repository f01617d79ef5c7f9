#pragma once

#include <string>

#include "PayrollDomain/DomainError.hpp"

namespace tessel {

enum class ProductionRulesetValidationErrorCase {
    invalidPayBand,
    invalidProvisionID,
    duplicateProvisionID,
    nameRequired,
    invalidDuration,
    revisionUnavailable,
};

// Why a ruleset draft cannot be saved; its description is the sentence the editor shows.
class ProductionRulesetValidationError : public CaseError<ProductionRulesetValidationErrorCase> {
public:
    using Case = ProductionRulesetValidationErrorCase;
    static ProductionRulesetValidationError invalidPayBand(const std::string& message);
    static ProductionRulesetValidationError invalidProvisionID(const std::string& id);
    static ProductionRulesetValidationError duplicateProvisionID(const std::string& id);
    static ProductionRulesetValidationError nameRequired();
    static ProductionRulesetValidationError invalidDuration();
    static ProductionRulesetValidationError revisionUnavailable();

private:
    using CaseError::CaseError;
};

}  // namespace tessel

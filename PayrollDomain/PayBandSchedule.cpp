#include "PayBandSchedule.hpp"

#include <unordered_set>

namespace tessel {
namespace {

using Error = PayBandScheduleValidationError;
using Case = PayBandScheduleValidationErrorCase;

std::vector<ErrorField> pairPayload(const RuleID& previous, const RuleID& current) {
    return {{"previous", previous.value()}, {"current", current.value()}};
}

void validate(const std::vector<PayBand>& bands) {
    if (bands.empty()) throw Error::emptyBands();
    const WorkDuration firstThreshold = bands.front().entryThreshold().duration;
    if (firstThreshold != WorkDuration()) throw Error::firstBandMustBeginAtZero(firstThreshold);

    std::unordered_set<RuleID> seen;
    for (const PayBand& band : bands) {
        if (!seen.insert(band.ruleID()).second) throw Error::duplicateRuleID(band.ruleID());
    }

    for (std::size_t i = 1; i < bands.size(); ++i) {
        const PayBand& previous = bands[i - 1];
        const PayBand& current = bands[i];
        const WorkDuration threshold = current.entryThreshold().duration;
        if (threshold < previous.entryThreshold().duration) throw Error::bandsOutOfOrder(previous.ruleID(), current.ruleID());
        if (previous.isOpenEnded()) throw Error::openEndedBandMustBeFinal(previous.ruleID());
        if (*previous.upperBound() < threshold) throw Error::gap(previous.ruleID(), current.ruleID());
        if (threshold < *previous.upperBound()) throw Error::overlap(previous.ruleID(), current.ruleID());
    }
}

}  // namespace

PayBandValidationError::PayBandValidationError(const RuleID& ruleID)
    : CaseError(Case::upperBoundaryMustExceedLowerBoundary, "upperBoundaryMustExceedLowerBoundary",
                "The upper bound of pay band " + quoted(ruleID.value()) + " must lie above its entry threshold.",
                {{"ruleID", ruleID.value()}}) {}

PayBand::PayBand(RuleID ruleID, PayBandEntryThreshold entryThreshold, std::optional<WorkDuration> upperBound,
                 RateMultiplier multiplier)
    : ruleID_(std::move(ruleID)), entryThreshold_(entryThreshold), upperBound_(upperBound), multiplier_(multiplier) {
    if (upperBound_ && *upperBound_ <= entryThreshold_.duration) throw ValidationError(ruleID_);
}

Error Error::firstBandMustBeginAtZero(WorkDuration actual) {
    return Error(Case::firstBandMustBeginAtZero, "firstBandMustBeginAtZero", "The first pay band must begin at zero.",
                 {{"actualSeconds", actual.seconds()}});
}

Error Error::bandsOutOfOrder(const RuleID& previous, const RuleID& current) {
    return Error(Case::bandsOutOfOrder, "bandsOutOfOrder",
                 "Pay band " + quoted(current.value()) + " begins before pay band " + quoted(previous.value()) + ".",
                 pairPayload(previous, current));
}

Error Error::gap(const RuleID& previous, const RuleID& current) {
    return Error(Case::gap, "gap",
                 "Pay band " + quoted(previous.value()) + " ends before pay band " + quoted(current.value()) +
                     " begins, leaving a gap.",
                 pairPayload(previous, current));
}

Error Error::overlap(const RuleID& previous, const RuleID& current) {
    return Error(Case::overlap, "overlap",
                 "Pay bands " + quoted(previous.value()) + " and " + quoted(current.value()) + " overlap.",
                 pairPayload(previous, current));
}

Error Error::openEndedBandMustBeFinal(const RuleID& ruleID) {
    return Error(Case::openEndedBandMustBeFinal, "openEndedBandMustBeFinal",
                 "The open-ended pay band " + quoted(ruleID.value()) + " must be the final band.",
                 {{"ruleID", ruleID.value()}});
}

Error Error::duplicateRuleID(const RuleID& ruleID) {
    return Error(Case::duplicateRuleID, "duplicateRuleID",
                 "The pay band identifier " + quoted(ruleID.value()) + " is used more than once.",
                 {{"ruleID", ruleID.value()}});
}

Error Error::emptyBands() {
    return Error(Case::emptyBands, "emptyBands", "A pay band schedule needs at least one band.");
}

PayBandSchedule::PayBandSchedule(std::vector<PayBand> bands) {
    validate(bands);
    bands_ = std::make_shared<const std::vector<PayBand>>(std::move(bands));
}

std::optional<std::size_t> PayBandSchedule::indexOf(const RuleID& ruleID) const noexcept {
    for (std::size_t i = 0; i < bands_->size(); ++i) {
        if ((*bands_)[i].ruleID() == ruleID) return i;
    }
    return std::nullopt;
}

}  // namespace tessel

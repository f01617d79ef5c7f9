#include "RateResolution.hpp"

namespace tessel {
namespace {

using Source = ResolvedRate::Source;
using Kind = ResolvedRate::Warning::Kind;

ResolvedRate ownRate(const OverScaleRate& own, Source source) {
    ResolvedRate rate{own.hourlyAmount, own.currencyCode, source, own.effectiveDate};
    rate.applicableIndividualAmount = own.hourlyAmount;
    return rate;
}

ResolvedRate scaleRate(const ScaleOnDate& scale, Source source) {
    ResolvedRate rate{scale.hourlyAmount, scale.currencyCode, source, scale.cardEffectiveStart};
    rate.rateCardID = scale.rateCardID;
    rate.rateCardLabel = scale.rateCardLabel;
    rate.applicableScale = scale.hourlyAmount;
    return rate;
}

ResolvedRate::Warning warningOf(Kind kind, const std::string& positionName = {}) { return {.kind = kind, .positionName = positionName}; }

RateResolution withWarning(std::optional<ResolvedRate> rate, ResolvedRate::Warning warning) {
    if (rate) rate->warning = warning;
    return {std::move(rate), std::move(warning)};
}

// A Job for Today or a rerate: the day is paid in that position.
RateResolution forTheDay(const PositionOnDate& position, const std::optional<OverScaleRate>& own, Source scaleSource, Source ownSource,
                         Kind belowCurrentPay, Kind scaleMissing) {
    const auto mark = [&](ResolvedRate rate) {
        rate.positionID = position.positionID;
        rate.positionName = position.positionName;
        return rate;
    };
    if (!position.scale) {
        auto warning = warningOf(scaleMissing, position.positionName);
        return withWarning(own ? std::optional(mark(ownRate(*own, ownSource))) : std::nullopt, warning);
    }
    const auto& scale = *position.scale;
    if (own && own->currencyCode == scale.currencyCode && own->hourlyAmount > scale.hourlyAmount) {
        auto rate = mark(ownRate(*own, ownSource));
        rate.applicableScale = scale.hourlyAmount;
        auto warning = warningOf(belowCurrentPay, position.positionName);
        warning.individualAmount = own->hourlyAmount;
        warning.scale = scale.hourlyAmount;
        return withWarning(std::move(rate), warning);
    }
    auto rate = mark(scaleRate(scale, scaleSource));
    if (own) rate.applicableIndividualAmount = own->hourlyAmount;
    return {std::move(rate), std::nullopt};
}

RateResolution forTheEngagement(const RateFacts& facts) {
    const auto& own = facts.individual;
    if (!facts.engagementPosition) return {own ? std::optional(ownRate(*own, Source::overScale)) : std::nullopt, std::nullopt};
    const auto& position = *facts.engagementPosition;
    if (!position.scale) {
        return withWarning(own ? std::optional(ownRate(*own, Source::overScale)) : std::nullopt, warningOf(Kind::positionScaleMissing, position.positionName));
    }
    const auto& scale = *position.scale;
    const auto onScale = [&](Source source) {
        auto rate = scaleRate(scale, source);
        rate.positionID = position.positionID;
        rate.positionName = position.positionName;
        if (own) rate.applicableIndividualAmount = own->hourlyAmount;
        return rate;
    };
    if (!own || facts.followsPositionScale) return {onScale(Source::positionScale), std::nullopt};
    if (own->currencyCode != scale.currencyCode) {
        auto warning = warningOf(Kind::currencyMismatch, position.positionName);
        warning.individualCurrency = own->currencyCode;
        warning.scaleCurrency = scale.currencyCode;
        warning.scale = scale.hourlyAmount;
        return withWarning(ownRate(*own, Source::overScale), warning);
    }
    if (own->hourlyAmount < scale.hourlyAmount) {
        auto rate = onScale(Source::scaleFloor);
        rate.effectiveDate = own->effectiveDate;
        auto warning = warningOf(Kind::overScaleBelowScale, position.positionName);
        warning.individualAmount = own->hourlyAmount;
        warning.scale = scale.hourlyAmount;
        warning.scaleEffectiveStart = scale.cardEffectiveStart;
        return withWarning(std::move(rate), warning);
    }
    auto rate = ownRate(*own, Source::overScale);
    rate.applicableScale = scale.hourlyAmount;
    rate.rateCardID = scale.rateCardID;
    rate.rateCardLabel = scale.rateCardLabel;
    return {std::move(rate), std::nullopt};
}

std::string perHour(const std::optional<Decimal>& amount) { return amount ? amount->toString() + "/hr" : std::string("?"); }

}  // namespace

std::string_view toRawValue(ResolvedRate::Source source) noexcept {
    switch (source) {
        case Source::overScale: return "overScale";
        case Source::positionScale: return "positionScale";
        case Source::scaleFloor: return "scaleFloor";
        case Source::reratedPositionScale: return "reratedPositionScale";
        case Source::rerateOverScale: return "rerateOverScale";
        case Source::dailyJobPositionScale: return "dailyJobPositionScale";
        case Source::dailyJobOverScale: return "dailyJobOverScale";
    }
    return "overScale";
}

std::string_view toRawValue(ResolvedRate::Warning::Kind kind) noexcept {
    switch (kind) {
        case Kind::overScaleBelowScale: return "overScaleBelowScale";
        case Kind::currencyMismatch: return "currencyMismatch";
        case Kind::rerateBelowCurrentPay: return "rerateBelowCurrentPay";
        case Kind::reratedPositionScaleMissing: return "reratedPositionScaleMissing";
        case Kind::dailyJobBelowCurrentPay: return "dailyJobBelowCurrentPay";
        case Kind::dailyJobPositionScaleMissing: return "dailyJobPositionScaleMissing";
        case Kind::positionScaleMissing: return "positionScaleMissing";
    }
    return "positionScaleMissing";
}

RateResolution resolveRate(const RateFacts& facts) {
    if (facts.jobForToday) {
        return forTheDay(*facts.jobForToday, facts.individual, Source::dailyJobPositionScale, Source::dailyJobOverScale, Kind::dailyJobBelowCurrentPay,
                         Kind::dailyJobPositionScaleMissing);
    }
    if (facts.rerate) {
        return forTheDay(*facts.rerate, facts.individual, Source::reratedPositionScale, Source::rerateOverScale, Kind::rerateBelowCurrentPay,
                         Kind::reratedPositionScaleMissing);
    }
    return forTheEngagement(facts);
}

std::string rateWarningWords(const ResolvedRate::Warning& w, bool hasRate) {
    switch (w.kind) {
        case Kind::overScaleBelowScale:
            return "Over-Scale Rate is below Scale: The stored individual rate of " + perHour(w.individualAmount) + " is below the applicable " +
                   perHour(w.scale) + " Scale Rate. Payroll uses the Scale floor.";
        case Kind::currencyMismatch:
            return "The Over-Scale rate is in " + w.individualCurrency + " but the Scale of " + w.positionName + " is in " + w.scaleCurrency +
                   "; payroll uses the Over-Scale rate.";
        case Kind::rerateBelowCurrentPay:
            return "Rerate below current pay rate: " + perHour(w.scale) + "; payroll continues using $" + perHour(w.individualAmount) + ".";
        case Kind::dailyJobBelowCurrentPay:
            return "Job for Today below current pay rate: " + perHour(w.scale) + "; payroll continues using $" + perHour(w.individualAmount) + ".";
        case Kind::dailyJobPositionScaleMissing:
            return hasRate ? "Job for Today scale is missing; payroll provisionally uses the existing Over-Scale rate."
                           : "Job for Today scale is missing; this day has no resolved rate.";
        case Kind::reratedPositionScaleMissing:
        case Kind::positionScaleMissing:
            return "No applicable Daily Scale rate was found for " + w.positionName +
                   (hasRate ? ". Payroll provisionally uses the existing Over-Scale rate." : "; this day has no resolved rate.");
    }
    return {};
}

}  // namespace tessel

#include "ReviewJSON.hpp"

#include "App/expected/RateResolution.hpp"
#include "App/expected/PaidCategories.hpp"
#include "App/model/CalculationJSON.hpp"
#include "App/model/CalendarText.hpp"

namespace tessel::review_json {
namespace {

Json optionalDecimal(const std::optional<Decimal>& value) { return value ? Json(value->toString()) : Json(); }

Json warningJSON(const ResolvedRate::Warning& w, bool hasRate) {
    Json json{{"case", toRawValue(w.kind)}, {"words", rateWarningWords(w, hasRate)}};
    if (!w.positionName.empty()) json["positionName"] = w.positionName;
    if (w.individualAmount) json["individualAmount"] = w.individualAmount->toString();
    if (w.scale) json["scale"] = w.scale->toString();
    if (w.scaleEffectiveStart) json["scaleEffectiveStart"] = calendar_text::formatDate(*w.scaleEffectiveStart);
    if (!w.individualCurrency.empty()) json["individualCurrency"] = w.individualCurrency;
    return json;
}

// The source as its case with what identifies it: the own rate's date, the Rate Card, the position.
Json rateJSON(const ResolvedRate& r) {
    Json source{{"case", toRawValue(r.source)}};
    using S = ResolvedRate::Source;
    if (r.source == S::overScale || r.source == S::scaleFloor || r.source == S::rerateOverScale || r.source == S::dailyJobOverScale) {
        source[r.source == S::scaleFloor ? "overScaleEffectiveDate" : "effectiveDate"] = calendar_text::formatDate(r.effectiveDate);
    }
    if (r.rateCardID && r.source != S::overScale) {
        source["rateCardID"] = r.rateCardID->text();
        source["label"] = r.rateCardLabel;
    }
    if (r.positionID) {
        source["positionID"] = r.positionID->text();
        source["positionName"] = r.positionName;
    }
    return {{"hourlyAmount", r.hourlyAmount.toString()},
            {"currencyCode", r.currencyCode},
            {"source", source},
            {"applicableScale", optionalDecimal(r.applicableScale)},
            {"applicableIndividualAmount", optionalDecimal(r.applicableIndividualAmount)}};
}


namespace cj = calculation_json;
using calendar_text::formatDate;
using calendar_text::formatInstant;

template <typename Value, typename Encode>
void put(Json& json, const char* key, const std::optional<Value>& value, Encode encode) {
    if (value) json[key] = encode(*value);
}

Json money(const Money& value) { return cj::toJSON(value); }
Json date(CalendarDate value) { return formatDate(value); }
Json instant(Instant value) { return formatInstant(value); }

Json sourceJSON(const DTSCalculationInput& s) {
    Json json{{"workdayID", s.workdayID.text()}, {"calendarDate", formatDate(s.calendarDate)}};
    if (s.crewMemberID) json["crewMemberID"] = s.crewMemberID->text();
    if (s.engagementID) json["engagementID"] = s.engagementID->text();
    put(json, "call", s.call, instant);
    put(json, "lunchOut", s.lunchOut, instant);
    put(json, "lunchIn", s.lunchIn, instant);
    put(json, "wrap", s.wrap, instant);
    if (s.rulesLocalityOverride) json["rulesLocalityOverride"] = toRawValue(*s.rulesLocalityOverride);
    put(json, "generalCrewCall", s.generalCrewCall, instant);
    put(json, "officialLunchOut", s.officialLunchOut, instant);
    json["firstMealGraceWasCalled"] = s.firstMealGraceWasCalled;
    json["nonDeductibleBreakfast"] = s.nonDeductibleBreakfast;
    json["workMode"] = toRawValue(s.workMode);
    return json;
}

Json categoryJSON(const PayrollReviewCategory& c) {
    Json json;
    if (c.comparisonConcept) json["comparisonConcept"] = toRawValue(*c.comparisonConcept);
    json["ruleID"] = c.ruleID.value();
    json["label"] = c.label;
    json["rulesLocality"] = toRawValue(c.rulesLocality);
    json["multiplier"] = c.multiplier.value().toString();
    json["actualDurationSeconds"] = c.actualDuration.seconds();
    json["guaranteedDurationSeconds"] = c.guaranteedDuration.seconds();
    json["paidDurationSeconds"] = c.paidDuration.seconds();
    put(json, "compensation", c.compensation, money);
    put(json, "baseHourlyRate", c.baseHourlyRate, money);
    Json contributors = Json::array();
    for (const auto& k : c.contributors) {
        Json contributor{{"workdayID", k.workdayID.text()},
                         {"calendarDate", formatDate(k.calendarDate)},
                         {"actualDurationSeconds", k.actualDuration.seconds()},
                         {"guaranteedDurationSeconds", k.guaranteedDuration.seconds()},
                         {"paidDurationSeconds", k.paidDuration.seconds()}};
        put(contributor, "compensation", k.compensation, money);
        contributors.push_back(std::move(contributor));
    }
    json["contributors"] = std::move(contributors);
    return json;
}

// Each line carries its rule and the trace of its calculation: a fixed daily amount, or a percentage of
// a basis.
Json additionalJSON(const AdditionalCompensationReview& a) {
    Json json{{"kind", toRawValue(a.kind)},
              {"ruleID", paid_categories::provisionRuleID(a.kind)},
              {"compensation", money(a.compensation)},
              {"usedPersonalAmount", a.usedPersonalAmount}};
    if (a.presentationDetail) json["presentationDetail"] = *a.presentationDetail;
    if (const auto* fixed = std::get_if<FixedDailyCompensationTrace>(&a.trace)) {
        json["trace"] = cj::toJSON(FixedDailyCompensationResult{fixed->compensation, *fixed})["trace"];
        json["trace"]["case"] = "fixedDaily";
    } else {
        const auto& percentage = std::get<PercentageCompensationTrace>(a.trace);
        json["trace"] = cj::toJSON(PercentageCompensationResult{a.compensation, percentage})["trace"];
        json["trace"]["case"] = "percentage";
    }
    return json;
}

Json issueJSON(const PayrollReviewIssue& issue) {
    return Json{{"kind", toRawValue(issue.kind)},
                {"message", issue.message},
                {"destination",
                 Json{{"case", issue.destinationKind == PayrollReviewIssue::DestinationKind::workday ? "workday" : "crewMember"},
                      {"id", issue.destination.text()}}}};
}

template <typename Items, typename Encode>
Json list(const Items& items, Encode encode) {
    Json json = Json::array();
    for (const auto& item : items) json.push_back(encode(item));
    return json;
}

Json idleJSON(const IdlePayrollContribution& idle) {
    Json json{{"activityID", idle.activityID.text()}, {"calendarDate", formatDate(idle.calendarDate)}, {"ruleID", paid_categories::idleRuleID}};
    if (idle.rule) json["rule"] = Json{{"compensatedSecondsPerDay", idle.rule->compensatedSecondsPerDay},
                                       {"straightTimeRateMultiplier", idle.rule->straightTimeRateMultiplier.toString()}};
    put(json, "applicableRate", idle.applicableRate, money);
    json["status"] = Json{{"case", idle.status == IdlePayrollContribution::Status::calculated    ? "calculated"
                                   : idle.status == IdlePayrollContribution::Status::missingRule ? "missingRule"
                                                                                                 : "missingRate"}};
    if (idle.result) {
        json["status"]["compensation"] = money(idle.result->compensation);
        json["status"]["trace"] = cj::toJSON(*idle.result)["trace"];
    }
    return json;
}

const char* holidayStatus(HolidayPayrollContribution::Status status) {
    switch (status) {
        case HolidayPayrollContribution::Status::calculated: return "calculated";
        case HolidayPayrollContribution::Status::missingRule: return "missingRule";
        case HolidayPayrollContribution::Status::missingRate: return "missingRate";
        case HolidayPayrollContribution::Status::missingEngagement: return "missingEngagement";
    }
    return "";
}

}  // namespace

Json toJSON(const GoldenHourTarget& g) {
    return Json{{"targetTime", formatInstant(g.targetTime)},
                {"exactBandEntryTime", formatInstant(g.exactBandEntryTime)},
                {"guaranteeRuleID", g.guaranteeRuleID.value()},
                {"targetPayBandRuleID", g.targetPayBandRuleID.value()},
                {"minimumPaidDurationSeconds", g.minimumPaidDuration.seconds()},
                {"multiplier", g.multiplier.value().toString()},
                {"threshold", cj::toJSON(g.threshold)}};
}

Json toJSON(const GoldenHourAdvisoryPresentation& advisory) {
    return Json{{"target", toJSON(advisory.target)}, {"remainingSeconds", advisory.remainingSeconds}};
}

Json rateJSON(const DailyPayrollReview& r) {
    Json json = Json::object();
    put(json, "applicableRate", r.applicableRate, money);
    if (r.rateResolution) json["rateResolution"] = rateJSON(*r.rateResolution);
    if (r.rateWarning) json["rateWarning"] = warningJSON(*r.rateWarning, r.rateResolution.has_value());
    return json;
}

Json toJSON(const DailyPayrollReview& r) {
    Json json{{"id", r.id.text()}, {"calendarDate", formatDate(r.calendarDate)}};
    if (r.classification) json["classification"] = Json{{"positionID", r.classification->positionID.text()}, {"name", r.classification->name}};
    if (r.workdaySequence) {
        json["workdaySequence"] = Json{{"ordinal", r.workdaySequence->ordinal},
                                       {"classification", toRawValue(r.workdaySequence->classification())}};
    }
    json["dayKind"] = r.dayKind;
    json["scheduleDayKind"] = r.scheduleDayKind;
    if (r.scheduleTerms) json["scheduleTerms"] = *r.scheduleTerms;
    json["rulesLocality"] = toRawValue(r.rulesLocality);
    json["source"] = sourceJSON(r.source);
    Json status{{"case", toRawValue(r.status.kind)}};
    if (r.status.reason) {
        status["reason"] = Json{{"case", toRawValue(r.status.reason->kind)}};
        status["explanation"] = description(*r.status.reason);
    }
    if (!r.status.failure.empty()) status["explanation"] = r.status.failure;
    json["status"] = std::move(status);
    if (r.durations) {
        json["durations"] = Json{{"elapsedSeconds", r.durations->elapsed.seconds()},
                                 {"workedSeconds", r.durations->worked.seconds()},
                                 {"deductibleMealSeconds", r.durations->deductibleMeal.seconds()}};
    }
    json["categories"] = list(r.categories, categoryJSON);
    const Json rate = rateJSON(r);  // kept alive for the loop over its items
    for (const auto& [key, value] : rate.items()) json[key] = value;
    put(json, "compensation", r.compensation, money);
    put(json, "boxRentalCompensation", r.boxRentalCompensation, money);
    json["additionalCompensation"] = list(r.additionalCompensation, additionalJSON);
    json["mealPeriods"] = list(r.mealPeriods, [](const auto& m) { return cj::toJSON(m); });
    if (r.mealPenaltySchedule) {
        json["mealPenaltySchedule"] = r.mealPenaltySchedule->ruleID().value();
        json["mealPenaltyScheduleName"] = r.mealPenaltyScheduleName;
    }
    json["mealPenaltyFixedDollarWeeklyLimit"] = r.mealPenaltyFixedDollarWeeklyLimit;
    if (r.dailyMinimumTrace) json["dailyMinimumTrace"] = cj::toJSON(*r.dailyMinimumTrace);
    if (r.dailyMinimumSource) json["dailyMinimumSource"] = description(*r.dailyMinimumSource);
    json["guaranteeTraces"] = list(r.guaranteeTraces, [](const auto& t) { return cj::toJSON(t); });
    if (r.engineGrossResult) json["grossTrace"] = cj::toJSON(*r.engineGrossResult)["trace"];
    put(json, "straightTimeCompensation", r.straightTimeCompensation, money);
    if (r.turnaround) {
        Json turnaround;
        if (r.turnaround->nextWorkdayID) turnaround["nextWorkdayID"] = r.turnaround->nextWorkdayID->text();
        put(turnaround, "nextWorkdayDate", r.turnaround->nextWorkdayDate, date);
        turnaround["result"] = cj::toJSON(r.turnaround->result);
        if (r.turnaround->note) turnaround["note"] = *r.turnaround->note;
        json["turnaround"] = std::move(turnaround);
    }
    if (r.goldenHourTarget) json["goldenHourTarget"] = toJSON(*r.goldenHourTarget);
    json["issues"] = list(r.issues, issueJSON);
    return json;
}

Json toJSON(const NonDTSPayrollActivityReview& r) {
    Json json{{"id", r.id.text()}, {"calendarDate", formatDate(r.calendarDate)}, {"kind", r.kindRawValue}};
    if (r.travelDurationSeconds) json["travelDurationSeconds"] = *r.travelDurationSeconds;
    json["additionalCompensation"] = list(r.additionalCompensation, additionalJSON);
    if (r.idleCompensation) json["idleCompensation"] = idleJSON(*r.idleCompensation);
    if (r.holidayCompensation) {
        Json holiday{{"activityID", r.holidayCompensation->activityID.text()}};
        if (r.holidayCompensation->context) {
            holiday["context"] = toRawValue(*r.holidayCompensation->context);
            holiday["ruleID"] = paid_categories::holidayRuleID(*r.holidayCompensation->context);
        }
        holiday["status"] = Json{{"case", holidayStatus(r.holidayCompensation->status)}};
        if (r.holidayCompensation->result) {
            holiday["compensation"] = money(r.holidayCompensation->result->compensation);
            holiday["status"]["compensation"] = holiday["compensation"];
            holiday["status"]["trace"] = cj::toJSON(*r.holidayCompensation->result)["trace"];
        }
        holiday["explanation"] = r.holidayCompensation->words;
        json["holidayCompensation"] = std::move(holiday);
    }
    json["explanation"] = r.words;
    return json;
}

Json toJSON(const WeeklyCrewPayrollReview& r) {
    Json json{{"crewMemberID", r.crewMemberID.text()},
              {"crewName", r.crewName},
              {"weekStartDate", formatDate(r.weekStartDate)},
              {"configurationName", r.configurationName}};
    if (r.rulesetRevisionID) json["rulesetRevisionID"] = r.rulesetRevisionID->text();
    put(json, "rulesetEffectiveFrom", r.rulesetEffectiveFrom, date);
    json["categories"] = list(r.categories, categoryJSON);
    json["days"] = list(r.days, [](const auto& d) { return toJSON(d); });
    json["nonDTSActivities"] = list(r.nonDTSActivities, [](const auto& a) { return toJSON(a); });
    put(json, "estimatedGross", r.estimatedGross, money);
    json["estimatedGrossLabel"] = r.estimatedGrossIsPartial ? review_words::estimatedGrossPartial : review_words::estimatedGross;
    put(json, "boxRentalCompensation", r.boxRentalCompensation, money);
    json["additionalCompensation"] = list(r.additionalCompensation, additionalJSON);
    json["idleCompensation"] = list(r.idleCompensation, idleJSON);
    json["missingRateDates"] = list(r.missingRateDates, date);
    json["mealPenalties"] = cj::toJSON(r.mealPenalties);
    json["issues"] = list(r.issues, issueJSON);
    return json;
}

}  // namespace tessel::review_json

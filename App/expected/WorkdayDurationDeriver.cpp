#include "WorkdayDurationDeriver.hpp"

#include "PayrollDomain/DailyMinimumGuarantee.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Reason = WorkdayIncompleteReason;
using Event = DTSTimelineEventKind;
using Kind = PayBandAllocationTimelineSegment::Kind;

Reason timeline(DTSTimelineValidationFailure failure) { return {Reason::Case::invalidTimeline, failure}; }

std::optional<Reason> checkOrder(const DTSCalculationInput& input) {
    const std::pair<Event, const std::optional<Instant>*> events[] = {
        {Event::call, &input.call}, {Event::lunchOut, &input.lunchOut}, {Event::lunchIn, &input.lunchIn}, {Event::wrap, &input.wrap}};
    std::optional<std::pair<Event, Instant>> previous;
    for (const auto& [event, time] : events) {
        if (!*time) continue;
        if (previous && **time <= previous->second) {
            return timeline({DTSTimelineValidationFailure::Case::notAfter, event, previous->first});
        }
        previous = std::pair(event, **time);
    }
    return std::nullopt;
}

}  // namespace

std::string_view toRawValue(DTSTimelineEventKind kind) noexcept {
    switch (kind) {
        case Event::call: return "Call";
        case Event::lunchOut: return "Lunch Out";
        case Event::lunchIn: return "Lunch In";
        case Event::wrap: return "Wrap";
    }
    return {};
}

std::string_view toRawValue(Reason::Case kind) noexcept {
    switch (kind) {
        case Reason::Case::invalidTimeline: return "invalidTimeline";
        case Reason::Case::missingCall: return "missingCall";
        case Reason::Case::missingWrap: return "missingWrap";
        case Reason::Case::missingLunchOut: return "missingLunchOut";
        case Reason::Case::missingLunchIn: return "missingLunchIn";
        case Reason::Case::invalidMeal: return "invalidMeal";
        case Reason::Case::invalidDuration: return "invalidDuration";
    }
    return {};
}

std::string description(const WorkdayIncompleteReason& reason) {
    switch (reason.kind) {
        case Reason::Case::invalidTimeline:
            if (reason.timeline->kind == DTSTimelineValidationFailure::Case::callOutsideShootDay) {
                return "Call must be between 0.0 and 23.9.";
            }
            return std::string(toRawValue(reason.timeline->event)) + " must be later than " +
                   std::string(toRawValue(reason.timeline->prior)) + ".";
        case Reason::Case::missingCall: return "Call is missing";
        case Reason::Case::missingWrap: return "Wrap is missing";
        case Reason::Case::missingLunchOut: return "Lunch Out is missing";
        case Reason::Case::missingLunchIn: return "Lunch In is missing";
        case Reason::Case::invalidMeal: return "The meal interval is outside the Call-to-Wrap interval";
        case Reason::Case::invalidDuration: return "The Workday duration is invalid";
    }
    return {};
}

DailyMinimumGuaranteeEligibility WorkdayDurationDeriver::eligibility(CrewDailyWorkMode mode) noexcept {
    return mode == CrewDailyWorkMode::timed ? DailyMinimumGuaranteeEligibility::actualWorkRequired
                                            : DailyMinimumGuaranteeEligibility::confirmedWorkedDay;
}

std::variant<DerivedWorkdayDurations, Reason> WorkdayDurationDeriver::derive(const DTSCalculationInput& input) {
    if (input.workMode != CrewDailyWorkMode::timed && !input.call && !input.wrap && !input.lunchOut && !input.lunchIn) {
        return DerivedWorkdayDurations{};
    }
    if (!input.call) return Reason{Reason::Case::missingCall, std::nullopt};
    if (floor<days>(*input.call) != sys_days(input.calendarDate)) {
        return timeline({DTSTimelineValidationFailure::Case::callOutsideShootDay, Event::call, Event::call});
    }
    if (!input.wrap) return Reason{Reason::Case::missingWrap, std::nullopt};
    if (const auto disorder = checkOrder(input)) return *disorder;
    if (input.lunchOut && !input.lunchIn) return Reason{Reason::Case::missingLunchIn, std::nullopt};
    if (input.lunchIn && !input.lunchOut) return Reason{Reason::Case::missingLunchOut, std::nullopt};
    const bool meal = input.lunchOut.has_value();
    if (meal && (*input.lunchOut < *input.call || *input.lunchIn > *input.wrap)) return Reason{Reason::Case::invalidMeal, std::nullopt};

    const std::int64_t elapsed = (*input.wrap - *input.call).count();
    const std::int64_t mealLength = meal ? (*input.lunchIn - *input.lunchOut).count() : 0;
    if (elapsed < 0 || mealLength < 0 || mealLength > elapsed) return Reason{Reason::Case::invalidDuration, std::nullopt};

    DerivedWorkdayDurations durations{WorkDuration(elapsed), WorkDuration(elapsed - mealLength), WorkDuration(mealLength), {}};
    auto& segments = durations.allocationInput.segments;
    const auto add = [&](Kind kind, std::int64_t seconds) {
        if (seconds > 0) segments.push_back({kind, WorkDuration(seconds)});
    };
    if (meal) {
        add(Kind::compensableWork, (*input.lunchOut - *input.call).count());
        add(Kind::nonCompensableElapsed, mealLength);
        add(Kind::compensableWork, (*input.wrap - *input.lunchIn).count());
    } else {
        add(Kind::compensableWork, elapsed);
    }
    return durations;
}

}  // namespace tessel

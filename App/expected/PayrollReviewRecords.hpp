#pragma once

#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "App/expected/WorkdayDurationDeriver.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/PayComparisonConcept.hpp"
#include "PayrollDomain/GrossCompensation.hpp"
#include "PayrollDomain/MealPeriod.hpp"
#include "PayrollDomain/SupplementalCompensation.hpp"
#include "PayrollDomain/Turnaround.hpp"
#include "PayrollDomain/WeeklyMealPenalty.hpp"
#include "PayrollDomain/WeeklyPayroll.hpp"

// The records of the expected payroll: computed from the stored facts when asked for, never stored.
namespace tessel {

namespace review_words {
inline constexpr std::string_view estimatedGross = "Estimated Gross";
inline constexpr std::string_view estimatedGrossPartial = "Estimated Gross (Partial)";
inline constexpr std::string_view partialExplanation =
    "Monetary estimate unavailable: no applicable rate is configured for one or more calculated days.";
inline constexpr std::string_view noApplicablePayRate = "No applicable pay rate";
inline constexpr std::string_view idleCalculated = "Idle Pay calculated";
inline constexpr std::string_view idleMissingRule =
    "This Ruleset does not define Idle Compensation, so Idle Pay cannot be calculated.";
inline constexpr std::string_view idleMissingRate = "No applicable straight-time rate for Idle";
inline constexpr std::string_view holidayCalculated = "Holiday Pay calculated";
inline constexpr std::string_view holidayNotConfigured = "Unworked Holiday Pay is not configured.";
inline constexpr std::string_view vacationBasisUnknown =
    "Vacation Pay is unavailable: the week's straight-time earnings are not known without the missing hourly rate.";
inline constexpr std::string_view holidayMissingContextPrefix = "This Ruleset does not define Unworked Holiday Pay for";
// The context a holiday rule is defined for, as the missing-rule sentence names it.
inline std::string_view holidayContextWords(HolidayRuleContext context) noexcept {
    switch (context) {
        case HolidayRuleContext::dailyLocal: return "local daily hires";
        case HolidayRuleContext::weeklyLocal: return "local weekly hires";
        case HolidayRuleContext::dailyDistant: return "distant daily hires";
        case HolidayRuleContext::weeklyDistant: return "distant weekly hires";
    }
    return {};
}
inline constexpr std::string_view holidayMissingRate = "No applicable straight-time hourly rate for Unworked Holiday Pay.";
inline constexpr std::string_view holidayMissingEngagement = "No engagement is assigned to this Holiday activity.";
inline constexpr std::string_view travelNotConfigured = "Travel compensation not yet configured";
inline constexpr std::string_view noCompensationInferred = "No compensation inferred";
inline constexpr std::string_view goldenHourWrap = "Golden Hour Wrap:";
inline constexpr std::string_view goldenHourWrapLabel = "Earliest Wrap that triggers Golden Hour:";
inline constexpr std::string_view goldenHourUnavailable = "Golden Hour Wrap unavailable";
inline constexpr std::string_view dismissGoldenHourAdvisory = "Dismiss Golden Hour advisory";
inline constexpr std::string_view unassignedClassification = "Unassigned Classification";
}  // namespace review_words

struct PayrollReviewClassification {
    Uuid positionID;
    std::string name{};
    std::optional<std::string> occupationCode{};
    bool operator==(const PayrollReviewClassification&) const = default;
};

struct PayrollReviewCategoryContributor {
    Uuid workdayID;
    CalendarDate calendarDate{};
    WorkDuration actualDuration{};
    WorkDuration guaranteedDuration{};
    WorkDuration paidDuration{};
    std::optional<Money> compensation{};
};

struct PayrollReviewCategory {
    std::optional<PayComparisonConcept> comparisonConcept{};
    RuleID ruleID;
    std::string label{};
    RateMultiplier multiplier;
    WorkDuration actualDuration{};
    WorkDuration guaranteedDuration{};
    WorkDuration paidDuration{};
    std::optional<Money> compensation{};
    std::optional<Money> baseHourlyRate{};
    std::vector<PayrollReviewCategoryContributor> contributors{};
    RulesLocality rulesLocality = RulesLocality::local;  // the schedule the band belongs to
};

// How the applicable hourly rate was found: its source (the engagement's own over-scale rate, a
// position's scale, the scale as a floor under a lower own rate, or a rerate's or Job for Today's), the
// scale and own amount it was weighed against, and any warning.
struct ResolvedRate {
    enum class Source { overScale, positionScale, scaleFloor, reratedPositionScale, rerateOverScale, dailyJobPositionScale, dailyJobOverScale };
    struct Warning {
        enum class Kind {
            overScaleBelowScale,
            currencyMismatch,
            rerateBelowCurrentPay,
            reratedPositionScaleMissing,
            dailyJobBelowCurrentPay,
            dailyJobPositionScaleMissing,
            positionScaleMissing
        };
        Kind kind = Kind::positionScaleMissing;
        std::string positionName{};
        std::optional<Decimal> individualAmount{}, scale{};
        std::optional<CalendarDate> scaleEffectiveStart{};
        std::string individualCurrency{}, scaleCurrency{};
        bool operator==(const Warning&) const = default;
    };
    Decimal hourlyAmount;
    std::string currencyCode{};
    Source source = Source::overScale;
    CalendarDate effectiveDate{};  // the own rate's effective date, for the over-scale sources
    std::optional<Uuid> rateCardID{};
    std::string rateCardLabel{};
    std::optional<Uuid> positionID{};
    std::string positionName{};
    std::optional<Decimal> applicableScale{}, applicableIndividualAmount{};
    std::optional<Warning> warning{};
    bool operator==(const ResolvedRate&) const = default;
};
std::string_view toRawValue(ResolvedRate::Source source) noexcept;
std::string_view toRawValue(ResolvedRate::Warning::Kind kind) noexcept;

struct PayrollReviewIssue {
    enum class Kind { dtsSource, calculationFailure, missingRate, positionTerms };
    enum class DestinationKind { workday, crewMember };
    Kind kind = Kind::dtsSource;
    std::string message{};
    DestinationKind destinationKind = DestinationKind::workday;
    Uuid destination;
};

std::string_view toRawValue(PayrollReviewIssue::Kind kind) noexcept;

struct AdditionalCompensationReview {
    CompensationProvisionKind kind;
    Money compensation;
    bool usedPersonalAmount = false;
    std::variant<FixedDailyCompensationTrace, PercentageCompensationTrace> trace{};
    std::optional<std::string> presentationDetail{};
};

struct TurnaroundPayrollReview {
    std::optional<Uuid> nextWorkdayID{};
    std::optional<CalendarDate> nextWorkdayDate{};
    TurnaroundEvaluationResult result;
    // Only the next calendar day is looked at: a day followed by days off says that its rest is not evaluated.
    std::optional<std::string> note{};
};

// When the band of the golden hour guarantee is entered, on the clock from the crew member's call.
struct GoldenHourTarget {
    Instant targetTime;          // the earliest wrap that triggers it: the next whole tenth after entry
    Instant exactBandEntryTime;
    RuleID guaranteeRuleID;
    RuleID targetPayBandRuleID;
    WorkDuration minimumPaidDuration{};
    RateMultiplier multiplier;
    PayBandEntryThreshold threshold;
};

// The golden hour advisory while a day is still shooting: the target and the whole seconds left until it.
struct GoldenHourAdvisoryPresentation {
    GoldenHourTarget target;
    std::int64_t remainingSeconds = 0;
};

struct DailyPayrollStatus {
    enum class Case { incomplete, calculationFailed, calculated };
    Case kind = Case::calculated;
    std::optional<WorkdayIncompleteReason> reason{};  // incomplete
    std::string failure{};                            // calculationFailed
};

std::string_view toRawValue(DailyPayrollStatus::Case kind) noexcept;

struct DailyPayrollReview {
    std::optional<PayrollReviewClassification> classification{};
    Uuid id;
    CalendarDate calendarDate{};
    std::optional<CrewWorkdaySequencePosition> workdaySequence{};
    DTSCalculationInput source;
    std::vector<MealPeriodEvaluationResult> mealPeriods{};
    std::optional<FixedDollarMealPenaltySchedule> mealPenaltySchedule{};
    std::string mealPenaltyScheduleName{};
    int mealPenaltyFixedDollarWeeklyLimit = 20;
    std::optional<DerivedWorkdayDurations> durations{};
    std::vector<PayrollReviewCategory> categories{};
    std::optional<Money> applicableRate{};
    std::optional<ResolvedRate> rateResolution{};
    std::optional<ResolvedRate::Warning> rateWarning{};  // also on a day the warning leaves without a rate
    std::optional<Money> compensation{};
    std::optional<Money> boxRentalCompensation{};
    std::vector<AdditionalCompensationReview> additionalCompensation{};
    DailyPayrollStatus status{};
    std::optional<DailyMinimumGuaranteeTraceEntry> dailyMinimumTrace{};
    std::optional<DailyMinimumGuaranteeSource> dailyMinimumSource{};
    std::vector<MinimumBandGuaranteeTraceEntry> guaranteeTraces{};
    // Holds the allocation and gross traces; shared because it never changes and is copied with every
    // copy of the day.
    std::shared_ptr<const GrossCompensationResult> engineGrossResult{};
    std::optional<Money> straightTimeCompensation{};
    std::optional<TurnaroundPayrollReview> turnaround{};
    std::optional<GoldenHourTarget> goldenHourTarget{};
    RulesLocality rulesLocality = RulesLocality::local;
    std::string dayKind = "ordinary";
    std::string scheduleDayKind = "ordinary";  // the schedule that paid the day: the day kind's own, or the ordinary one
    // When the position's contract setup (or the person's own changes) shaped the day's schedule: whose,
    // in words, and the changes ("Gaffer's contract setup on Rate Card “2026 Basic”: minimum call 10.0 h").
    std::optional<std::string> scheduleTerms{};
    std::vector<PayrollReviewIssue> issues{};
};

// A list of immutable records shared between its copies: copying the list copies pointers, not records.
// A review kept between edits hands the same unchanged days to every recalculation of a week, so a
// recalculation neither copies nor frees them. It reads as a list of the records themselves.
template <typename Record>
class SharedRecords {
public:
    using Pointer = std::shared_ptr<const Record>;
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Record;
        using difference_type = std::ptrdiff_t;
        using pointer = const Record*;
        using reference = const Record&;
        const_iterator() = default;
        explicit const_iterator(typename std::vector<Pointer>::const_iterator at) : at_(at) {}
        reference operator*() const { return **at_; }
        pointer operator->() const { return at_->get(); }
        const_iterator& operator++() { ++at_; return *this; }
        const_iterator operator++(int) { const_iterator before = *this; ++at_; return before; }
        bool operator==(const const_iterator&) const = default;

    private:
        typename std::vector<Pointer>::const_iterator at_{};
    };

    void push_back(Pointer record) { records_.push_back(std::move(record)); }
    void push_back(Record record) { records_.push_back(std::make_shared<const Record>(std::move(record))); }
    void reserve(std::size_t count) { records_.reserve(count); }
    std::size_t size() const noexcept { return records_.size(); }
    bool empty() const noexcept { return records_.empty(); }
    const Record& operator[](std::size_t index) const { return *records_[index]; }
    const Record& at(std::size_t index) const { return *records_.at(index); }
    const Record& front() const { return *records_.front(); }
    const Record& back() const { return *records_.back(); }
    const_iterator begin() const { return const_iterator(records_.begin()); }
    const_iterator end() const { return const_iterator(records_.end()); }

private:
    std::vector<Pointer> records_;
};

struct IdlePayrollContribution {
    enum class Status { calculated, missingRule, missingRate };
    Uuid activityID;
    CalendarDate calendarDate{};
    std::optional<IdleCompensationRuleDraft> rule{};
    std::optional<Money> applicableRate{};
    Status status = Status::missingRule;
    std::optional<IdleCompensationResult> result{};
};

struct HolidayPayrollContribution {
    enum class Status { calculated, missingRule, missingRate, missingEngagement };
    Uuid activityID;
    CalendarDate calendarDate{};
    std::optional<HolidayRuleContext> context{};
    Status status = Status::missingRule;
    std::optional<UnworkedHolidayResult> result{};
    std::string words{};
};

struct NonDTSPayrollActivityReview {
    Uuid id;
    CalendarDate calendarDate{};
    std::string kindRawValue{};
    std::optional<std::int64_t> travelDurationSeconds{};
    std::vector<AdditionalCompensationReview> additionalCompensation{};
    std::optional<IdlePayrollContribution> idleCompensation{};
    std::optional<HolidayPayrollContribution> holidayCompensation{};
    std::string words{};  // what the activity pays, in the review's words
};

struct WeeklyCrewPayrollReview {
    Uuid crewMemberID;
    std::string crewName{};
    CalendarDate weekStartDate{};
    std::string configurationName{};
    std::optional<Uuid> rulesetRevisionID{};
    std::optional<CalendarDate> rulesetEffectiveFrom{};
    std::vector<PayrollReviewCategory> categories{};
    SharedRecords<DailyPayrollReview> days{};
    std::vector<NonDTSPayrollActivityReview> nonDTSActivities{};
    std::optional<Money> estimatedGross{};
    bool estimatedGrossIsPartial = false;
    std::optional<Money> boxRentalCompensation{};
    std::vector<AdditionalCompensationReview> additionalCompensation{};  // each day's and activity's items, then vacation pay
    std::vector<IdlePayrollContribution> idleCompensation{};
    std::vector<CalendarDate> missingRateDates{};
    WeeklyMealPenaltyResult mealPenalties{};
    std::vector<PayrollReviewIssue> issues{};  // every day's issues and the week's own
};

}  // namespace tessel

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "App/actualpay/PayrollIssues.hpp"
#include "App/dts/DailyTimeSheets.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/cli/CommandSession.hpp"

// What the commands that work inside a production share: reading typed arguments and running one user
// action as one transaction.
namespace tessel::command_actions {

// The moment of a user action, to the second, as the store keeps it.
inline Instant now() { return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()); }

inline CalendarDate dateArgument(const std::string& text) {
    if (const auto date = calendar_text::parseDate(text)) return *date;
    throw Refused{"invalidDate", "Enter the date as YYYY-MM-DD, such as 2026-11-02."};
}

inline std::optional<std::int64_t> durationArgument(const std::string& text, std::string_view message) {
    if (entry_text::isBlank(text)) return std::nullopt;
    try {
        return PayrollDecimalDurationParser::parse(text);
    } catch (const PayrollDecimalDurationParser::ParseError&) {
        throw Refused{"invalidDuration", std::string(message)};
    }
}

// Payroll issues follow every change of a production with confirmed pay.
inline void keepPayrollIssuesCurrent(ModelContext& context, const Uuid& productionID) {
    payroll_issues::keepCurrent(context, productionID, now());
}

// Runs one action in one transaction and reports a refusal with its sentence; nothing is changed then.
// `afterChange` runs in the same transaction when the action succeeded and changed the store.
template <typename Action, typename AfterChange>
inline int actThen(CommandSession& session, Action&& action, AfterChange&& afterChange) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    const auto production = session.production();
    if (!production) return exitRefused;
    try {
        return store->perform([&](ModelContext& context) {
            const int changesBefore = context.database().getTotalChanges();
            const int status = action(context, *production);
            if (status == exitSuccess && context.database().getTotalChanges() != changesBefore) afterChange(context, *production);
            return status;
        });
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const DTSWorkflowError& error) {
        return session.refuseWithTitle("refused", error.title(), error.what());
    } catch (const ModelValidationError& error) {
        return session.refuse("refused", error.what());
    } catch (const DomainError& error) {
        return session.refuse(error.caseName(), error.description());
    }
}

// A user action on the current production; an action with an alert title and sentence of its own for a
// failed save reports a store failure under them. Payroll issues follow every change.
template <typename Action>
inline int act(CommandSession& session, Action&& action, std::string_view failedTitle = {}, std::string_view failedSentence = {}) {
    if (!failedTitle.empty()) {
        try {
            return act(session, std::forward<Action>(action));
        } catch (const StoreActionError& error) {
            return session.refuseWithTitle("storeActionFailed", std::string(failedTitle),
                                           std::string(failedSentence) + " " + error.what());
        }
    }
    return actThen(session, std::forward<Action>(action),
                   [](ModelContext& context, const Production& production) { keepPayrollIssuesCurrent(context, production.id); });
}

}  // namespace tessel::command_actions

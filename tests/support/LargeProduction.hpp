#pragma once

#include "App/model/CrewRoster.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ModelContext.hpp"
#include "App/rules/Positions.hpp"
#include "App/rules/RateCards.hpp"
#include "bench/Season.hpp"

// A production as large as a season gets, with every kind of record an archive carries: the season's
// crew and time sheets, ten positions on a rate card with contract setups, a third of the crew engaged
// in a position, dated terms (a mid-season raise, guarantees, box rentals), activities, a confirmed
// stub per person for the first week and a payroll issue for some of them. Stubs and issues are written
// as their stored records.
namespace tessel::testing {

using namespace std::chrono;

inline void addEverythingElse(TesselStore& store, const bench::Crew& crew) {
    store.perform([&](ModelContext& context) {
        const Instant now = sys_days(2026y / January / 5) + hours(9);
        const CalendarDate start(2026y / January / 5), raise(2026y / March / 2);
        std::vector<PositionRecord> positions;
        for (int i = 0; i < 10; ++i) {
            PositionEdit edit;
            edit.positionName = "Position " + std::to_string(i);
            edit.occupationCode = std::optional<std::string>(std::to_string(7000 + i));
            if (i % 2 == 0) edit.overtime = PositionProvision{PositionProvisionMode::custom, (9 + i % 3) * 3600, Decimal::parse("1.5"), {}};
            positions.push_back(positions::add(context, PositionScope::production, crew.productionID, edit, now));
            rate_cards::addScale(context, crew.productionID, "2026 Basic", positions.back(), "5" + std::to_string(i) + ".20", start, EmploymentSchedule::daily);
        }
        const auto card = rate_cards::cards(context, crew.productionID).front();
        for (int i = 0; i < 5; ++i) {
            auto& terms = context.prepare(
                "INSERT INTO ProductionRateCardPositionTerms (id, productionRateCardID, productionPositionID, dailyDefaultsData, weeklyDefaultsData, "
                "payloadFormatVersion, createdAt, modifiedAt) VALUES (?1, ?2, ?3, CAST(?4 AS BLOB), CAST('{}' AS BLOB), 1, ?5, ?5)");
            columns::bind(terms, 1, Uuid::generate());
            columns::bind(terms, 2, card.id);
            columns::bind(terms, 3, positions[i].id);
            columns::bind(terms, 4, std::string(R"({"scheduleOverrides":{"overtimeMode":"custom","overtimeThresholdSeconds":36000}})"));
            columns::bind(terms, 5, now);
            terms.exec();
        }
        for (std::size_t i = 0; i < crew.members.size(); ++i) {
            const auto& engagement = crew.members[i].second;
            if (i % 3 == 0) rate_cards::engageInPosition(context, engagement.id, positions[i % 10], start, i % 2 == 0, now);
            crew_roster::setRate(context, engagement.id, raise, "47.25", "USD");
            if (i % 7 == 0) crew_roster::setGuarantee(context, engagement.id, start, 10 * 3600);
            if (i % 5 == 0) crew_roster::setBoxRental(context, engagement.id, start, "35.00", "USD");
        }
        const auto week = payroll_week_repository::weeks(context, crew.productionID).front();
        for (std::size_t i = 0; i < crew.members.size(); i += 10) {
            payroll_week_repository::createActivity(context, {Uuid::generate(), week.id, CalendarDate(floor<days>(week.startDate)), "travel",
                                                              std::int64_t{2 * 3600}, crew.members[i].first.id, crew.members[i].second.id});
        }
        for (std::size_t i = 0; i < crew.members.size(); ++i) {
            const Uuid stubID = Uuid::generate();
            auto& stub = context.prepare(
                "INSERT INTO ConfirmedPayStubActualPay (id, productionID, crewMemberID, payrollWeekID, payrollWeekStart, payrollWeekEnd, "
                "printedEmployeeName, printedPayPeriodStart, printedPayPeriodEnd, printedOccupation, totalHours, gross, sourcePDFData, "
                "sourceFilename, importedAt, confirmedAt, modifiedAt) VALUES (?1, ?2, ?3, ?4, ?8, ?9, ?5, ?8, ?9, 'ELECTRICIAN', '55.0', "
                "'2520.00', ?10, ?6, ?7, ?7, ?7)");
            columns::bind(stub, 1, stubID);
            columns::bind(stub, 2, crew.productionID);
            columns::bind(stub, 3, crew.members[i].first.id);
            columns::bind(stub, 4, week.id);
            columns::bind(stub, 5, "CREW " + std::to_string(i));
            columns::bind(stub, 6, "stub-" + std::to_string(i) + ".pdf");
            columns::bind(stub, 7, now);
            columns::bind(stub, 8, start);
            columns::bind(stub, 9, CalendarDate(2026y / January / 11));
            columns::bindBlob(stub, 10, "%PDF-1.4 stub " + std::to_string(i));
            stub.exec();
            int order = 0;
            for (const auto& [label, hours, rate, amount] : {std::tuple("REGULAR", "50.0", "45.00", "2250.00"), std::tuple("OVERTIME", "5.0", "67.50", "337.50"),
                                                            std::tuple("MEAL PENALTY", "", "", "-67.50")}) {
                auto& line = context.prepare(
                    "INSERT INTO ConfirmedPayStubEarningLine (id, payStubID, printedLabel, hours, rate, amount, displayOrder) "
                    "VALUES (?1, ?2, ?3, NULLIF(?4, ''), NULLIF(?5, ''), ?6, ?7)");
                columns::bind(line, 1, Uuid::generate());
                columns::bind(line, 2, stubID);
                columns::bind(line, 3, std::string(label));
                columns::bind(line, 4, std::string(hours));
                columns::bind(line, 5, std::string(rate));
                columns::bind(line, 6, std::string(amount));
                columns::bind(line, 7, static_cast<std::int64_t>(order++));
                line.exec();
            }
            if (i % 4 != 0) continue;
            auto& issue = context.prepare(
                "INSERT INTO PayrollIssue (id, identityKey, productionID, crewID, weekID, categoryKey, title, nature, expectedAmount, "
                "actualAmount, differenceAmount, currency, fingerprint, stateRaw, note, createdAt, updatedAt) VALUES (?1, ?2, ?3, ?4, ?5, "
                "'expected:overtime', 'Overtime', 'underpaid', '405.00', '337.50', '-67.50', 'USD', ?6, 'needsAttention', 'Asked payroll.', ?7, ?7)");
            columns::bind(issue, 1, Uuid::generate());
            columns::bind(issue, 2, crew.productionID.text() + "|" + crew.members[i].first.id.text() + "|" + week.id.text() + "|expected:overtime|");
            columns::bind(issue, 3, crew.productionID);
            columns::bind(issue, 4, crew.members[i].first.id);
            columns::bind(issue, 5, week.id);
            columns::bind(issue, 6, std::string("405.00|337.50"));
            columns::bind(issue, 7, now);
            issue.exec();
        }
    });
}

}  // namespace tessel::testing

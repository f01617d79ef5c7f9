#include "StoreCommands.hpp"

#include "App/actualpay/PayComparison.hpp"

#include <array>
#include <chrono>
#include <map>
#include <sstream>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/DailyTimeSheets.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionProfile.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/StoreSchema.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace calendar_text;
namespace weeks = payroll_week_repository;

constexpr std::array<const char*, 7> weekdayNames{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

using command_actions::now;

std::int64_t countRows(SQLite::Database& db, std::string_view table) {
    return db.execAndGet("SELECT COUNT(*) FROM \"" + std::string(table) + "\"").getInt64();
}

// ---- store info ----

int storeInfo(CommandSession& session) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    const auto& environment = store->environment();
    Json counts = Json::object();
    std::ostringstream text;
    text << "Environment: " << toRawValue(environment.kind) << " (" << description(environment.kind) << ")\n"
         << "Store: " << environment.storeURL.string() << "\n"
         << "Schema version: " << store->schemaVersion() << "\n"
         << "Model identifier: " << store_schema::modelIdentifier << "\n"
         << "Former shared store: " << store->legacyStoreInspectionResult() << "\n"
         << "Entities:\n";
    for (std::string_view table : store_schema::entityTables()) {
        const auto count = countRows(store->database(), table);
        counts[std::string(table)] = count;
        if (count > 0) text << "  " << table << ": " << count << "\n";
    }
    Json backups = Json::array();
    const auto listed = listStoreBackups(environment);
    text << "Pre-open backups (" << listed.size() << "; the newest " << store_backups::keptNewest
         << " and the newest of each of the last " << store_backups::keptDays << " days are kept):\n";
    for (const auto& backup : listed) {
        backups.push_back(Json{{"directory", backup.directoryURL.string()}, {"files", backup.copiedFileNames}});
        text << "  " << backup.directoryURL.string() << "\n";
    }
    // Settings of DTS rows that no longer exist: what a repair or a support request needs to know.
    Json integrity = Json::array();
    for (const auto& finding : CrewOnDTS::orphanedRowSettings(store->context())) {
        integrity.push_back(finding);
        text << "DTS Data Integrity Warning: " << finding << "\n";
    }
    // Confirmed pay stubs that something other than Tessel changed.
    for (const auto& production : production_repository::list(store->context())) {
        for (const auto& finding : confirmed_pay_stubs::integrityFindings(store->context(), production.id)) {
            integrity.push_back(finding);
            text << "Pay Stub Data Integrity Warning (" << production.name << "): " << finding << "\n";
        }
    }
    Json json{{"environment", toRawValue(environment.kind)},
              {"storePath", environment.storeURL.string()},
              {"dataIntegrity", std::move(integrity)},
              {"schemaVersion", store->schemaVersion()},
              {"modelIdentifier", std::string(store_schema::modelIdentifier)},
              {"legacyStoreInspectionResult", store->legacyStoreInspectionResult()},
              {"entityCounts", std::move(counts)},
              {"backups", std::move(backups)}};
    if (store->preOpenBackup()) json["preOpenBackup"] = store->preOpenBackup()->directoryURL.string();
    session.answer(json, text.str());
    return exitSuccess;
}

// ---- production ----

Json productionJSON(const Production& p) {
    Json json{{"id", p.id.text()}, {"name", p.name}, {"createdAt", formatInstant(p.createdAt)}};
    if (p.startDate) json["startDate"] = formatDate(*p.startDate);
    json["dtsTimeDisplayRawValue"] = toRawValue(p.dtsTimeDisplay);
    json["defaultLunchDurationSeconds"] = p.defaultLunchDurationSeconds;
    json["currencyCode"] = p.currencyCode;
    return json;
}

int createProduction(CommandSession& session, const std::string& name) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    try {
        const auto defaults = session.settings().newProductionDefaults();
        const Production created = store->perform([&](ModelContext& context) {
            return ProductionSetup::createProduction(context, name, defaults, now());
        });
        Json json = productionJSON(created);
        std::string text = "Created production \u201C" + created.name + "\u201D (" + created.id.text() + ").\n";
        if (const auto problem = session.rememberProduction(created.id)) {
            const std::string warning = "It could not be remembered as the most recently used production: " + *problem;
            json["warning"] = warning;
            session.streams().err << warning << '\n';
        }
        session.answer(json, text);
        return exitSuccess;
    } catch (const ModelValidationError& error) {
        return session.refuse("invalidProduction", error.what());
    }
}

int listProductions(CommandSession& session) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    const auto recent = session.settings().mostRecentlyUsedProductionID();
    Json list = Json::array();
    std::ostringstream text;
    for (const auto& p : production_repository::list(store->context())) {
        list.push_back(productionJSON(p));
        text << (recent == p.id ? "* " : "  ") << p.id.text() << "  " << p.name << "  (" << p.currencyCode << ", created "
             << formatDate(CalendarDate(std::chrono::floor<std::chrono::days>(p.createdAt))) << ")\n";
    }
    if (list.empty()) text << "No productions yet. Create one with \u201Ctessel production create NAME\u201D.\n";
    session.answer(Json{{"productions", std::move(list)}}, text.str());
    return exitSuccess;
}

// The production given by identifier or exact name.
std::optional<Production> productionNamed(CommandSession& session, const std::string& idOrName) {
    TesselStore* store = session.store();
    if (!store) return std::nullopt;
    const auto id = Uuid::parse(idOrName);
    for (const auto& p : production_repository::list(store->context())) {
        if ((id && p.id == *id) || p.name == idOrName) return p;
    }
    session.refuse("productionNotFound", "There is no production named \u201C" + idOrName + "\u201D.");
    return std::nullopt;
}

int showProduction(CommandSession& session, const std::string& idOrName) {
    const auto production = productionNamed(session, idOrName);
    if (!production) return exitRefused;
    ModelContext& context = session.store()->context();
    const auto crew = crew_repository::crewMembers(context, production->id);
    const auto allWeeks = weeks::weeks(context, production->id);
    std::size_t dtsCount = 0;
    for (const auto& week : allWeeks) dtsCount += weeks::workdays(context, week.id).size();
    const int startWeekday = ProductionWeekCalendars::payrollStartWeekday(context, production->id);

    Json json = productionJSON(*production);
    json["payrollWeekStartWeekday"] = startWeekday;
    json["crewCount"] = crew.size();
    json["payrollWeekCount"] = allWeeks.size();
    json["dtsCount"] = dtsCount;
    std::ostringstream text;
    text << production->name << "\n"
         << "  ID: " << production->id.text() << "\n"
         << "  Created: " << formatInstant(production->createdAt) << "\n"
         << "  Currency: " << production->currencyCode << "\n"
         << "  DTS times: " << toRawValue(production->dtsTimeDisplay) << "\n"
         << "  Default lunch: " << production->defaultLunchDurationSeconds / 60 << " minutes\n"
         << "  Payroll Week starts on: " << weekdayNames[static_cast<std::size_t>(startWeekday - 1)] << "\n"
         << "  Crew: " << crew.size() << ", Payroll Weeks: " << allWeeks.size() << ", DTS: " << dtsCount << "\n";
    const ProductionIdentity identity = production_profile::identity(context, production->id);
    const bool defaultNDB = DailyTimeSheets::defaultNonDeductibleBreakfast(context, production->id);
    const auto shownText = [](const std::string& value) { return value.empty() ? std::string("-") : value; };
    text << "  Start date: " << (production->startDate ? formatDate(*production->startDate) : "-") << "\n"
         << "  Department: " << shownText(identity.department) << "\n"
         << "  Company: " << shownText(identity.company) << "\n"
         << "  Default work state: " << shownText(identity.defaultWorkState) << "\n"
         << "  Department head: " << shownText(identity.departmentHeadName) << "\n"
         << "  Default NDB for new daily entries: " << (defaultNDB ? "on" : "off") << "\n";
    const auto exportChoice = dts_export::choice(context, production->id);
    static constexpr std::array<std::string_view, 3> formWords{"none", "template", "builtin"};  // by mode
    const std::string form = exportChoice.unsupportedRawValue ? *exportChoice.unsupportedRawValue
                                                              : std::string(formWords[static_cast<std::size_t>(exportChoice.mode)]);
    text << "  DTS export form: " << form << " (built-in form " << (exportChoice.legacyKestrelEligible ? "on" : "off") << ")\n";
    json["dtsExportTemplateMode"] = exportChoice.unsupportedRawValue.value_or(std::string(toRawValue(exportChoice.mode)));
    json["legacyKestrelEligible"] = exportChoice.legacyKestrelEligible;
    const auto comparison = pay_comparison_settings::read(context, production->id);
    text << "  Payroll terminology: " << label(comparison.profile) << ", rounding tolerance " << comparison.tolerance.toString() << "\n";
    json["payrollTerminologyProfile"] = std::string(toRawValue(comparison.profile));
    json["roundingTolerance"] = comparison.tolerance.toString();
    json["department"] = identity.department;
    json["company"] = identity.company;
    json["defaultWorkState"] = identity.defaultWorkState;
    json["departmentHeadName"] = identity.departmentHeadName;
    json["defaultNonDeductibleBreakfast"] = defaultNDB;
    session.answer(json, text.str());
    return exitSuccess;
}

int deleteProduction(CommandSession& session, const std::string& idOrName) {
    const auto production = productionNamed(session, idOrName);
    if (!production) return exitRefused;
    session.store()->perform([&](ModelContext& context) { production_repository::remove(context, production->id); });
    if (session.settings().mostRecentlyUsedProductionID() == production->id) {
        if (const auto problem = session.rememberProduction(std::nullopt)) session.streams().err << *problem << '\n';
    }
    session.answer(Json{{"deleted", production->id.text()}},
                   "Deleted production \u201C" + production->name + "\u201D and everything it held.\n");
    return exitSuccess;
}

// ---- week ----

Json weekJSON(ModelContext& context, const PayrollWeek& week) {
    const CalendarDate start(std::chrono::floor<std::chrono::days>(week.startDate));
    const CalendarDate end(std::chrono::sys_days(start) + std::chrono::days(6));
    return Json{{"id", week.id.text()},
                {"startDate", formatDate(start)},
                {"endDate", formatDate(end)},
                {"workweekSourceDefinitionID", week.workweekSourceDefinitionID.text()},
                {"workweekStartWeekday", week.workweekStartWeekday},
                {"workweekStartHour", week.workweekStartHour},
                {"workweekStartMinute", week.workweekStartMinute},
                {"dtsCount", weeks::workdays(context, week.id).size()},
                {"activityCount", weeks::activities(context, week.id).size()}};
}

int listWeeks(CommandSession& session) {
    const auto production = session.production();
    if (!production) return exitRefused;
    ModelContext& context = session.store()->context();
    Json list = Json::array();
    std::ostringstream text;
    const auto all = weeks::weeks(context, production->id);
    std::map<Instant, int> weeksStarting;
    for (const auto& week : all) ++weeksStarting[week.startDate];
    for (const auto& week : all) {
        Json json = weekJSON(context, week);
        const bool duplicate = weeksStarting[week.startDate] > 1;  // a rebuild is refused until it is resolved
        json["duplicateStartDate"] = duplicate;
        text << json["startDate"].get<std::string>() << " to " << json["endDate"].get<std::string>() << "  DTS: "
             << json["dtsCount"] << "  Non-DTS activities: " << json["activityCount"] << "  Work Week starts "
             << weekdayNames[static_cast<std::size_t>(std::clamp(week.workweekStartWeekday, 1, 7) - 1)]
             << (duplicate ? "  " + std::string(ProductionWeekCalendars::duplicateStartDateLabel) : "") << "\n";
        list.push_back(std::move(json));
    }
    if (list.empty()) text << "No Payroll Weeks yet; creating a DTS creates its week.\n";
    session.answer(Json{{"production", production->id.text()}, {"payrollWeeks", std::move(list)}}, text.str());
    return exitSuccess;
}

int rebuildWeeks(CommandSession& session) {
    const auto production = session.production();
    if (!production) return exitRefused;
    try {
        const auto summary = session.store()->perform(
            [&](ModelContext& context) { return ProductionWeekCalendars::rebuild(context, production->id); });
        session.answer(Json{{"movedRecords", summary.movedRecords},
                            {"createdWeeks", summary.createdWeeks},
                            {"removedWeeks", summary.removedWeeks}},
                       "Rebuilt Payroll Weeks: " + counted(summary.movedRecords, "DTS or activity", "DTS and activities") + " regrouped, " +
                           counted(summary.createdWeeks, "week", "weeks") + " created, " +
                           counted(summary.removedWeeks, "emptied week", "emptied weeks") + " removed.\n");
        return exitSuccess;
    } catch (const PayrollWeekRebuildError& error) {
        return session.refuse(error.caseName(), error.description());
    }
}

int deleteWeeks(CommandSession& session, const std::string& which, bool all) {
    const auto production = session.production();
    if (!production) return exitRefused;
    TesselStore& store = *session.store();
    if (all) {
        const int count = store.perform(
            [&](ModelContext& context) { return ProductionWeekCalendars::deleteAllWeeks(context, production->id); });
        session.answer(Json{{"deletedWeeks", count}}, "Deleted every Payroll Week, DTS, crew-entry row, and Non-DTS Activity for " +
                                                          production->name + " (" + counted(count, "week", "weeks") + ").\n");
        return exitSuccess;
    }
    const auto date = parseDate(which);
    const auto id = Uuid::parse(which);
    std::optional<PayrollWeek> target;
    for (const auto& week : weeks::weeks(store.context(), production->id)) {
        const CalendarDate start(std::chrono::floor<std::chrono::days>(week.startDate));
        const bool holdsDate = date && std::chrono::sys_days(*date) >= std::chrono::sys_days(start) &&
                               std::chrono::sys_days(*date) < std::chrono::sys_days(start) + std::chrono::days(7);
        if ((id && week.id == *id) || holdsDate) target = week;
    }
    if (!date && !id) return session.refuse("invalidWeek", "Name the Payroll Week by a date in it (YYYY-MM-DD) or by its identifier.");
    if (!target) {
        return session.refuse("weekNotFound", (date ? "There is no Payroll Week holding " : "There is no Payroll Week with the identifier ") + which + ".");
    }
    store.perform([&](ModelContext& context) { ProductionWeekCalendars::deleteWeek(context, target->id); });
    session.answer(Json{{"deleted", target->id.text()}}, "Deleted the Payroll Week with its DTS and Non-DTS Activity.\n");
    return exitSuccess;
}

int setStartWeekday(CommandSession& session, int weekday) {
    const auto production = session.production();
    if (!production) return exitRefused;
    if (weekday < 1 || weekday > 7) return session.refuse("invalidWeekday", "Choose a weekday from 1 (Sunday) to 7 (Saturday).");
    session.store()->perform(
        [&](ModelContext& context) { ProductionWeekCalendars::setPayrollStartWeekday(context, production->id, weekday); });
    session.answer(Json{{"payrollWeekStartWeekday", weekday}},
                   std::string("Payroll Week starts on ") + weekdayNames[static_cast<std::size_t>(weekday - 1)] + ". " +
                       std::string(ProductionWeekCalendars::startWeekdayChangeNote) + "\n");
    return exitSuccess;
}

// ---- settings ----

int getSettings(CommandSession& session, const std::string& key) {
    UserSettingsStore& settings = session.settings();
    try {
        if (!key.empty()) {
            const Json value = Json::parse(settings.value(key).dump());
            session.answer(Json{{"key", key}, {"value", value}}, (value.is_string() ? value.get<std::string>() : value.dump()) + "\n");
            return exitSuccess;
        }
        Json all = Json::object();
        std::ostringstream text;
        for (const auto& known : userSettingsKeys()) {
            const Json value = Json::parse(settings.value(known.key).dump());
            all[std::string(known.key)] = value;
            text << known.key << " = " << (value.is_string() ? value.get<std::string>() : value.dump()) << "\n";
        }
        session.answer(all, text.str());
        return exitSuccess;
    } catch (const UserSettingsError& error) {
        return session.refuse("unknownSetting", error.what());
    }
}

int setSetting(CommandSession& session, const std::string& key, const std::string& value) {
    try {
        session.settings().set(key, value);
        const Json stored = Json::parse(session.settings().value(key).dump());
        session.answer(Json{{"key", key}, {"value", stored}}, key + " = " + (stored.is_string() ? stored.get<std::string>() : stored.dump()) + "\n");
        return exitSuccess;
    } catch (const UserSettingsSaveError& error) {
        return session.refuse("settingsNotSaved", error.what());
    } catch (const UserSettingsError& error) {
        return session.refuse("invalidSetting", error.what());
    } catch (const std::exception&) {
        return session.refuse("settingsNotSaved", "The settings could not be saved.");
    }
}

}  // namespace

void addStoreCommands(CLI::App& app, CommandSession& session, StoreCommandArguments& arguments, int& exitStatus) {
    // Named references rather than a structured binding: the callbacks capture them, which older Clang refuses.
    std::string& name = arguments.name;
    std::string& idOrName = arguments.idOrName;
    std::string& whichWeek = arguments.week;
    bool& allWeeks = arguments.allWeeks;
    int& weekday = arguments.weekday;
    std::string& key = arguments.key;
    std::string& value = arguments.value;
    auto* store = app.add_subcommand("store", "The data store")->require_subcommand(1);
    store->add_subcommand("info", "Where the store is, its schema, what it holds and its backups")
        ->callback([&] { exitStatus = storeInfo(session); });
    store->add_subcommand("reset-test", "Delete the test store and its settings at its next launch")->callback([&] {
        const fs::path root = session.environment().rootURL;
        requestTestStoreReset(session.options().testStore ? root.parent_path() : root);
        session.answer(Json{{"resetRequested", true}},
                       std::string(resetTestStoreTitle) + "\n" + std::string(resetTestStoreExplanation) + "\n");
        exitStatus = exitSuccess;
    });

    auto* production = app.add_subcommand("production", "Create, list, show and delete productions")->require_subcommand(1);
    production->add_subcommand("create", "Create a production")
        ->callback([&] { exitStatus = createProduction(session, name); })
        ->add_option("NAME", name, "The production's name")
        ->required();
    production->add_subcommand("list", "List the productions; * marks the current one")
        ->callback([&] { exitStatus = listProductions(session); });
    production->add_subcommand("show", "Show a production")
        ->callback([&] { exitStatus = showProduction(session, idOrName); })
        ->add_option("ID", idOrName, "The production's identifier or name")
        ->required();
    production->add_subcommand("delete", "Delete a production with everything it holds")
        ->callback([&] { exitStatus = deleteProduction(session, idOrName); })
        ->add_option("ID", idOrName, "The production's identifier or name")
        ->required();

    auto* week = app.add_subcommand("week", "The production's Payroll Weeks")->require_subcommand(1);
    week->add_subcommand("list", "List the Payroll Weeks")->callback([&] { exitStatus = listWeeks(session); });
    week->add_subcommand("rebuild", "Regroup every DTS and activity by the current Payroll Week start day")
        ->callback([&] { exitStatus = rebuildWeeks(session); });
    auto* remove = week->add_subcommand("delete", "Delete a Payroll Week (by a date in it or its identifier), or --all");
    remove->add_option("WEEK", whichWeek, "A date in the week, or the week's identifier");
    remove->add_flag("--all", allWeeks, "Delete All Payroll Weeks & DTS Data for This Production");
    remove->callback([&] {
        // Exactly one of a week or --all.
        if (allWeeks != whichWeek.empty()) {
            session.streams().err << "Give one week to delete, or --all.\n";
            exitStatus = exitUsage;
            return;
        }
        exitStatus = deleteWeeks(session, whichWeek, allWeeks);
    });
    week->add_subcommand("start-weekday", "Set the day Payroll Weeks start on (1 = Sunday … 7 = Saturday)")
        ->callback([&] { exitStatus = setStartWeekday(session, weekday); })
        ->add_option("WEEKDAY", weekday, "1 = Sunday … 7 = Saturday")
        ->required();

    auto* settings = app.add_subcommand("settings", "User settings")->require_subcommand(1);
    settings->add_subcommand("get", "Show one setting, or all of them")
        ->callback([&] { exitStatus = getSettings(session, key); })
        ->add_option("KEY", key, "A key such as userSettings.newProductionCurrencyCode");
    auto* set = settings->add_subcommand("set", "Change a setting");
    set->add_option("KEY", key, "The setting's key")->required();
    set->add_option("VALUE", value, "The new value; empty clears an optional setting")->required();
    set->callback([&] { exitStatus = setSetting(session, key, value); });
}

}  // namespace tessel

#include "CommandSession.hpp"

#include <fstream>
#include <iostream>
#include <sstream>

#include "App/dts/CrewDailyEntryRepair.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel {

namespace {
constexpr std::string_view diagnosticCommand = "tessel store diagnostic";
}  // namespace

TesselStoreEnvironment CommandSession::environment() const {
    const fs::path root = options_.storeRoot.empty() ? defaultApplicationDataRoot() : fs::path(options_.storeRoot);
    return TesselStoreEnvironment::make(options_.testStore ? TesselStoreEnvironmentKind::test : TesselStoreEnvironmentKind::normal,
                                        root);
}

void CommandSession::prepareEnvironment() {
    if (prepared_) return;
    prepared_ = true;
    const auto kind = options_.testStore ? TesselStoreEnvironmentKind::test : TesselStoreEnvironmentKind::normal;
    applyPendingTestStoreReset(environment(), UserSettingsStore::settingsPath(kind, UserSettingsStore::defaultConfigRoot()));
}

TesselStore* CommandSession::store() {
    if (store_) return store_.get();
    prepareEnvironment();
    auto result = openTesselStore(environment());
    if (auto* opened = std::get_if<std::unique_ptr<TesselStore>>(&result)) {
        store_ = std::move(*opened);
        checkCrewRows();
        return store_.get();
    }
    const auto& state = std::get<TesselUnavailableStoreState>(result);
    const std::string errorCase(state.errorCase ? toRawValue(*state.errorCase) : "storeUnavailable");
    if (options_.json) {
        Json json{{"error", errorCase},
                  {"title", std::string(TesselUnavailableStoreState::title)},
                  {"storePath", state.storeURL.string()}};
        if (state.backupRootURL) json["backupRoot"] = state.backupRootURL->string();
        json["details"] = state.details;
        json["diagnosticCommand"] = std::string(diagnosticCommand);
        json["explanation"] = std::string(TesselUnavailableStoreState::message);
        json["message"] = state.errorDescription;
        streams_.out << decimal_json::dump(json, 2) << '\n';
    } else {
        streams_.err << TesselUnavailableStoreState::title << "\n"
                     << TesselUnavailableStoreState::message << "\n"
                     << state.errorDescription << "\n"
                     << "Store: " << state.storeURL.string() << "\n";
        if (state.backupRootURL) streams_.err << "Backups: " << state.backupRootURL->string() << "\n";
        streams_.err << state.details << "\n"
                     << "To send the store to Tessel support, export a diagnostic package with \u201C" << diagnosticCommand << "\u201D.\n";
    }
    return nullptr;
}

// The start-up data-integrity check of DTS crew rows, saved once; a failure leaves the store as it was.
void CommandSession::checkCrewRows() {
    try {
        if (!CrewDailyEntryRepair::hasDuplicateRows(store_->context())) return;
        const auto report = store_->perform([](ModelContext& context) { return CrewDailyEntryRepair::run(context); });
        if (const auto alert = CrewDailyEntryRepair::alertText(report)) {
            streams_.err << CrewDailyEntryRepair::alertTitle << "\n" << *alert << "\n";
        }
    } catch (const std::exception& error) {
        streams_.err << CrewDailyEntryRepair::checkFailedPrefix << " " << error.what() << "\n";
    }
}

UserSettingsStore& CommandSession::settings() {
    if (!settings_) {
        prepareEnvironment();
        settings_ = UserSettingsStore::load(options_.testStore ? TesselStoreEnvironmentKind::test : TesselStoreEnvironmentKind::normal,
                                            UserSettingsStore::defaultConfigRoot());
        if (settings_->readProblem()) streams_.err << *settings_->readProblem() << '\n';
    }
    return *settings_;
}

std::optional<Production> CommandSession::production() {
    TesselStore* opened = store();
    if (!opened) return std::nullopt;
    const auto all = production_repository::list(opened->context());
    if (!options_.production.empty()) {
        const auto id = Uuid::parse(options_.production);
        for (const auto& candidate : all) {
            if ((id && candidate.id == *id) || candidate.name == options_.production) return candidate;
        }
        refuse("productionNotFound", "There is no production named \u201C" + options_.production + "\u201D.");
        return std::nullopt;
    }
    if (const auto recent = settings().mostRecentlyUsedProductionID()) {
        for (const auto& candidate : all) {
            if (candidate.id == *recent) return candidate;
        }
    }
    refuse("noProduction", "Choose a production with --production; there is no recently used production.");
    return std::nullopt;
}

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::vector<CrewMember> crewMembersNamed(ModelContext& context, const Uuid& productionID, const std::string& name) {
    auto crew = crew_repository::crewMembers(context, productionID);
    std::erase_if(crew, [&](const CrewMember& member) { return member.displayName != name; });
    return crew;
}

std::optional<PayrollWeek> weekHolding(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    using namespace std::chrono;
    const int startWeekday = ProductionWeekCalendars::payrollStartWeekday(context, productionID);
    const auto start = ProductionWeekCalendars::payrollWeekStart(date, startWeekday);
    const auto found = payroll_week_repository::weeksStartingAt(context, productionID, Instant(sys_days(start)));
    if (!found.empty()) return found.front();
    for (const auto& week : payroll_week_repository::weeks(context, productionID)) {
        const auto first = floor<days>(week.startDate);
        if (sys_days(date) >= first && sys_days(date) < first + days(7)) return week;
    }
    return std::nullopt;
}

CrewMember crewMemberNamed(ModelContext& context, const Uuid& productionID, const std::string& name) {
    const auto named = crewMembersNamed(context, productionID, name);
    if (named.empty()) throw Refused{"crewMemberNotFound", "There is no crew member named \u201C" + name + "\u201D on this production."};
    if (named.size() > 1) {
        throw Refused{"crewMemberAmbiguous",
                      "More than one crew member is named \u201C" + name + "\u201D; give them different names to tell them apart."};
    }
    return named.front();
}

int CommandSession::confirmationNeeded(std::string_view title, const std::string& question) {
    if (!options_.json) streams_.err << title << '\n' << question << '\n';
    return refuse("confirmationRequired", "Nothing was changed; run the command again with --yes to confirm.",
                  Json{{"title", std::string(title)}, {"question", question}});
}

int CommandSession::refuse(std::string_view errorCase, const std::string& message, const Json& payload) {
    if (options_.json) {
        Json json{{"error", std::string(errorCase)}};
        for (const auto& [key, value] : payload.items()) json[key] = value;
        json["message"] = message;
        streams_.out << decimal_json::dump(json, 2) << '\n';
    } else {
        streams_.err << message << '\n';
    }
    return exitRefused;
}

int CommandSession::refuseWithTitle(std::string_view errorCase, const std::string& title, const std::string& message) {
    if (title.empty()) return refuse(errorCase, message);
    if (options_.json) return refuse(errorCase, message, Json{{"title", title}});
    streams_.err << title << '\n';
    return refuse(errorCase, message);
}

std::optional<std::string> CommandSession::readInputFile(const std::string& path) {
    std::error_code error;
    // A folder opens as a stream on Linux but fails on its first read; it is refused here instead.
    if (fs::is_regular_file(path, error)) {
        std::ifstream in(path, std::ios::binary);
        // An empty file is read as empty: inserting an empty stream buffer reports a failure of its own.
        if (in && in.peek() == std::ifstream::traits_type::eof() && !in.bad()) return std::string();
        std::ostringstream bytes;
        if (in && bytes << in.rdbuf() && !in.bad()) return std::move(bytes).str();
    }
    streams_.err << "The file \u201C" << path << "\u201D could not be read.\n";
    return std::nullopt;
}

std::optional<std::string> CommandSession::rememberProduction(const std::optional<Uuid>& productionID) {
    try {
        settings().setMostRecentlyUsedProductionID(productionID);
        return std::nullopt;
    } catch (const std::exception& error) {
        return std::string(error.what());
    }
}

void CommandSession::answer(const Json& json, const std::string& text) {
    // An answer given inside an action waits for its commit: a failed save then says only that it failed.
    if (store_ && store_->isPerforming()) {
        store_->afterCommit([this, json, text] { answer(json, text); });
        return;
    }
    if (options_.json) {
        streams_.out << decimal_json::dump(json, 2) << '\n';
    } else {
        streams_.out << text;
    }
}

}  // namespace tessel

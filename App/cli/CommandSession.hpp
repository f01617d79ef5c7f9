#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "App/model/JSONFields.hpp"
#include "App/model/PersistenceModels.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/model/UserSettings.hpp"
#include "App/cli/CommandLine.hpp"

namespace tessel {

// A refusal of the user's entry, thrown inside a command's action: its sentence, and the case name for --json.
struct Refused {
    std::string errorCase;
    std::string message;
};

// The production's crew members who carry a display name.
std::vector<CrewMember> crewMembersNamed(ModelContext& context, const Uuid& productionID, const std::string& name);
// The crew member a command names. The command line names people by their display name, so a name that
// no one or more than one person of the production carries is refused rather than guessed.
CrewMember crewMemberNamed(ModelContext& context, const Uuid& productionID, const std::string& name);

// The Payroll Week holding a date, looked up by the production's start weekday and, failing that, among
// weeks made under an earlier start weekday.
std::optional<PayrollWeek> weekHolding(ModelContext& context, const Uuid& productionID, CalendarDate date);

// "1 week", "3 weeks": a count with its noun in the right number.
std::string counted(std::int64_t count, std::string_view one, std::string_view many);

// The global options every command shares.
struct GlobalOptions {
    std::string storeRoot;   // --store-root, else TESSEL_STORE_ROOT, else the application data folder
    bool testStore = false;  // --test-store
    bool json = false;       // --json
    std::string production;  // --production NAME|ID, else the most recently used production
};

// What a store-backed command works with: the store opened once, the user settings of its environment,
// and the way a refusal is reported (JSON on standard output with --json, the sentence on standard error).
class CommandSession {
public:
    CommandSession(const GlobalOptions& options, CommandStreams streams) : options_(options), streams_(streams) {}

    const GlobalOptions& options() const noexcept { return options_; }
    CommandStreams& streams() noexcept { return streams_; }
    TesselStoreEnvironment environment() const;

    // The open store; on a refusal, writes the unavailable state and returns nothing.
    TesselStore* store();
    UserSettingsStore& settings();
    // The production named by --production or, without it, the most recently used one; writes the
    // refusal and returns nothing when there is none.
    std::optional<Production> production();

    // Marks the production as the most recently used one. The action that chose it has already been
    // saved, so a settings file that cannot be written is not a failure of that action: the sentence
    // saying so is returned for the caller to add to its answer.
    std::optional<std::string> rememberProduction(const std::optional<Uuid>& productionID);
    // Writes a refusal: {"error", …, "message"} with --json, else the sentence; returns exitRefused.
    int refuse(std::string_view errorCase, const std::string& message, const Json& payload = Json::object());
    // A refusal the window shows as an alert: the title is the first line of the text, "title" in JSON.
    int refuseWithTitle(std::string_view errorCase, const std::string& title, const std::string& message);
    // An action that replaces or removes something says what it will do and needs --yes: the title and
    // question, then the refusal "Nothing was changed; …".
    int confirmationNeeded(std::string_view title, const std::string& question);
    // The bytes of a file the user named (a rules document, a ruleset file, a support package); when it
    // is not a readable file, writes "The file “…” could not be read." and returns nothing.
    std::optional<std::string> readInputFile(const std::string& path);
    // Writes an answer: the JSON with --json, else the text.
    void answer(const Json& json, const std::string& text);

private:
    // Carries out a requested test store reset before the test store or its settings are first used.
    void prepareEnvironment();
    void checkCrewRows();

    const GlobalOptions& options_;
    bool prepared_ = false;
    CommandStreams streams_;
    std::unique_ptr<TesselStore> store_;
    std::optional<UserSettingsStore> settings_;
};

}  // namespace tessel

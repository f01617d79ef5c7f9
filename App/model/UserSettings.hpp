#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "App/model/PersistenceModels.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel {

// A setting value given as text that its key does not take; the message says what it takes.
class UserSettingsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
// The settings file could not be written (or could not be read, and so is left alone); nothing changed.
class UserSettingsSaveError : public UserSettingsError {
public:
    using UserSettingsError::UserSettingsError;
};

// One settings key: its type, its default, and the rule applied when it is read.
struct UserSettingsKey {
    enum class Type { text, integer, boolean, tolerance, currencyCode, uuid, textSet };
    std::string_view key;
    Type type;
    nlohmann::json defaultValue;  // null: absent by default
    std::vector<std::string_view> allowedTexts;  // for enumerations stored as raw values
    std::optional<std::pair<std::int64_t, std::int64_t>> integerRange;  // out-of-range stored values read as the default
    std::string_view meaning;
    std::optional<std::pair<std::int64_t, std::int64_t>> settableRange = std::nullopt;  // narrower than read, when set
};

const std::vector<UserSettingsKey>& userSettingsKeys();

// What governs the golden hour advisory of a daily review.
struct GoldenHourAdvisorySettings {
    bool enabled = true;
    std::int64_t thresholdSeconds = 3600;
    std::set<std::string> dismissals{};  // advisory keys
};

// How the straight-time, overtime and double-time categories are labelled: by their payroll abbreviation
// ("ST", "OT", "DT") or by their multiplier ("1.5x").
enum class PayrollCategoryLabelPreference { payrollAbbreviation, multiplier };
struct PayrollCategoryLabelPreferences {
    PayrollCategoryLabelPreference straightTime = PayrollCategoryLabelPreference::payrollAbbreviation;
    PayrollCategoryLabelPreference overtime = PayrollCategoryLabelPreference::payrollAbbreviation;
    PayrollCategoryLabelPreference doubleTime = PayrollCategoryLabelPreference::payrollAbbreviation;
};

// The user's preferences outside any production, one JSON file per environment under
// $XDG_CONFIG_HOME/Tessel/ ("settings.json", "settings-test.json"). Changing a "newProduction…" value
// never touches existing productions: it is copied only when a production is created.
class UserSettingsStore {
public:
    // Reads the file (a missing or unreadable file gives every default) and, once, copies the settings of
    // the earlier preferences file.
    static UserSettingsStore load(TesselStoreEnvironmentKind environment, const std::filesystem::path& configRoot);
    // $XDG_CONFIG_HOME/Tessel, else ~/.config/Tessel.
    static std::filesystem::path defaultConfigRoot();
    // The earlier preferences file copied once: <configRoot>/../tessel/preferences.json.
    static std::filesystem::path legacyPreferencesPath(const std::filesystem::path& configRoot);
    // The file of an environment's settings.
    static std::filesystem::path settingsPath(TesselStoreEnvironmentKind environment, const std::filesystem::path& configRoot);

    const std::filesystem::path& path() const noexcept { return path_; }
    // Set when the settings file is there but could not be read: the one sentence that says so. Such a
    // file is never written over; every setting reads as its default for this run and changes are refused.
    const std::optional<std::string>& readProblem() const noexcept { return readProblem_; }

    // The effective value of a key, as JSON (defaults and range rules applied); throws UserSettingsError
    // for an unknown key.
    nlohmann::json value(std::string_view key) const;
    // Sets a key from its text form ("3", "true", "0.05", "numeric"; "" clears an optional value), and
    // writes the file. Refuses a value the key does not take.
    void set(std::string_view key, const std::string& text);

    int newProductionWorkweekWeekday() const;
    std::int64_t newProductionLunchDurationSeconds() const;
    DTSTimeDisplay newProductionDTSTimeDisplay() const;
    std::string newProductionCurrencyCode() const;
    Decimal newProductionRoundingTolerance() const;
    std::string defaultDepartment() const;
    std::optional<Uuid> mostRecentlyUsedProductionID() const;
    void setMostRecentlyUsedProductionID(const std::optional<Uuid>& id);

    PayrollCategoryLabelPreferences categoryLabels() const;
    bool showMonetaryDetails() const;
    GoldenHourAdvisorySettings goldenHourAdvisory() const;
    // Adds an advisory key to the dismissals (kept once) and writes the file.
    void dismissGoldenHourAdvisory(const std::string& key);

    // What a production created now starts with.
    NewProductionDefaults newProductionDefaults() const;

private:
    UserSettingsStore(std::filesystem::path path, nlohmann::json stored) : path_(std::move(path)), stored_(std::move(stored)) {}
    void save() const;

    std::filesystem::path path_;
    nlohmann::json stored_;
    std::optional<std::string> readProblem_;
};

}  // namespace tessel

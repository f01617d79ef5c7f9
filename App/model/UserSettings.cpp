#include "UserSettings.hpp"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <unistd.h>

namespace tessel {
namespace {

using json = nlohmann::json;
using Type = UserSettingsKey::Type;

constexpr std::string_view migratedMarker = "userSettings.migratedLegacyBundleDefaults";

const UserSettingsKey& keyNamed(std::string_view key) {
    for (const auto& candidate : userSettingsKeys()) {
        if (candidate.key == key) return candidate;
    }
    throw UserSettingsError("There is no setting named \u201C" + std::string(key) + "\u201D.");
}

// A currency code as a new production takes it: three capital letters, typed in any case.
std::optional<json> currencyFromText(const std::string& text) {
    std::string code = text;
    for (char& c : code) c = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    return json(code);
}

bool isCurrencyCode(const json& value) {
    if (!value.is_string()) return false;
    const std::string code = value.get<std::string>();
    return code.size() == 3 && std::all_of(code.begin(), code.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

bool isToleranceText(const json& value) {
    if (!value.is_string()) return false;
    const auto tolerance = Decimal::parse(value.get<std::string>());
    return tolerance && !tolerance->isNaN() && !tolerance->isNegative();
}

// Whether a stored value may stand as the key's value; anything else reads as the default.
bool acceptable(const UserSettingsKey& key, const json& value) {
    switch (key.type) {
        case Type::text:
            if (!value.is_string()) return false;
            return key.allowedTexts.empty() ||
                   std::find(key.allowedTexts.begin(), key.allowedTexts.end(), value.get<std::string>()) != key.allowedTexts.end();
        case Type::integer:
            if (!value.is_number_integer()) return false;
            return !key.integerRange || (value.get<std::int64_t>() >= key.integerRange->first &&
                                         value.get<std::int64_t>() <= key.integerRange->second);
        case Type::boolean: return value.is_boolean();
        case Type::tolerance: return isToleranceText(value);
        case Type::currencyCode: return isCurrencyCode(value);
        case Type::uuid: return value.is_string() && Uuid::parse(value.get<std::string>()).has_value();
        case Type::textSet:
            if (!value.is_array()) return false;
            return std::all_of(value.begin(), value.end(), [](const json& item) { return item.is_string(); });
    }
    return false;
}

std::string expectation(const UserSettingsKey& key) {
    switch (key.type) {
        case Type::text: {
            if (key.allowedTexts.empty()) return "text";
            std::string choices;
            for (auto allowed : key.allowedTexts) choices += (choices.empty() ? "\u201C" : ", \u201C") + std::string(allowed) + "\u201D";
            return "one of " + choices;
        }
        case Type::integer: {
            const auto range = key.settableRange ? *key.settableRange : *key.integerRange;
            return "a whole number from " + std::to_string(range.first) + " to " + std::to_string(range.second);
        }
        case Type::boolean: return "true or false";
        case Type::tolerance: return "a decimal amount of zero or more, such as \u201C0.01\u201D";
        case Type::currencyCode: return "a three-letter currency code, such as \u201CUSD\u201D";
        case Type::uuid: return "a production identifier, or nothing";
        case Type::textSet: return "a comma-separated list";
    }
    return {};
}

// The stored form of a value typed as text.
std::optional<json> fromText(const UserSettingsKey& key, const std::string& text) {
    switch (key.type) {
        case Type::text: return json(text);
        case Type::integer: {
            std::int64_t number = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
            if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
            return json(number);
        }
        case Type::boolean:
            if (text == "true") return json(true);
            if (text == "false") return json(false);
            return std::nullopt;
        case Type::tolerance: return json(text);
        case Type::currencyCode: return currencyFromText(text);
        case Type::uuid:
            if (text.empty()) return json(nullptr);
            if (const auto id = Uuid::parse(text)) return json(id->text());
            return std::nullopt;
        case Type::textSet: {
            json items = json::array();
            std::size_t start = 0;
            while (start <= text.size() && !text.empty()) {
                const auto comma = text.find(',', start);
                items.push_back(text.substr(start, comma - start));
                if (comma == std::string::npos) break;
                start = comma + 1;
            }
            return items;
        }
    }
    return std::nullopt;
}

struct ReadSettings {
    json values = json::object();
    bool unreadable = false;  // the file is there but is not a settings object we can read
};

ReadSettings readFile(const std::filesystem::path& path) {
    std::error_code missing;
    if (!std::filesystem::exists(path, missing)) return {};
    std::ifstream in(path);
    if (!in) return {json::object(), true};
    json parsed = json::parse(in, nullptr, false);
    if (!parsed.is_object()) return {json::object(), true};
    return {std::move(parsed), false};
}

std::string unreadableSentence(const std::filesystem::path& path) {
    return "The settings file \u201C" + path.string() +
           "\u201D could not be read, so Tessel left it as it is and uses the default settings for now.";
}

}  // namespace

const std::vector<UserSettingsKey>& userSettingsKeys() {
    static const std::vector<UserSettingsKey> keys{
        {"userSettings.dateDisplayStyle", Type::text, "monthName", {"monthName", "numeric"}, {}, "how dates are written on screens"},
        {"userSettings.newProductionWorkweekWeekday", Type::integer, 2, {}, std::pair<std::int64_t, std::int64_t>{1, 7},
         "start weekday of a new production's first work week (1 = Sunday)"},
        {"userSettings.newProductionDTSTimeDisplay", Type::text, "payrollDecimal", {"payrollDecimal", "clockTime"}, {},
         "how a new production shows DTS times"},
        // Read: zero or less reads as 1800, any longer lunch stands. Set: a lunch of at most a day.
        {"userSettings.newProductionLunchDurationSeconds", Type::integer, 1800, {},
         std::pair<std::int64_t, std::int64_t>{1, std::numeric_limits<std::int64_t>::max()},
         "a new production's default lunch length", std::pair<std::int64_t, std::int64_t>{1, 86400}},
        {"userSettings.showMonetaryDetails", Type::boolean, true, {}, {}, "whether reviews show money amounts"},
        {"userSettings.mostRecentlyUsedProductionID", Type::uuid, nullptr, {}, {}, "the production opened at start"},
        {"userSettings.straightTimeLabel", Type::text, "payrollAbbreviation", {"payrollAbbreviation", "multiplier"}, {},
         "how the straight-time category is labelled"},
        {"userSettings.overtimeLabel", Type::text, "payrollAbbreviation", {"payrollAbbreviation", "multiplier"}, {},
         "how the overtime category is labelled"},
        {"userSettings.doubleTimeLabel", Type::text, "payrollAbbreviation", {"payrollAbbreviation", "multiplier"}, {},
         "how the double-time category is labelled"},
        {"userSettings.newProductionCurrencyCode", Type::currencyCode, "USD", {}, {}, "a new production's currency"},
        {"userSettings.newProductionRoundingTolerance", Type::tolerance, "0.01", {}, {},
         "a new production's pay-comparison rounding tolerance"},
        {"userSettings.defaultDepartment", Type::text, "", {}, {}, "a new production's department"},
        {"userSettings.developerToolsEnabled", Type::boolean, false, {}, {}, "whether developer actions are shown"},
        {"userSettings.goldenHourAdvisoryEnabled", Type::boolean, true, {}, {}, "whether the golden-hour advisory is shown"},
        {"userSettings.goldenHourAdvisoryThresholdSeconds", Type::integer, 3600, {},
         std::pair<std::int64_t, std::int64_t>{0, 86400}, "how long before golden hour the advisory starts"},
        {"userSettings.goldenHourAdvisoryDismissals", Type::textSet, json::array(), {}, {}, "advisories the user dismissed"},
        {"userSettings.hasSeenWelcome", Type::boolean, false, {}, {}, "whether the welcome screen was shown"},
        {migratedMarker, Type::boolean, false, {}, {}, "whether the earlier preferences were copied"},
    };
    return keys;
}

std::filesystem::path UserSettingsStore::defaultConfigRoot() {
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config) return std::filesystem::path(config) / "Tessel";
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home && *home ? home : ".") / ".config" / "Tessel";
}

std::filesystem::path UserSettingsStore::legacyPreferencesPath(const std::filesystem::path& configRoot) {
    return configRoot.parent_path() / "tessel" / "preferences.json";
}

std::filesystem::path UserSettingsStore::settingsPath(TesselStoreEnvironmentKind environment,
                                                     const std::filesystem::path& configRoot) {
    return configRoot / (environment == TesselStoreEnvironmentKind::test ? "settings-test.json" : "settings.json");
}

UserSettingsStore UserSettingsStore::load(TesselStoreEnvironmentKind environment, const std::filesystem::path& configRoot) {
    const auto path = settingsPath(environment, configRoot);
    ReadSettings read = readFile(path);
    UserSettingsStore store(path, std::move(read.values));
    if (read.unreadable) store.readProblem_ = unreadableSentence(path);
    // The earlier preferences belong to the normal environment; the test store never takes them.
    if (!store.readProblem_ && environment == TesselStoreEnvironmentKind::normal && !store.value(migratedMarker).get<bool>()) {
        const json legacy = readFile(legacyPreferencesPath(configRoot)).values;
        for (const auto& key : userSettingsKeys()) {
            const std::string name(key.key);
            if (name != migratedMarker && legacy.contains(name) && !store.stored_.contains(name)) {
                store.stored_[name] = legacy[name];
            }
        }
        store.stored_[std::string(migratedMarker)] = true;
        try {
            store.save();
        } catch (const std::exception&) {
            // Unwritable preferences keep their defaults for this run; the copy is tried again next time.
        }
    }
    return store;
}

json UserSettingsStore::value(std::string_view name) const {
    const UserSettingsKey& key = keyNamed(name);
    const auto stored = stored_.find(std::string(name));
    if (stored != stored_.end() && acceptable(key, *stored)) return *stored;
    return key.defaultValue;
}

void UserSettingsStore::set(std::string_view name, const std::string& text) {
    const UserSettingsKey& key = keyNamed(name);
    if (readProblem_) throw UserSettingsSaveError(*readProblem_);
    const auto parsed = fromText(key, text);
    const bool settable = !key.settableRange || !parsed || !parsed->is_number_integer() ||
                          (parsed->get<std::int64_t>() >= key.settableRange->first &&
                           parsed->get<std::int64_t>() <= key.settableRange->second);
    if (!parsed || (!parsed->is_null() && (!acceptable(key, *parsed) || !settable))) {
        throw UserSettingsError("The setting \u201C" + std::string(name) + "\u201D takes " + expectation(key) + ".");
    }
    json updated = stored_;
    if (parsed->is_null()) {
        updated.erase(std::string(name));
    } else {
        updated[std::string(name)] = *parsed;
    }
    std::swap(stored_, updated);
    try {
        save();
    } catch (...) {
        std::swap(stored_, updated);
        throw;
    }
}

// Writes beside the file and renames over it, so the file is always either the old or the new settings;
// the file written beside it is this process's own, so two Tessel processes saving at once cannot mix.
// A file that could not be read is the user's and is never written over.
void UserSettingsStore::save() const {
    if (readProblem_) throw UserSettingsSaveError(*readProblem_);
    const auto failed = [&] { return UserSettingsSaveError("The settings file \u201C" + path_.string() + "\u201D could not be saved."); };
    std::error_code error;
    std::filesystem::create_directories(path_.parent_path(), error);
    if (error) throw failed();
    std::string temporary = path_.string() + ".saving-XXXXXX";
    const int descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0) throw failed();
    ::close(descriptor);
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << stored_.dump(2) << '\n';
        out.close();
        if (!out) {
            std::filesystem::remove(temporary, error);
            throw failed();
        }
    }
    std::filesystem::rename(temporary, path_, error);
    if (error) {
        std::filesystem::remove(temporary, error);
        throw failed();
    }
}

PayrollCategoryLabelPreferences UserSettingsStore::categoryLabels() const {
    const auto preference = [&](std::string_view key) {
        return value(key).get<std::string>() == "multiplier" ? PayrollCategoryLabelPreference::multiplier
                                                             : PayrollCategoryLabelPreference::payrollAbbreviation;
    };
    return {preference("userSettings.straightTimeLabel"), preference("userSettings.overtimeLabel"), preference("userSettings.doubleTimeLabel")};
}

bool UserSettingsStore::showMonetaryDetails() const { return value("userSettings.showMonetaryDetails").get<bool>(); }

GoldenHourAdvisorySettings UserSettingsStore::goldenHourAdvisory() const {
    GoldenHourAdvisorySettings settings;
    settings.enabled = value("userSettings.goldenHourAdvisoryEnabled").get<bool>();
    settings.thresholdSeconds = value("userSettings.goldenHourAdvisoryThresholdSeconds").get<std::int64_t>();
    for (const auto& key : value("userSettings.goldenHourAdvisoryDismissals")) settings.dismissals.insert(key.get<std::string>());
    return settings;
}

void UserSettingsStore::dismissGoldenHourAdvisory(const std::string& key) {
    auto dismissals = goldenHourAdvisory().dismissals;
    if (!dismissals.insert(key).second) return;
    stored_["userSettings.goldenHourAdvisoryDismissals"] = json(dismissals);
    save();
}

int UserSettingsStore::newProductionWorkweekWeekday() const {
    return value("userSettings.newProductionWorkweekWeekday").get<int>();
}

std::int64_t UserSettingsStore::newProductionLunchDurationSeconds() const {
    return value("userSettings.newProductionLunchDurationSeconds").get<std::int64_t>();
}

DTSTimeDisplay UserSettingsStore::newProductionDTSTimeDisplay() const {
    return fromRawValue<DTSTimeDisplay>(value("userSettings.newProductionDTSTimeDisplay").get<std::string>())
        .value_or(DTSTimeDisplay::payrollDecimal);
}

std::string UserSettingsStore::newProductionCurrencyCode() const {
    return value("userSettings.newProductionCurrencyCode").get<std::string>();
}

Decimal UserSettingsStore::newProductionRoundingTolerance() const {
    return Decimal(value("userSettings.newProductionRoundingTolerance").get<std::string>());
}

std::string UserSettingsStore::defaultDepartment() const { return value("userSettings.defaultDepartment").get<std::string>(); }

std::optional<Uuid> UserSettingsStore::mostRecentlyUsedProductionID() const {
    const json id = value("userSettings.mostRecentlyUsedProductionID");
    if (id.is_null()) return std::nullopt;
    return Uuid::parse(id.get<std::string>());
}

void UserSettingsStore::setMostRecentlyUsedProductionID(const std::optional<Uuid>& id) {
    set("userSettings.mostRecentlyUsedProductionID", id ? id->text() : "");
}

NewProductionDefaults UserSettingsStore::newProductionDefaults() const {
    return {newProductionDTSTimeDisplay(), newProductionLunchDurationSeconds(), newProductionCurrencyCode(),
            newProductionWorkweekWeekday(), defaultDepartment(), newProductionRoundingTolerance()};
}

}  // namespace tessel

#include "PositionCommands.hpp"

#include <map>
#include <sstream>

#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/rules/RateCards.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using command_actions::act;
using command_actions::dateArgument;

using command_actions::now;

PositionScope scopeOf(const PositionCommandArguments& a) { return a.saved ? PositionScope::saved : PositionScope::production; }

// Runs an action on the installation's saved records (no production needed) or in the current production.
template <typename Action>
int scoped(CommandSession& session, bool saved, Action&& action) {
    if (!saved) return act(session, [&](ModelContext& context, const Production& production) { return action(context, std::optional(production.id)); });
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    try {
        return store->perform([&](ModelContext& context) { return action(context, std::optional<Uuid>()); });
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const ModelValidationError& error) {
        return session.refuse("refused", error.what());
    }
}

Json positionJSON(const PositionRecord& p, const std::optional<PositionReadiness>& readiness) {
    Json json{{"id", p.id.text()},
              {"positionName", p.positionName},
              {"occupationCode", p.occupationCode ? Json(*p.occupationCode) : Json()},
              {"hourlyAmount", p.dailyDefaults.hourlyAmount ? Json(p.dailyDefaults.hourlyAmount->toString()) : Json()},
              {"currencyCode", p.dailyDefaults.currencyCode},
              {"scheduleChanges", review_text::scheduleChanges(p.dailyDefaults.scheduleOverrides.value_or(PositionScheduleOverrides{}))},
              {"ownOrdinaryDaySchedule", p.dailyDefaults.ordinaryDaySchedule.has_value()}};
    if (p.scope == PositionScope::production) json["legacyDefaultsAllowed"] = p.legacyDefaultsAllowed;
    if (readiness) {
        json["readiness"] = toRawValue(readiness->state);
        if (readiness->reason) json["readinessReason"] = *readiness->reason;
    }
    return json;
}

std::string positionLine(const PositionRecord& p, const std::optional<PositionReadiness>& readiness) {
    std::string line = p.positionName;
    if (p.occupationCode) line += "  (" + *p.occupationCode + ")";
    if (p.dailyDefaults.hourlyAmount) line += "  " + p.dailyDefaults.hourlyAmount->toString() + "/hr";
    if (p.dailyDefaults.scheduleOverrides) line += "  [" + review_text::scheduleChangesLine(*p.dailyDefaults.scheduleOverrides) + "]";
    if (readiness) line += "  " + std::string(toRawValue(readiness->state)) + (readiness->reason ? ": " + *readiness->reason : "");
    return line + "\n";
}

// A position a DTS row's Job for Today or rerate names is kept for that history: said under it.
void addKeptReason(ModelContext& context, const PositionRecord& p, Json& json, std::string& text) {
    if (const auto kept = CrewOnDTS::positionKeptReason(context, p.id)) {
        json["keptReason"] = *kept;
        text += "  " + *kept + "\n";
    }
}

std::optional<PositionReadiness> readinessOf(ModelContext& context, const PositionRecord& p) {
    if (p.scope == PositionScope::saved) return std::nullopt;
    return rate_cards::readiness(context, p);
}

std::optional<PositionProvision> provisionIfGiven(std::string_view option, const std::string& text, bool band) {
    if (text.empty()) return std::nullopt;
    return scheduleProvisionArgument(option, text, band);
}

PositionEdit editOf(const PositionCommandArguments& a, bool adding) {
    PositionEdit edit;
    if (adding) edit.positionName = a.name;
    if (!adding && !a.newName.empty()) edit.positionName = a.newName;
    if (!a.code.empty()) edit.occupationCode = std::optional(a.code);
    if (a.noCode) edit.occupationCode = std::optional<std::string>();
    if (!a.hourly.empty()) edit.hourlyAmount = std::optional(a.hourly);
    if (a.noHourly) edit.hourlyAmount = std::optional<std::string>();
    edit.minimumCall = provisionIfGiven("--minimum-call", a.minimumCall, false);
    edit.overtime = provisionIfGiven("--overtime", a.overtime, true);
    edit.doubleTime = provisionIfGiven("--double-time", a.doubleTime, true);
    if (a.legacyDefaults == "on" || a.legacyDefaults == "off") edit.legacyDefaultsAllowed = a.legacyDefaults == "on";
    if (!a.legacyDefaults.empty() && !edit.legacyDefaultsAllowed) throw Refused{"invalidChoice", "--legacy-defaults takes on or off."};
    return edit;
}

int addPosition(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto p = positions::add(context, scopeOf(a), productionID, editOf(a, true), now());
        session.answer(positionJSON(p, readinessOf(context, p)),
                       std::string(a.saved ? "Saved Position " : "Position ") + "\u201C" + p.positionName + "\u201D added.\n");
        return exitSuccess;
    });
}

int listPositions(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        Json list = Json::array();
        std::string text;
        for (const auto& p : positions::list(context, scopeOf(a), productionID)) {
            const auto readiness = readinessOf(context, p);
            Json json = positionJSON(p, readiness);
            text += positionLine(p, readiness);
            addKeptReason(context, p, json, text);
            list.push_back(std::move(json));
        }
        const auto duplicates = positions::duplicateCodes(context, scopeOf(a), productionID);
        if (!duplicates.empty()) {
            text += std::string(a.saved ? position_words::duplicateSavedCodes : position_words::duplicateProductionCodes) + "\n";
            for (const auto& d : duplicates) text += "  " + d + "\n";
        }
        if (list.empty()) text = a.saved ? "There are no Saved Positions.\n" : "This Production has no Positions.\n";
        session.answer(list, text);
        return exitSuccess;
    });
}

int showPosition(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto p = positions::named(context, scopeOf(a), productionID, a.name);
        const auto readiness = readinessOf(context, p);
        Json json = positionJSON(p, readiness);
        std::string text = positionLine(p, readiness);
        addKeptReason(context, p, json, text);
        if (!a.saved) {
            std::map<Uuid, ProductionRateCard> cards;
            for (auto& card : rate_cards::cards(context, *productionID)) cards.emplace(card.id, std::move(card));
            Json scales = Json::array();
            for (const auto& s : rate_cards::scales(context, *productionID)) {
                if (s.positionID != p.id) continue;
                const auto& card = cards.at(s.rateCardID);
                const auto through = card.effectiveEnd ? calendar_text::formatDate(*card.effectiveEnd) : std::string("open");
                scales.push_back({{"rateCard", card.label}, {"from", calendar_text::formatDate(card.effectiveStart)}, {"through", through},
                                  {"schedule", toRawValue(s.schedule)}, {"hourlyAmount", s.hourlyAmount.toString()}});
                text += "  Scale, Rate Card " + card.label + " (" + calendar_text::formatDate(card.effectiveStart) + " to " + through + ", " +
                        std::string(toRawValue(s.schedule)) + "): " + s.hourlyAmount.toString() + "/hr\n";
            }
            json["scales"] = scales;
        }
        session.answer(json, text);
        return exitSuccess;
    });
}

int setPosition(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto p = positions::update(context, positions::named(context, scopeOf(a), productionID, a.name), editOf(a, false), now());
        session.answer(positionJSON(p, readinessOf(context, p)), positionLine(p, readinessOf(context, p)));
        return exitSuccess;
    });
}

int removePosition(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto p = positions::named(context, scopeOf(a), productionID, a.name);
        positions::remove(context, p);
        session.answer(Json{{"removed", p.id.text()}}, "Removed \u201C" + p.positionName + "\u201D.\n");
        return exitSuccess;
    });
}

// ---- rate cards ----

std::optional<CalendarDate> optionalDate(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(dateArgument(text));
}

EmploymentSchedule scheduleOf(const std::string& text) {
    if (text == "daily") return EmploymentSchedule::daily;
    if (text == "weekly") return EmploymentSchedule::weekly;
    throw Refused{"invalidChoice", "Give --schedule daily or weekly."};
}

int createCard(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto from = dateArgument(a.from);
        const auto through = optionalDate(a.through);
        if (a.saved) {
            const auto card = rate_cards::createSaved(context, a.label, from, through, now());
            session.answer(Json{{"id", card.id.text()}}, "Saved Rate Card \u201C" + a.label + "\u201D created, " + calendar_text::formatPeriod(from, through) + ".\n");
        } else {
            const auto card = rate_cards::create(context, *productionID, a.label, from, through);
            session.answer(Json{{"id", card.id.text()}}, "Rate Card \u201C" + a.label + "\u201D created, " + calendar_text::formatPeriod(from, through) + ".\n");
        }
        return exitSuccess;
    });
}

int addScale(CommandSession& session, const PositionCommandArguments& a) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        const auto schedule = scheduleOf(a.schedule);
        if (a.saved) {
            rate_cards::setSavedScale(context, a.label, a.position, a.amount, schedule, now());
        } else {
            if (a.from.empty()) throw Refused{"missingDate", "Give --from, the date the scale takes effect."};
            const auto position = positions::named(context, PositionScope::production, productionID, a.position);
            rate_cards::addScale(context, *productionID, a.label, position, a.amount, dateArgument(a.from), schedule);
        }
        session.answer(Json{{"rateCard", a.label}, {"position", a.position}, {"hourlyAmount", a.amount}},
                       "Scale of \u201C" + a.position + "\u201D on \u201C" + a.label + "\u201D: " + a.amount + "/hr (" + a.schedule + ").\n");
        return exitSuccess;
    });
}

Json savedCardJSON(const SavedRateCard& card) {
    Json list = Json::array();
    for (const auto& p : card.positions) {
        list.push_back({{"positionName", p.positionName},
                        {"occupationCode", p.occupationCode ? Json(*p.occupationCode) : Json()},
                        {"dailyScale", p.dailyScale ? Json(p.dailyScale->toString()) : Json()},
                        {"weeklyScale", p.weeklyScale ? Json(p.weeklyScale->toString()) : Json()}});
    }
    return {{"id", card.id.text()},
            {"label", card.displayName},
            {"effectiveStart", calendar_text::formatDate(card.effectiveStart)},
            {"effectiveEnd", card.effectiveEnd ? Json(calendar_text::formatDate(*card.effectiveEnd)) : Json()},
            {"positions", list}};
}

std::string savedCardText(const SavedRateCard& card) {
    std::string text = card.displayName + "  " + calendar_text::formatPeriod(card.effectiveStart, card.effectiveEnd) + "\n";
    bool anyScale = false;
    for (const auto& p : card.positions) {
        text += "  " + p.positionName + (p.occupationCode ? " (" + *p.occupationCode + ")" : "");
        if (p.dailyScale) text += "  daily " + p.dailyScale->toString() + "/hr";
        if (p.weeklyScale) text += "  weekly " + p.weeklyScale->toString() + "/hr";
        text += "\n";
        anyScale = anyScale || p.dailyScale || p.weeklyScale;
    }
    if (!anyScale) text += "  " + std::string(rate_card_words::incomplete) + "\n";
    return text;
}

// A production card with the scales it holds and the readiness of each position it prices.
std::pair<Json, std::string> productionCard(ModelContext& context, const ProductionRateCard& card) {
    Json scales = Json::array();
    std::string text = card.label + "  " + calendar_text::formatPeriod(card.effectiveStart, card.effectiveEnd) + "\n";
    for (const auto& s : rate_cards::scales(context, card.productionID)) {
        if (s.rateCardID != card.id) continue;
        const auto position = positions::find(context, PositionScope::production, card.productionID, s.positionID);
        const auto name = position ? position->positionName : std::string("(removed Position)");
        const auto readiness = position ? std::optional(rate_cards::readiness(context, *position)) : std::nullopt;
        Json json{{"position", name}, {"schedule", toRawValue(s.schedule)}, {"hourlyAmount", s.hourlyAmount.toString()}};
        if (readiness) json["readiness"] = toRawValue(readiness->state);
        scales.push_back(json);
        text += "  " + name + "  " + std::string(toRawValue(s.schedule)) + " " + s.hourlyAmount.toString() + "/hr" +
                (readiness ? "  " + std::string(toRawValue(readiness->state)) + (readiness->reason ? ": " + *readiness->reason : "") : "") + "\n";
    }
    if (scales.empty()) text += "  " + std::string(rate_card_words::incomplete) + "\n";
    return {Json{{"id", card.id.text()},
                 {"label", card.label},
                 {"effectiveStart", calendar_text::formatDate(card.effectiveStart)},
                 {"effectiveEnd", card.effectiveEnd ? Json(calendar_text::formatDate(*card.effectiveEnd)) : Json()},
                 {"scales", scales}},
            text};
}

int listCards(CommandSession& session, const PositionCommandArguments& a, bool onlyLabel) {
    return scoped(session, a.saved, [&](ModelContext& context, const std::optional<Uuid>& productionID) {
        Json list = Json::array();
        std::string text;
        if (a.saved) {
            for (const auto& card : rate_cards::savedCards(context)) {
                if (onlyLabel && card.displayName != a.label) continue;
                list.push_back(savedCardJSON(card));
                text += savedCardText(card);
            }
        } else {
            for (const auto& card : rate_cards::cards(context, *productionID)) {
                if (onlyLabel && card.label != a.label) continue;
                auto [json, lines] = productionCard(context, card);
                list.push_back(std::move(json));
                text += lines;
            }
        }
        if (onlyLabel && list.empty()) throw Refused{"notFound", "There is no Rate Card labelled \u201C" + a.label + "\u201D."};
        if (list.empty()) text = "There are no Rate Cards.\n";
        session.answer(list, text);
        return exitSuccess;
    });
}

int applyCard(CommandSession& session, const PositionCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto card = rate_cards::apply(context, production.id, rate_cards::savedNamed(context, a.label), now());
        auto [json, lines] = productionCard(context, card);
        session.answer(json, std::string(rate_card_words::copies) + "\n" + lines);
        return exitSuccess;
    });
}

}  // namespace

void addPositionCommands(CLI::App& app, CommandSession& session, PositionCommandArguments& a, int& exitStatus) {
    auto* position = app.add_subcommand("position", "The production's Positions (with --saved, the installation's Saved Positions)")
                         ->require_subcommand(1);
    position->add_flag("--saved", a.saved, "Work on the installation's Saved Positions");
    position->fallthrough();
    auto* add = position->add_subcommand("add", "Add a Position");
    add->add_option("NAME", a.name, "The Position's name")->required();
    add->add_option("--code", a.code, "Its occupation code (digits)");
    add->add_option("--hourly", a.hourly, "Its default hourly rate");
    add->callback([&] { exitStatus = addPosition(session, a); });
    position->add_subcommand("list", "List the Positions, each with its readiness")->callback([&] { exitStatus = listPositions(session, a); });
    auto* show = position->add_subcommand("show", "A Position with its scales");
    show->add_option("NAME", a.name, "The Position")->required();
    show->callback([&] { exitStatus = showPosition(session, a); });
    auto* set = position->add_subcommand("set", "Change a Position (and mark it reviewed)");
    set->add_option("NAME", a.name, "The Position")->required();
    set->add_option("--name", a.newName, "A new name");
    set->add_option("--code", a.code, "A new occupation code (digits)");
    set->add_flag("--no-code", a.noCode, "Remove the occupation code");
    set->add_option("--hourly", a.hourly, "A new default hourly rate");
    set->add_flag("--no-hourly", a.noHourly, "Remove the default hourly rate");
    set->add_option("--minimum-call", a.minimumCall, "The Position's minimum call in payroll hours, none, or rules (the production's)");
    set->add_option("--overtime", a.overtime, "Overtime after HOURS[,MULTIPLIER[,worked|elapsed]], none, or rules");
    set->add_option("--double-time", a.doubleTime, "Double time after HOURS[,MULTIPLIER[,worked|elapsed]], none, or rules");
    set->add_option("--legacy-defaults", a.legacyDefaults,
                    "on: without contract setup on its Rate Card, the Position's own defaults govern; off: the production's rules do");
    set->callback([&] { exitStatus = setPosition(session, a); });
    auto* remove = position->add_subcommand("remove", "Remove a Position no history uses");
    remove->add_option("NAME", a.name, "The Position")->required();
    remove->callback([&] { exitStatus = removePosition(session, a); });

    auto* ratecard = app.add_subcommand("ratecard", "The production's Rate Cards (with --saved, the installation's)")->require_subcommand(1);
    ratecard->add_flag("--saved", a.saved, "Work on the installation's saved Rate Cards");
    ratecard->fallthrough();
    auto* create = ratecard->add_subcommand("create", "Create a Rate Card for a period");
    create->add_option("LABEL", a.label, "The card's label")->required();
    create->add_option("--from", a.from, "The first date it applies, YYYY-MM-DD")->required();
    create->add_option("--through", a.through, "The last date it applies (open-ended without)");
    create->callback([&] { exitStatus = createCard(session, a); });
    auto* scale = ratecard->add_subcommand("scale", "Set a Position's scale hourly rate on a Rate Card");
    scale->add_option("LABEL", a.label, "The card's label")->required();
    scale->add_option("POSITION", a.position, "The Position")->required();
    scale->add_option("AMOUNT", a.amount, "The scale hourly rate, at most two decimal places")->required();
    scale->add_option("--from", a.from, "The start of the card's period it belongs to (a new period of the card when none starts then)");
    scale->add_option("--schedule", a.schedule, "daily (the default) or weekly");
    scale->callback([&] { exitStatus = addScale(session, a); });
    ratecard->add_subcommand("list", "List the Rate Cards with their scales")->callback([&] { exitStatus = listCards(session, a, false); });
    auto* showCard = ratecard->add_subcommand("show", "A Rate Card with its scales and each Position's readiness");
    showCard->add_option("LABEL", a.label, "The card's label")->required();
    showCard->callback([&] { exitStatus = listCards(session, a, true); });
    auto* apply = ratecard->add_subcommand("apply", "Copy a saved Rate Card into this Production");
    apply->add_option("LABEL", a.label, "The saved card's label")->required();
    apply->callback([&] { exitStatus = applyCard(session, a); });
}

PositionProvision scheduleProvisionArgument(std::string_view option, const std::string& text, bool band) {
    if (text == "rules") return {};
    if (text == "none") return {PositionProvisionMode::none};
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t comma = text.find(','); ; comma = text.find(',', start)) {
        parts.push_back(std::string(entry_text::trimmed(text.substr(start, comma == std::string::npos ? std::string::npos : comma - start))));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    const std::string usage = band ? " takes payroll hours with an optional multiplier and basis (8,1.5,worked), none, or rules."
                                   : " takes payroll hours, none, or rules.";
    if (parts.size() > (band ? 3u : 1u)) throw Refused{"invalidValue", std::string(option) + usage};
    PositionProvision provision{PositionProvisionMode::custom};
    try {
        provision.seconds = PayrollDecimalDurationParser::parse(parts[0]);
    } catch (const PayrollDecimalDurationParseError&) {
        throw Refused{"invalidValue", std::string(option) + usage};
    }
    if (parts.size() > 1) {
        provision.multiplier = Decimal::parse(parts[1]);
        if (!provision.multiplier || *provision.multiplier < Decimal(1)) {
            throw Refused{"invalidValue", std::string(option) + " needs a multiplier of at least 1, such as 1.5."};
        }
    }
    if (parts.size() > 2) {
        provision.basis = durationBasisFromRawValue(parts[2]);
        if (!provision.basis) throw Refused{"invalidValue", std::string(option) + " measures its threshold as worked or elapsed time."};
    }
    return provision;
}

PositionScheduleOverrides withScheduleArguments(PositionScheduleOverrides changes, const std::string& minimumCall, const std::string& overtime,
                                                const std::string& doubleTime) {
    if (const auto given = provisionIfGiven("--minimum-call", minimumCall, false)) changes.minimumCall = *given;
    if (const auto given = provisionIfGiven("--overtime", overtime, true)) changes.overtime = *given;
    if (const auto given = provisionIfGiven("--double-time", doubleTime, true)) changes.doubleTime = *given;
    return changes;
}

}  // namespace tessel

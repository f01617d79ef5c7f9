#include "RateCards.hpp"

#include <algorithm>
#include <map>
#include <set>

#include "App/model/EntryText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/JSONFields.hpp"
#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

using namespace columns;

ProductionRateCard readCard(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)),         uuid(row.getColumn(1)),         text(row.getColumn(2)),
            date(row.getColumn(3)),         optionalDate(row.getColumn(4)), optionalText(row.getColumn(5)),
            boolean(row.getColumn(6))};
}

void insertCard(ModelContext& context, const ProductionRateCard& c) {
    auto& statement = context.prepare(
        "INSERT INTO ProductionRateCard (id, productionID, label, effectiveStart, effectiveEnd, sourceNotes, requiresExplicitPositionTerms) VALUES "
        "(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    bindAll(statement, c.id, c.productionID, c.label, c.effectiveStart, c.effectiveEnd, c.sourceNotes, c.requiresExplicitPositionTerms);
    statement.exec();
}

void insertScale(ModelContext& context, const PositionScaleRate& s) {
    auto& statement = context.prepare(
        "INSERT INTO PositionScaleRate (id, rateCardID, positionPresetID, employmentScheduleRawValue, hourlyAmount, currencyCode) VALUES (?1, ?2, "
        "?3, ?4, ?5, ?6)");
    bindAll(statement, s.id, s.rateCardID, s.positionID, std::string(toRawValue(s.schedule)), s.hourlyAmount, s.currencyCode);
    statement.exec();
}

bool overlap(const ProductionRateCard& a, const ProductionRateCard& b) {
    const bool aBeforeB = a.effectiveEnd && *a.effectiveEnd < b.effectiveStart;
    const bool bBeforeA = b.effectiveEnd && *b.effectiveEnd < a.effectiveStart;
    return !aBeforeB && !bBeforeA;
}

std::optional<CalendarDate> earlier(const std::optional<CalendarDate>& a, const std::optional<CalendarDate>& b) {
    if (!a) return b;
    if (!b) return a;
    return std::min(*a, *b);
}

EmploymentSchedule scheduleFrom(const std::string& raw) { return raw == "weekly" ? EmploymentSchedule::weekly : EmploymentSchedule::daily; }

}  // namespace

std::string_view toRawValue(PositionTermsResult::Provenance provenance) noexcept {
    switch (provenance) {
        case PositionTermsResult::Provenance::explicitTerms: return "explicit";
        case PositionTermsResult::Provenance::dayJobSnapshot: return "dayJobSnapshot";
        case PositionTermsResult::Provenance::engagementSnapshot: return "engagementSnapshot";
        case PositionTermsResult::Provenance::positionDefaults: return "positionDefaults";
        case PositionTermsResult::Provenance::productionRules: return "productionRules";
    }
    return "productionRules";
}

std::string_view toRawValue(ProductionPositionReadiness readiness) noexcept {
    switch (readiness) {
        case ProductionPositionReadiness::ready: return "ready";
        case ProductionPositionReadiness::needsReview: return "needsReview";
        case ProductionPositionReadiness::missingScale: return "missingScale";
        case ProductionPositionReadiness::missingContractSetup: return "missingContractSetup";
        case ProductionPositionReadiness::conflictingScale: return "conflictingScale";
    }
    return "ready";
}

namespace rate_cards {

std::vector<ProductionRateCard> cards(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT id, productionID, label, effectiveStart, effectiveEnd, sourceNotes, requiresExplicitPositionTerms FROM ProductionRateCard WHERE "
        "productionID = ?1 ORDER BY label, effectiveStart, id");
    bind(statement, 1, productionID);
    return readAll<ProductionRateCard>(statement, readCard);
}

std::vector<PositionScaleRate> scales(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT s.id, s.rateCardID, s.positionPresetID, s.employmentScheduleRawValue, s.hourlyAmount, s.currencyCode FROM PositionScaleRate s JOIN "
        "ProductionRateCard c ON c.id = s.rateCardID WHERE c.productionID = ?1 ORDER BY c.label, c.effectiveStart, s.id");
    bind(statement, 1, productionID);
    return readAll<PositionScaleRate>(statement, [](SQLite::Statement& row) {
        return PositionScaleRate{uuid(row.getColumn(0)), uuid(row.getColumn(1)), uuid(row.getColumn(2)),
                                 scheduleFrom(text(row.getColumn(3))), decimal(row.getColumn(4)),
                                 text(row.getColumn(5))};
    });
}

ProductionRateCard create(ModelContext& context, const Uuid& productionID, const std::string& label, CalendarDate from,
                          std::optional<CalendarDate> through) {
    if (label.find_first_not_of(" \t") == std::string::npos) throw ModelValidationError("Enter a Rate Card label.");
    if (through && *through < from) throw ModelValidationError("A Rate Card cannot end before it starts.");
    for (const auto& card : cards(context, productionID)) {
        if (card.label == label && card.effectiveStart == from) {
            throw ModelValidationError("A Rate Card " + entry_text::quoted(label) + " already starts on " + calendar_text::formatDate(from) + ".");
        }
    }
    // A later period of a card ends the earlier one still open on that date: the new rates replace them.
    for (const auto& earlier : cards(context, productionID)) {
        if (earlier.label == label && earlier.effectiveStart < from && earlier.covers(from)) {
            auto& end = context.prepare("UPDATE ProductionRateCard SET effectiveEnd = ?2 WHERE id = ?1");
            bindAll(end, earlier.id, CalendarDate(std::chrono::sys_days(from) - std::chrono::days(1)));
            end.exec();
        }
    }
    ProductionRateCard card{Uuid::generate(), productionID, label, from, through, std::nullopt, false};
    insertCard(context, card);
    return card;
}

PositionScaleRate addScale(ModelContext& context, const Uuid& productionID, const std::string& label, const PositionRecord& position,
                           const std::string& amountText, CalendarDate from, EmploymentSchedule schedule) {
    const Decimal amount = positions::validatedScaleAmount(amountText);
    std::optional<ProductionRateCard> card;
    for (auto& c : cards(context, productionID)) {
        if (c.label == label && c.effectiveStart == from) card = std::move(c);
    }
    if (!card) card = create(context, productionID, label, from, std::nullopt);
    for (const auto& s : scales(context, productionID)) {
        if (s.rateCardID == card->id && s.positionID == position.id && s.schedule == schedule) {
            throw ModelValidationError(std::string(rate_card_words::rateExists));
        }
    }
    PositionScaleRate rate{Uuid::generate(), card->id, position.id, schedule, amount, position.dailyDefaults.currencyCode};
    insertScale(context, rate);
    return rate;
}

std::vector<ScaleConflict> conflicts(ModelContext& context, const Uuid& productionID) {
    std::map<Uuid, ProductionRateCard> byID;
    for (auto& card : cards(context, productionID)) byID.emplace(card.id, std::move(card));
    const auto all = scales(context, productionID);
    std::vector<ScaleConflict> found;
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = i + 1; j < all.size(); ++j) {
            const auto &a = all[i], &b = all[j];
            if (a.positionID != b.positionID || a.schedule != b.schedule) continue;
            const auto &ca = byID.at(a.rateCardID), &cb = byID.at(b.rateCardID);
            if (!overlap(ca, cb)) continue;
            found.push_back({a.positionID, a.schedule, std::max(ca.effectiveStart, cb.effectiveStart), earlier(ca.effectiveEnd, cb.effectiveEnd),
                             {a.id, b.id}});
        }
    }
    return found;
}

std::optional<PositionScaleRate> scaleOn(ModelContext& context, const Uuid& productionID, const Uuid& positionID, EmploymentSchedule schedule,
                                         CalendarDate date) {
    std::map<Uuid, ProductionRateCard> byID;
    for (auto& card : cards(context, productionID)) byID.emplace(card.id, std::move(card));
    std::vector<PositionScaleRate> inForce;
    for (auto& s : scales(context, productionID)) {
        if (s.positionID == positionID && s.schedule == schedule && byID.at(s.rateCardID).covers(date)) inForce.push_back(std::move(s));
    }
    if (inForce.size() != 1) return std::nullopt;
    return std::move(inForce.front());
}

PositionReadiness readiness(ModelContext& context, const PositionRecord& position) {
    using R = ProductionPositionReadiness;
    const auto productionID = *position.productionID;
    for (const auto& conflict : conflicts(context, productionID)) {
        if (conflict.positionID == position.id) {
            return {R::conflictingScale, "Two " + std::string(toRawValue(conflict.schedule)) + " Scale rates of this Position overlap from " +
                                             calendar_text::formatDate(conflict.from) + "."};
        }
    }
    std::set<Uuid> pricedOn;
    for (const auto& s : scales(context, productionID)) {
        if (s.positionID == position.id) pricedOn.insert(s.rateCardID);
    }
    if (pricedOn.empty()) return {R::missingScale, std::string(rate_card_words::noScale) + "."};
    for (const auto& card : cards(context, productionID)) {
        if (!pricedOn.contains(card.id)) continue;
        const auto terms = resolveTerms(context, card.id, position);
        if (terms.kind != PositionTermsResult::Kind::resolved) return {R::missingContractSetup, terms.message};
    }
    if (!position.reviewedFingerprint) return {R::needsReview, "This Position was copied from a Rate Card and has not been reviewed yet."};
    if (*position.reviewedFingerprint != positions::fingerprint(position)) return {R::needsReview, "This Position changed since it was last reviewed."};
    return {R::ready, std::nullopt};
}

void engageInPosition(ModelContext& context, const Uuid& engagementID, const PositionRecord& position, CalendarDate from, bool followsScale,
                      Instant now) {
    auto& configuration = context.prepare(
        "INSERT OR REPLACE INTO EngagementPositionConfiguration (engagementID, sourcePresetID, payrollPositionName, snapshotData, appliedAt) VALUES "
        "(?1, ?2, ?3, ?4, ?5)");
    bindAll(configuration, engagementID, position.id, position.positionName);
    bindBlob(configuration, 4, positions::fingerprint(position));
    bind(configuration, 5, now);
    configuration.exec();
    const auto scale = scaleOn(context, *position.productionID, position.id, EmploymentSchedule::daily, from);
    auto& rate = context.prepare(
        "INSERT OR REPLACE INTO EngagementPositionRateConfiguration (engagementID, effectiveDate, appliedScaleAmount, currencyCode, "
        "followsPositionScale) VALUES (?1, ?2, ?3, ?4, ?5)");
    bindAll(rate, engagementID, from, scale ? scale->hourlyAmount : Decimal(0), scale ? scale->currencyCode : position.dailyDefaults.currencyCode,
            followsScale);
    rate.exec();
}

std::optional<EngagementPosition> engagementPosition(ModelContext& context, const Uuid& engagementID) {
    auto& statement = context.prepare(
        "SELECT sourcePresetID, payrollPositionName FROM EngagementPositionConfiguration WHERE engagementID = ?1 AND sourcePresetID IS NOT NULL");
    bind(statement, 1, engagementID);
    auto position = readFirst(statement, [](SQLite::Statement& row) {
        return EngagementPosition{uuid(row.getColumn(0)), text(row.getColumn(1)), {}, {}};
    });
    if (!position) return std::nullopt;
    auto& rates = context.prepare(
        "SELECT effectiveDate, followsPositionScale FROM EngagementPositionRateConfiguration WHERE engagementID = ?1 ORDER BY effectiveDate");
    bind(rates, 1, engagementID);
    position->followsScaleFrom = readAll<std::pair<CalendarDate, bool>>(rates, [](SQLite::Statement& row) {
        return std::pair(date(row.getColumn(0)), boolean(row.getColumn(1)));
    });
    position->personalChanges = personalScheduleChanges(context, engagementID);
    return position;
}

PositionScheduleOverrides personalScheduleChanges(ModelContext& context, const Uuid& engagementID) {
    auto& statement = context.prepare("SELECT defaultsData FROM EngagementPositionOverrideConfiguration WHERE engagementID = ?1");
    bind(statement, 1, engagementID);
    const auto data = readFirst(statement, [](SQLite::Statement& row) { return blob(row.getColumn(0)); });
    return data ? position_defaults::readOverrides(*data) : PositionScheduleOverrides{};
}

void setPersonalScheduleChanges(ModelContext& context, const Uuid& engagementID, const PositionScheduleOverrides& changes, Instant now) {
    auto& engaged = context.prepare("SELECT sourcePresetID FROM EngagementPositionConfiguration WHERE engagementID = ?1 AND sourcePresetID IS NOT NULL");
    bind(engaged, 1, engagementID);
    const auto positionID = readFirst(engaged, [](SQLite::Statement& row) { return uuid(row.getColumn(0)); });
    const auto engagement = crew_repository::fetchEngagement(context, engagementID);
    const auto position = positionID && engagement ? positions::find(context, PositionScope::production, engagement->productionID, *positionID)
                                                   : std::nullopt;
    if (!position) throw ModelValidationError("Engage this crew member in a Position first; the changes are to its schedule.");
    const auto own = position->dailyDefaults.scheduleOverrides.value_or(PositionScheduleOverrides{});
    positions::checkScheduleChanges(context, *position, position_defaults::merged(own, changes), CalendarDate(std::chrono::floor<std::chrono::days>(now)));
    if (changes.empty()) {
        auto& remove = context.prepare("DELETE FROM EngagementPositionOverrideConfiguration WHERE engagementID = ?1");
        bind(remove, 1, engagementID);
        remove.exec();
        return;
    }
    auto& write = context.prepare(
        "INSERT OR REPLACE INTO EngagementPositionOverrideConfiguration (engagementID, defaultsData, modifiedAt) VALUES (?1, ?2, ?3)");
    bind(write, 1, engagementID);
    bindBlob(write, 2, position_defaults::writeOverrides(changes));
    bind(write, 3, now);
    write.exec();
}

std::vector<CardPositionTerms> terms(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT t.id, t.productionRateCardID, t.productionPositionID, t.dailyDefaultsData FROM ProductionRateCardPositionTerms t JOIN "
        "ProductionRateCard c ON c.id = t.productionRateCardID WHERE c.productionID = ?1 ORDER BY t.id");
    bind(statement, 1, productionID);
    return readAll<CardPositionTerms>(statement, [](SQLite::Statement& row) {
        return CardPositionTerms{uuid(row.getColumn(0)), uuid(row.getColumn(1)), uuid(row.getColumn(2)), blob(row.getColumn(3))};
    });
}

PositionTermsResult resolveTerms(const ProductionRateCard* card, const std::vector<CardPositionTerms>& productionTerms, const PositionRecord& position,
                                 const std::optional<std::string>& dayJobSnapshot, const std::optional<std::string>& engagementSnapshot) {
    using R = PositionTermsResult;
    R result;
    std::vector<const CardPositionTerms*> found;
    if (card) {
        for (const auto& t : productionTerms) {
            if (t.cardID == card->id && t.positionID == position.id) found.push_back(&t);
        }
    }
    if (found.size() > 1) {
        result.kind = R::Kind::conflict;
        for (const auto* t : found) result.competingTermsIDs.push_back(t->id);
        result.message = "Duplicate card/Position terms authority.";
        return result;
    }
    const auto readable = [](const std::string& data) {
        try {
            position_defaults::read(data);
            return true;
        } catch (const MalformedInputError&) {
            return false;
        }
    };
    if (found.size() == 1) {
        if (!readable(found.front()->dailyDefaultsData)) {
            result.kind = R::Kind::invalid;
            result.message = "The contract setup of " + position.positionName + " on Rate Card " + entry_text::quoted(card->label) + " cannot be read.";
            return result;
        }
        return {R::Kind::resolved, R::Provenance::explicitTerms, found.front()->dailyDefaultsData, found.front()->id, card->id, {}, {}};
    }
    if (card && card->requiresExplicitPositionTerms) {
        result.kind = R::Kind::missing;
        result.message = "This Position has no contract setup on Rate Card " + entry_text::quoted(card->label) + ".";
        return result;
    }
    result.kind = R::Kind::resolved;
    result.provenance = R::Provenance::productionRules;
    // Only a position that allows it falls back to its own defaults or the snapshots taken of it.
    if (!position.legacyDefaultsAllowed) return result;
    const Json own = Json::parse(position.dailyDefaultsData.empty() ? "{}" : position.dailyDefaultsData, nullptr, false);
    const bool ownDefaults = own.is_object() && std::any_of(own.items().begin(), own.items().end(), [](const auto& item) { return item.key() != "currencyCode"; });
    if (dayJobSnapshot) {
        result.provenance = R::Provenance::dayJobSnapshot;
        result.defaultsData = *dayJobSnapshot;
    } else if (engagementSnapshot) {
        result.provenance = R::Provenance::engagementSnapshot;
        result.defaultsData = *engagementSnapshot;
    } else if (ownDefaults) {
        result.provenance = R::Provenance::positionDefaults;
        result.defaultsData = position.dailyDefaultsData;
    }
    if (!readable(result.defaultsData)) {
        result = {};
        result.kind = R::Kind::invalid;
        result.message = "The payroll defaults of " + position.positionName + " cannot be read.";
    }
    return result;
}

PositionTermsResult resolveTerms(ModelContext& context, const Uuid& cardID, const PositionRecord& position,
                                 const std::optional<std::string>& dayJobSnapshot, const std::optional<std::string>& engagementSnapshot) {
    const auto all = cards(context, *position.productionID);
    const auto card = std::find_if(all.begin(), all.end(), [&](const auto& c) { return c.id == cardID; });
    if (card == all.end()) {
        PositionTermsResult result;
        result.message = "The Rate Card no longer exists.";
        return result;
    }
    return resolveTerms(&*card, terms(context, *position.productionID), position, dayJobSnapshot, engagementSnapshot);
}

// ---- saved cards ----

std::vector<SavedRateCard> savedCards(ModelContext& context) {
    auto& statement = context.prepare(
        "SELECT id, displayName, effectiveStart, effectiveEnd, sourceNotes FROM RatePackage ORDER BY displayOrder, displayName, id");
    auto result = readAll<SavedRateCard>(statement, [](SQLite::Statement& row) {
        return SavedRateCard{uuid(row.getColumn(0)), text(row.getColumn(1)), date(row.getColumn(2)), optionalDate(row.getColumn(3)),
                             optionalText(row.getColumn(4)), {}};
    });
    for (auto& card : result) {
        auto& positions = context.prepare(
            "SELECT id, positionName, occupationCode, dailyScale, weeklyScale, currencyCode, dailyDefaultsData, weeklyDefaultsData FROM "
            "RatePackagePosition WHERE ratePackageID = ?1 ORDER BY displayOrder, positionName, id");
        bind(positions, 1, card.id);
        card.positions = readAll<SavedRateCardPosition>(positions, [](SQLite::Statement& row) {
            return SavedRateCardPosition{uuid(row.getColumn(0)),
                                         text(row.getColumn(1)),
                                         optionalText(row.getColumn(2)),
                                         optionalDecimal(row.getColumn(3)),
                                         optionalDecimal(row.getColumn(4)),
                                         text(row.getColumn(5)),
                                         blob(row.getColumn(6)),
                                         blob(row.getColumn(7))};
        });
    }
    return result;
}

SavedRateCard savedNamed(ModelContext& context, const std::string& label) {
    std::vector<SavedRateCard> found;
    for (auto& card : savedCards(context)) {
        if (card.displayName == label) found.push_back(std::move(card));
    }
    if (found.empty()) throw ModelValidationError("There is no saved Rate Card named " + entry_text::quoted(label) + ".");
    if (found.size() > 1) throw ModelValidationError("More than one saved Rate Card is named " + entry_text::quoted(label) + "; rename one to tell them apart.");
    return std::move(found.front());
}

SavedRateCard createSaved(ModelContext& context, const std::string& label, CalendarDate from, std::optional<CalendarDate> through, Instant now) {
    if (label.find_first_not_of(" \t") == std::string::npos) throw ModelValidationError("Enter a Rate Card label.");
    if (through && *through < from) throw ModelValidationError("A Rate Card cannot end before it starts.");
    const auto existing = savedCards(context);
    if (std::any_of(existing.begin(), existing.end(), [&](const auto& c) { return c.displayName == label; })) {
        throw ModelValidationError("A saved Rate Card named " + entry_text::quoted(label) + " already exists.");
    }
    SavedRateCard card{Uuid::generate(), label, from, through, std::nullopt, {}};
    auto& statement = context.prepare(
        "INSERT INTO RatePackage (id, displayName, effectiveStart, effectiveEnd, displayOrder, createdAt, modifiedAt) VALUES (?1, ?2, ?3, ?4, ?5, "
        "?6, ?6)");
    bindAll(statement, card.id, card.displayName, card.effectiveStart, card.effectiveEnd, static_cast<std::int64_t>(existing.size()), now);
    statement.exec();
    return card;
}

namespace {

void insertSavedPosition(ModelContext& context, const Uuid& cardID, const SavedRateCardPosition& p, std::int64_t displayOrder, Instant now) {
    auto& statement = context.prepare(
        "INSERT INTO RatePackagePosition (id, ratePackageID, occupationCode, positionName, dailyDefaultsData, weeklyDefaultsData, dailyScale, "
        "weeklyScale, currencyCode, displayOrder, createdAt, modifiedAt) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?11)");
    bindAll(statement, p.id, cardID, p.occupationCode, p.positionName);
    bindBlob(statement, 5, p.dailyDefaultsData);
    bindBlob(statement, 6, p.weeklyDefaultsData);
    columns::bind(statement, 7, p.dailyScale);
    columns::bind(statement, 8, p.weeklyScale);
    columns::bind(statement, 9, p.currencyCode);
    bind(statement, 10, displayOrder);
    bind(statement, 11, now);
    statement.exec();
}

}  // namespace

void setSavedScale(ModelContext& context, const std::string& label, const std::string& positionName, const std::string& amountText,
                   EmploymentSchedule schedule, Instant now) {
    const Decimal amount = positions::validatedScaleAmount(amountText);
    const auto card = savedNamed(context, label);
    const auto column = schedule == EmploymentSchedule::daily ? std::string("dailyScale") : std::string("weeklyScale");
    for (const auto& p : card.positions) {
        if (p.positionName != positionName) continue;
        if ((schedule == EmploymentSchedule::daily ? p.dailyScale : p.weeklyScale)) throw ModelValidationError(std::string(rate_card_words::rateExists));
        auto& statement = context.prepare("UPDATE RatePackagePosition SET " + column + " = ?2, modifiedAt = ?3 WHERE id = ?1");
        bindAll(statement, p.id, amount, now);
        statement.exec();
        return;
    }
    SavedRateCardPosition p{.id = Uuid::generate(), .positionName = positionName};
    for (const auto& saved : positions::list(context, PositionScope::saved, std::nullopt)) {
        if (saved.positionName != positionName) continue;
        p.occupationCode = saved.occupationCode;
        p.currencyCode = saved.dailyDefaults.currencyCode;
        p.dailyDefaultsData = saved.dailyDefaultsData;
        p.weeklyDefaultsData = saved.weeklyDefaultsData;
    }
    (schedule == EmploymentSchedule::daily ? p.dailyScale : p.weeklyScale) = amount;
    insertSavedPosition(context, card.id, p, static_cast<std::int64_t>(card.positions.size()), now);
}

void addSaved(ModelContext& context, const SavedRateCard& card, Instant now) {
    const auto existing = savedCards(context);
    for (const auto& other : existing) {
        if (other.id == card.id || other.displayName == card.displayName) {
            throw ModelValidationError("A saved Rate Card named " + entry_text::quoted(other.displayName) + " is already in the library.");
        }
    }
    auto& statement = context.prepare(
        "INSERT INTO RatePackage (id, displayName, effectiveStart, effectiveEnd, sourceNotes, displayOrder, createdAt, modifiedAt) VALUES (?1, ?2, "
        "?3, ?4, ?5, ?6, ?7, ?7)");
    bindAll(statement, card.id, card.displayName, card.effectiveStart, card.effectiveEnd, card.sourceNotes,
            static_cast<std::int64_t>(existing.size()), now);
    statement.exec();
    for (std::size_t i = 0; i < card.positions.size(); ++i) insertSavedPosition(context, card.id, card.positions[i], static_cast<std::int64_t>(i), now);
}

ProductionRateCard apply(ModelContext& context, const Uuid& productionID, const SavedRateCard& saved, Instant now) {
    const bool anyScale = std::any_of(saved.positions.begin(), saved.positions.end(), [](const auto& p) { return p.dailyScale || p.weeklyScale; });
    if (!anyScale) throw ModelValidationError(std::string(rate_card_words::savedCardHasNoScales));
    auto production = positions::list(context, PositionScope::production, productionID);
    // Each card position to the production position it becomes: the same code, else the same name, else a copy.
    std::vector<PositionRecord> targets;
    std::set<Uuid> mapped;
    for (const auto& p : saved.positions) {
        auto same = production.end();
        if (p.occupationCode) {
            same = std::find_if(production.begin(), production.end(), [&](const PositionRecord& existing) { return existing.occupationCode == p.occupationCode; });
        }
        if (same == production.end()) {
            same = std::find_if(production.begin(), production.end(), [&](const PositionRecord& existing) { return existing.positionName == p.positionName; });
        }
        PositionRecord target{.id = Uuid::generate(), .scope = PositionScope::production};
        if (same != production.end()) {
            target = *same;
        } else {
            target.productionID = productionID;
            target.positionName = p.positionName;
            target.occupationCode = p.occupationCode;
            target.dailyDefaultsData = p.dailyDefaultsData;
            target.weeklyDefaultsData = p.weeklyDefaultsData;
            target.displayOrder = static_cast<std::int64_t>(production.size());
            target.modifiedAt = now;
            target.sourceRatePackageID = saved.id;
            target.sourcePackagePositionID = p.id;
            target.legacyDefaultsAllowed = false;
            positions::insertCopy(context, target);
            production.push_back(target);
        }
        if (!mapped.insert(target.id).second) throw ModelValidationError(std::string(rate_card_words::distinctPositions));
        targets.push_back(std::move(target));
    }
    ProductionRateCard card{Uuid::generate(), productionID, saved.displayName, saved.effectiveStart, saved.effectiveEnd, saved.sourceNotes, true};
    for (const auto& existing : cards(context, productionID)) {
        if (existing.label == card.label && existing.effectiveStart == card.effectiveStart) {
            throw ModelValidationError("A Rate Card " + entry_text::quoted(card.label) + " already starts on " + calendar_text::formatDate(card.effectiveStart) + ".");
        }
    }
    insertCard(context, card);
    for (std::size_t i = 0; i < saved.positions.size(); ++i) {
        const auto& p = saved.positions[i];
        if (p.dailyScale) insertScale(context, {Uuid::generate(), card.id, targets[i].id, EmploymentSchedule::daily, *p.dailyScale, p.currencyCode});
        if (p.weeklyScale) insertScale(context, {Uuid::generate(), card.id, targets[i].id, EmploymentSchedule::weekly, *p.weeklyScale, p.currencyCode});
        auto& terms = context.prepare(
            "INSERT INTO ProductionRateCardPositionTerms (id, productionRateCardID, productionPositionID, dailyDefaultsData, weeklyDefaultsData, "
            "payloadFormatVersion, createdAt, modifiedAt) VALUES (?1, ?2, ?3, ?4, ?5, 1, ?6, ?6)");
        bindAll(terms, Uuid::generate(), card.id, targets[i].id);
        bindBlob(terms, 4, p.dailyDefaultsData.empty() ? std::string("{}") : p.dailyDefaultsData);
        bindBlob(terms, 5, p.weeklyDefaultsData.empty() ? std::string("{}") : p.weeklyDefaultsData);
        bind(terms, 6, now);
        terms.exec();
    }
    return card;
}

}  // namespace rate_cards
}  // namespace tessel

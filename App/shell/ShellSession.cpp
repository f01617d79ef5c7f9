#include "ShellSession.hpp"

#include <QUndoCommand>

#include "App/actualpay/PayrollIssues.hpp"
#include "App/dts/CrewDailyEntryRepair.hpp"
#include "App/dts/DailyTimeSheets.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/StoreChanges.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {

using shell_widgets::now;

Refusal refusalOf(std::exception_ptr error) {
    try {
        std::rethrow_exception(error);
    } catch (const EntryRefused& refused) {
        return {{}, qtext(refused.message)};
    } catch (const DTSWorkflowError& refused) {
        return {qtext(refused.title()), qtext(refused.what())};
    } catch (const DomainError& refused) {
        return {{}, qtext(refused.description())};
    } catch (const std::exception& refused) {
        // Every service error (model validation, rules, store failures) carries its sentence as what().
        return {{}, qtext(refused.what())};
    }
}

// One saved action on the undo stack: its row changes, taken back and put again as a whole.
class StoreActionCommand : public QUndoCommand {
public:
    StoreActionCommand(ShellSession& session, const QString& name, StoreChangeset changes)
        : QUndoCommand(name), session_(session), changes_(std::move(changes)) {}

    void undo() override { apply(changes_.inverted()); }
    void redo() override {
        if (firstRedo_) {  // the action itself already made these changes
            firstRedo_ = false;
            return;
        }
        apply(changes_);
    }

private:
    void apply(const StoreChangeset& changes) {
        try {
            store_changes::apply(session_.store(), changes);
        } catch (...) {
            // The stack cannot step over a change it could not apply: it is dropped, and the user told.
            setObsolete(true);
            emit session_.undoRefused(refusalOf(std::current_exception()));
            return;
        }
        emit session_.storeChanged();
    }

    ShellSession& session_;
    StoreChangeset changes_;
    bool firstRedo_ = true;
};

ShellSession::Opened ShellSession::open(const TesselStoreEnvironment& environment, const std::filesystem::path& configRoot) {
    // A reset of the test store asked for earlier happens before its store or settings are used.
    if (environment.kind == TesselStoreEnvironmentKind::test) {
        applyPendingTestStoreReset(environment, UserSettingsStore::settingsPath(environment.kind, configRoot));
    }
    auto opened = openTesselStore(environment);
    if (auto* state = std::get_if<TesselUnavailableStoreState>(&opened)) return std::move(*state);
    auto session = std::make_unique<ShellSession>(std::move(std::get<std::unique_ptr<TesselStore>>(opened)),
                                                  UserSettingsStore::load(environment.kind, configRoot));
    return session;
}

ShellSession::ShellSession(std::unique_ptr<TesselStore> store, UserSettingsStore settings)
    : store_(std::move(store)), settings_(std::move(settings)) {
    checkCrewRows();
    if (const auto problem = settings_.readProblem()) startupWarnings_.push_back({QStringLiteral("Tessel Settings"), qtext(*problem)});
    productionID_ = settings_.mostRecentlyUsedProductionID();
    if (productionID_ && !production_repository::fetch(context(), *productionID_)) productionID_.reset();
}

ShellSession::~ShellSession() {
    undoStack_.clear();  // its commands refer to this session
}

void ShellSession::checkCrewRows() {
    try {
        if (!CrewDailyEntryRepair::hasDuplicateRows(context())) return;
        const auto report = store_->perform([](ModelContext& c) { return CrewDailyEntryRepair::run(c); });
        if (const auto alert = CrewDailyEntryRepair::alertText(report)) startupWarnings_.push_back({qtext(CrewDailyEntryRepair::alertTitle), qtext(*alert)});
    } catch (const std::exception& error) {
        startupWarnings_.push_back({qtext(CrewDailyEntryRepair::alertTitle),
                                    qtext(CrewDailyEntryRepair::checkFailedPrefix) + " " + QString::fromUtf8(error.what())});
    }
}

std::optional<Production> ShellSession::production() {
    if (!productionID_) return std::nullopt;
    return production_repository::fetch(context(), *productionID_);
}

void ShellSession::chooseProduction(const std::optional<Uuid>& productionID) {
    productionID_ = productionID;
    undoStack_.clear();  // another production's edits are not this one's to undo
    try {
        settings_.setMostRecentlyUsedProductionID(productionID);
    } catch (const std::exception&) {
        // Not remembering the choice for the next launch does not stop the work of this one.
    }
    emit productionChanged();
}

std::optional<Refusal> ShellSession::perform(const QString& name, const std::function<void(ModelContext&)>& action) {
    StoreChangeset changes;
    try {
        changes = store_changes::performRecorded(*store_, [&](ModelContext& c) {
            const int changesBefore = c.database().getTotalChanges();
            action(c);
            if (productionID_ && c.database().getTotalChanges() != changesBefore) payroll_issues::keepCurrent(c, *productionID_, now());
        });
    } catch (...) {
        return refusalOf(std::current_exception());
    }
    if (!changes.empty()) undoStack_.push(new StoreActionCommand(*this, name, std::move(changes)));
    emit storeChanged();
    return std::nullopt;
}

}  // namespace tessel

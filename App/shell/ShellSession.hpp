#pragma once

#include <QObject>
#include <QString>
#include <QUndoStack>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "App/model/PersistenceModels.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/model/UserSettings.hpp"

namespace tessel {

// Why a user action was not carried out: an alert title (may be empty) and the service's own sentence.
struct Refusal {
    QString title;
    QString message;
};

// A refusal of what the user typed, raised by the window before it reaches a service (a time that does
// not read as payroll decimal, say). It carries the same sentence the command line gives.
struct EntryRefused {
    std::string message;
};

// The refusal a failed action's exception carries, in the words of the service that raised it.
Refusal refusalOf(std::exception_ptr error);

// The opened store and everything the window shares: the user settings, the production being worked on,
// and the undo stack. Every edit goes through perform(): one transaction, recorded so that Ctrl+Z takes
// it back, with the production's payroll issues brought up to date in the same transaction.
class ShellSession : public QObject {
    Q_OBJECT
public:
    using Opened = std::variant<std::unique_ptr<ShellSession>, TesselUnavailableStoreState>;
    // Opens or migrates the environment's store, runs the start-up check of DTS crew rows and reads the
    // user settings; a store that cannot be opened safely gives its unavailable state and nothing else.
    static Opened open(const TesselStoreEnvironment& environment, const std::filesystem::path& configRoot);

    ShellSession(std::unique_ptr<TesselStore> store, UserSettingsStore settings);
    ~ShellSession() override;

    TesselStore& store() noexcept { return *store_; }
    ModelContext& context() noexcept { return store_->context(); }
    UserSettingsStore& settings() noexcept { return settings_; }
    QUndoStack& undoStack() noexcept { return undoStack_; }
    // What start-up has to tell: the crew-row repair's alert (rows repaired, or the check could not
    // finish) and a settings file that could not be read.
    const std::vector<Refusal>& startupWarnings() const noexcept { return startupWarnings_; }

    // The production being worked on: the one chosen last, remembered across launches.
    std::optional<Production> production();
    void chooseProduction(const std::optional<Uuid>& productionID);

    // Runs one user action as one undoable transaction named `name` ("Set Call"); returns the refusal
    // when it was refused or failed, with nothing changed.
    std::optional<Refusal> perform(const QString& name, const std::function<void(ModelContext&)>& action);

signals:
    // The store changed: an action was saved, undone or redone.
    void storeChanged();
    void productionChanged();
    // An undo or redo could not be applied; nothing changed.
    void undoRefused(const tessel::Refusal& refusal);

private:
    friend class StoreActionCommand;
    void checkCrewRows();

    std::unique_ptr<TesselStore> store_;
    UserSettingsStore settings_;
    QUndoStack undoStack_;
    std::optional<Uuid> productionID_;
    std::vector<Refusal> startupWarnings_;
};

}  // namespace tessel

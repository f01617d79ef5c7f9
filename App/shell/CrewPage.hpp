#pragma once

#include <QWidget>

#include <optional>

#include "App/model/CrewRoster.hpp"
#include "App/shell/ShellSession.hpp"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QListWidget;
class QTableWidget;

namespace tessel {

// The production's crew list, and for the chosen person their engagements and dated terms (rates,
// guarantees, box rentals), precall and wrap-out, locality and required rest. Every change is one action
// through the roster's services and is refused with their sentences.
class CrewPage : public QWidget {
    Q_OBJECT
public:
    explicit CrewPage(ShellSession& session, QWidget* parent = nullptr);

    // Adds a person from the form's fields; the refusal when refused.
    std::optional<Refusal> addPerson(const crew_roster::NewCrewMember& person);
    void choosePerson(const Uuid& crewMemberID);
    QString statusText() const;

private:
    QWidget* buildList();
    QWidget* buildEditor();
    void reloadList();
    void reloadEditor();
    void act(const QString& name, const std::function<void(ModelContext&)>& action);
    // Saves the form into the chosen engagement, or as a new one of the same person.
    void saveEngagement(bool asNew);
    void addTerm();
    void clearTerm();
    void showEngagement();
    std::optional<EngagementRecord> chosenEngagement() const;

    ShellSession& session_;
    std::optional<Uuid> person_;
    std::vector<EngagementRecord> records_;
    QListWidget* list_ = nullptr;
    QLineEdit* newName_ = nullptr;
    QDateEdit* newFrom_ = nullptr;
    QLineEdit* newRate_ = nullptr;
    QCheckBox* newDayplayer_ = nullptr;
    QWidget* editor_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLabel* retired_ = nullptr;
    QTableWidget* engagements_ = nullptr;
    QDateEdit* from_ = nullptr;
    QCheckBox* hasThrough_ = nullptr;
    QDateEdit* through_ = nullptr;
    QComboBox* participation_ = nullptr;
    QComboBox* locality_ = nullptr;
    QLineEdit* precall_ = nullptr;
    QLineEdit* wrapout_ = nullptr;
    QLineEdit* rest_ = nullptr;
    QTableWidget* terms_ = nullptr;
    QComboBox* termKind_ = nullptr;
    QDateEdit* termFrom_ = nullptr;
    QLineEdit* termValue_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel

#pragma once

#include <QWizard>

#include <optional>

#include "App/model/CrewRoster.hpp"
#include "App/shell/ShellSession.hpp"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QRadioButton;
class QTableWidget;

namespace tessel {

// What the guide gathers before anything is written.
struct ProductionSetupPlan {
    std::string name;
    CalendarDate startDate;
    DTSTimeDisplay timeDisplay = DTSTimeDisplay::payrollDecimal;
    std::int64_t lunchSeconds = 1800;
    int payrollWeekStartWeekday = 2;  // 1 = Sunday
    std::optional<Uuid> savedRulesetID;  // nothing: the example ruleset
    std::vector<crew_roster::NewCrewMember> crew;
    std::optional<CalendarDate> firstDTS;
};

// Sets the production up in one action: its identity and defaults, its rules, its crew with their rates
// and engagements, the payroll week start, and its first DTS. Refused whole, with the first sentence.
Uuid setUpProduction(ModelContext& context, const ProductionSetupPlan& plan, const NewProductionDefaults& defaults, Instant now);

// The production setup guide: from nothing to a first DTS in five short steps.
class SetupGuide : public QWizard {
    Q_OBJECT
public:
    explicit SetupGuide(ShellSession& session, QWidget* parent = nullptr);

    ProductionSetupPlan plan() const;
    // The production made when the guide finished.
    const std::optional<Uuid>& createdProduction() const noexcept { return created_; }
    // Adds a crew line, as the Add button does.
    void addCrewLine(const QString& name, const QString& rate, bool dayplayer);

protected:
    bool validateCurrentPage() override;

private:
    QWizardPage* productionPage();
    QWizardPage* rulesPage();
    QWizardPage* crewPage();
    QWizardPage* firstDTSPage();

    ShellSession& session_;
    std::optional<Uuid> created_;
    QLineEdit* name_ = nullptr;
    QDateEdit* start_ = nullptr;
    QComboBox* display_ = nullptr;
    QComboBox* lunch_ = nullptr;
    QComboBox* weekStart_ = nullptr;
    QRadioButton* example_ = nullptr;
    QComboBox* saved_ = nullptr;
    QTableWidget* crew_ = nullptr;
    QCheckBox* makeDTS_ = nullptr;
    QDateEdit* firstDate_ = nullptr;
};

}  // namespace tessel

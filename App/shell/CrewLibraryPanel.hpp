#pragma once

#include <QWidget>

#include <map>
#include <optional>

#include "App/rules/CrewLibrary.hpp"
#include "App/shell/ShellSession.hpp"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace tessel {

// The Crew Library: the people a timekeeper works with from show to show, added and removed here and
// exchanged as files. A file is read into an import plan first: new people, people already here, and
// possible matches (the same name), each of which the user settles (use the existing person, or import
// the file's person beside them) before anything is added.
class CrewLibraryPanel : public QWidget {
    Q_OBJECT
public:
    explicit CrewLibraryPanel(ShellSession& session, QWidget* parent = nullptr);

    void reload();
    const std::vector<CrewLibraryPerson>& people() const noexcept { return people_; }
    std::optional<Refusal> addPerson(const QString& name, const QString& position);
    std::optional<Refusal> remove(int row);  // without the question the button asks
    std::optional<Refusal> exportTo(const QString& path);
    // Reads the file into the import plan shown for the user's choices; nothing is added yet.
    std::optional<Refusal> planImport(const QString& path);
    const std::optional<CrewLibraryImportPlan>& plan() const noexcept { return plan_; }
    // A possible match settled (the plan's conflict `conflict`).
    void resolve(int conflict, CrewLibraryImportResolution resolution);
    // Adds the plan's people as resolved; refused while a possible match is unsettled.
    std::optional<Refusal> importPlan();
    QString statusText() const;

private:
    void showPlan();
    std::optional<Refusal> finish(const std::optional<Refusal>& refusal, const QString& done);

    ShellSession& session_;
    std::vector<CrewLibraryPerson> people_;
    std::optional<CrewLibraryImportPlan> plan_;
    std::map<Uuid, CrewLibraryImportResolution> resolutions_;
    QTableWidget* table_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLineEdit* position_ = nullptr;
    QWidget* planBox_ = nullptr;
    QLabel* planSummary_ = nullptr;
    QTableWidget* matches_ = nullptr;
    QPushButton* importButton_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel

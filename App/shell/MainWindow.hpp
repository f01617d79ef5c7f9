#pragma once

#include <QMainWindow>

#include "App/shell/ShellSession.hpp"

class QComboBox;
class QLabel;
class QListWidget;
class QStackedWidget;

namespace tessel {

class CrewPage;
class DTSPage;
class PayPage;
class ProductionPage;
class TemplatePage;
class LibraryPage;
class RulesPage;
class WelcomePage;

// The alpha-release notice, shown in the status bar and the About box.
inline constexpr std::string_view alphaNotice =
    "Alpha release: check every figure against your payroll company\u2019s stub before relying on it.";
// Where the feedback note goes.
inline constexpr std::string_view feedbackAddress = "feedback@tessel.invalid";

// The window a timekeeper works in: the production chosen at the top, its pages on the left (Welcome,
// Crew, DTS, Pay, Rules, Production settings, the production's own DTS form, the libraries), Undo and Redo of every saved edit, the setup guide, imports of the files Tessel
// writes, the feedback note and the alpha-release notice.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    enum Page { welcome, crew, dts, pay, rules, production, form, library };

    explicit MainWindow(ShellSession& session, QWidget* parent = nullptr);

    void showPage(Page page);
    WelcomePage& welcomePage() noexcept { return *welcome_; }
    CrewPage& crewPage() noexcept { return *crew_; }
    DTSPage& dtsPage() noexcept { return *dts_; }
    PayPage& payPage() noexcept { return *pay_; }
    RulesPage& rulesPage() noexcept { return *rules_; }
    ProductionPage& productionPage() noexcept { return *production_; }
    TemplatePage& templatePage() noexcept { return *form_; }
    LibraryPage& libraryPage() noexcept { return *library_; }

    // Opens a file Tessel writes (a production archive or a ruleset file) with its import; the refusal
    // when it was refused. A file the user opened from the file manager arrives here.
    std::optional<Refusal> openFile(const QString& path);
    // Starts the setup guide; true when it made a production.
    bool runSetupGuide();
    // Saves every editor with unsaved changes (the rules form, the DTS notes); false when one was refused,
    // which is then shown.
    bool saveEditors();
    // The feedback note as a mail draft.
    static QUrl feedbackMail();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void reloadProductions();
    void productionChanged();
    void showRefusal(const Refusal& refusal);

    ShellSession& session_;
    QComboBox* productions_ = nullptr;
    QListWidget* navigation_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    WelcomePage* welcome_ = nullptr;
    CrewPage* crew_ = nullptr;
    DTSPage* dts_ = nullptr;
    PayPage* pay_ = nullptr;
    RulesPage* rules_ = nullptr;
    ProductionPage* production_ = nullptr;
    TemplatePage* form_ = nullptr;
    LibraryPage* library_ = nullptr;
};

// The first page: what Tessel is, the productions of this store, and the way to set up a new one.
class WelcomePage : public QWidget {
    Q_OBJECT
public:
    WelcomePage(ShellSession& session, MainWindow& window, QWidget* parent = nullptr);
    void reload();

private:
    ShellSession& session_;
    MainWindow& window_;
    QListWidget* list_ = nullptr;
    QLabel* summary_ = nullptr;
};

}  // namespace tessel

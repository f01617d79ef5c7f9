// Writes a PNG of every main screen of the window, opened on a store made by the demo, so that each can be
// looked at: tessel-screenshots DEMO_FOLDER OUTPUT_FOLDER [STUB_FOLDER [FORM_FOLDER]] (run under QT_QPA_PLATFORM=offscreen).
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <cmath>
#include <cstdio>

#include "App/shell/CrewPage.hpp"
#include "App/shell/DTSPage.hpp"
#include "App/shell/MainWindow.hpp"
#include "App/shell/RulesPage.hpp"
#include "App/shell/PayPage.hpp"
#include "App/shell/ProductionPage.hpp"
#include "App/shell/TemplatePage.hpp"
#include "App/shell/CrewLibraryPanel.hpp"
#include "App/shell/LibraryPage.hpp"
#include "App/shell/PositionsPanel.hpp"
#include "App/shell/RulesetLibraryPanel.hpp"
#include "App/shell/SignaturePad.hpp"
#include "App/shell/SetupGuide.hpp"
#include "App/shell/StubImportPanel.hpp"
#include "App/shell/StubReviewPanel.hpp"
#include "App/shell/UnavailableStoreScreen.hpp"

using namespace tessel;

namespace {

void settle() {
    for (int i = 0; i < 5; ++i) QApplication::processEvents();
}

bool save(QWidget& widget, const QDir& folder, const QString& name) {
    settle();
    const QString file = folder.filePath(name + ".png");
    if (!widget.grab().save(file)) {
        std::fprintf(stderr, "Could not write %s\n", qPrintable(file));
        return false;
    }
    std::printf("%s\n", qPrintable(file));
    return true;
}

// A store folder whose store file is not a store at all: the unavailable screen's own situation.
TesselUnavailableStoreState foreignStore(const QDir& scratch, TesselStoreEnvironment& environment) {
    environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, scratch.filePath("foreign").toStdString());
    std::filesystem::create_directories(environment.storeURL.parent_path());
    QFile file(QString::fromStdString(environment.storeURL.string()));
    file.open(QIODevice::WriteOnly);
    file.write("This is not a Tessel store, but a note someone saved in its place.\n");
    file.close();
    return std::get<TesselUnavailableStoreState>(openTesselStore(environment));
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: tessel-screenshots DEMO_FOLDER OUTPUT_FOLDER [STUB_FOLDER [FORM_FOLDER]]\n");
        return 2;
    }
    const QDir demo(argv[1]);
    QDir output(argv[2]);
    output.mkpath(".");
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, demo.filePath("data").toStdString());
    auto opened = ShellSession::open(environment, demo.filePath("config/Tessel").toStdString());
    if (!std::holds_alternative<std::unique_ptr<ShellSession>>(opened)) {
        std::fprintf(stderr, "The demo store could not be opened; run make demo first.\n");
        return 1;
    }
    ShellSession& session = *std::get<std::unique_ptr<ShellSession>>(opened);
    MainWindow window(session);
    window.resize(1600, 940);
    window.show();
    bool ok = true;

    window.showPage(MainWindow::welcome);
    ok &= save(window, output, "01-welcome");

    {
        SetupGuide guide(session, &window);
        guide.show();
        if (auto* name = guide.findChild<QLineEdit*>("setupName")) name->setText("Night Harbor");
        guide.next();
        guide.next();
        guide.addCrewLine("Avery Holm", "48.00", false);
        guide.addCrewLine("Kit Serrano", "41.50", true);
        ok &= save(guide, output, "02-setup-guide");
    }

    window.showPage(MainWindow::crew);
    if (auto* list = window.crewPage().findChild<QListWidget*>("crewList")) list->setCurrentRow(1);
    ok &= save(window, output, "03-crew-editor");

    window.showPage(MainWindow::dts);
    window.dtsPage().showDate(std::chrono::year(2026) / 11 / 4);
    ok &= save(window, output, "04-dts-wednesday");

    if (auto* crew = window.dtsPage().review().findChild<QComboBox*>("reviewCrew")) crew->setCurrentIndex(2);
    ok &= save(window.dtsPage().review(), output, "05-weekly-review");

    window.showPage(MainWindow::pay);
    if (argc > 3) {  // the week's stubs read again: each shows it is already confirmed
        window.payPage().stubs().importFiles({QString::fromLocal8Bit(argv[3])});
        while (window.payPage().stubs().isReading()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    // Priya's lines: underpaid lines and the adjustment no expected line stands for.
    if (auto* people = window.payPage().findChild<QTableWidget*>("payPeople")) {
        const auto found = people->findItems("Priya Lindqvist", Qt::MatchExactly);
        if (!found.isEmpty()) people->setCurrentCell(found.front()->row(), 0);
    }
    if (auto* lines = window.payPage().findChild<QTableWidget*>("payLines")) lines->scrollToBottom();  // the unmapped line
    if (auto* issues = window.payPage().findChild<QTreeWidget*>("payIssues")) {
        for (QTreeWidgetItemIterator it(issues); *it; ++it) {
            if ((*it)->text(0) == "Priya Lindqvist") {
                issues->setCurrentItem(*it);
                break;
            }
        }
    }
    ok &= save(window, output, "06-pay-week");
    if (auto* tabs = window.payPage().findChild<QTabWidget*>("payTabs")) {
        tabs->setCurrentIndex(1);
        ok &= save(*tabs, output, "10-pay-gross-chart");
        tabs->setCurrentIndex(0);
    }
    if (argc > 3) {  // Nell's stub, a cent off on one line, beside its page with that amount chosen
        window.payPage().reviewCandidate(4);
        if (auto* earnings = window.payPage().stubReview().findChild<QTableWidget*>("stubEarnings")) earnings->setCurrentCell(0, 3);
        ok &= save(window, output, "09-stub-review");
        window.payPage().stubReview().closed();
    }

    window.showPage(MainWindow::rules);
    if (auto* form = window.rulesPage().findChild<QTreeWidget*>("rulesForm")) form->expandToDepth(1);
    ok &= save(window, output, "07-rules-form");

    window.showPage(MainWindow::production);
    {  // a signature being drawn on the pad, not yet used
        std::vector<QPointF> first, second;
        for (int i = 0; i <= 60; ++i) {
            const double t = i / 60.0;
            first.emplace_back(30 + 150 * t, 70 - 28 * std::sin(t * 9.4) * (1 - t * 0.4));
            second.emplace_back(200 + 140 * t, 64 + 18 * std::sin(t * 12.0 + 1) - 12 * t);
        }
        window.productionPage().signaturePad().addStroke(first);
        window.productionPage().signaturePad().addStroke(second);
    }
    ok &= save(window, output, "11-production-settings");

    if (argc > 4) {  // the invented typical blank form, mapped from its proposals
        window.showPage(MainWindow::form);
        TemplatePage& form = window.templatePage();
        form.importBlankPage(QDir(argv[4]).filePath("typical.pdf"));
        if (auto* table = form.findChild<QTableWidget*>("templateMappings")) table->setCurrentCell(2, 0);
        ok &= save(window, output, "12-dts-form-mapping");
        form.testFill(GenericDTSTestFillScenario::typical);
        ok &= save(window, output, "13-dts-form-test-fill");
        form.showDraft();
    }

    window.showPage(MainWindow::library);
    window.libraryPage().rulesets().saveCurrent("Harbor Lights \u2014 Grip & Electric");
    ok &= save(window, output, "14-library-rulesets");
    window.libraryPage().tabs().setCurrentIndex(2);
    window.libraryPage().positions().addPosition("Key Grip", "7001");
    window.libraryPage().positions().addPosition("Best Boy Electric", "7004");
    window.libraryPage().positions().createCard("Local 728", std::chrono::year(2026) / 11 / 1);
    window.libraryPage().positions().setScale("Local 728", 0, "52.00");
    ok &= save(window, output, "15-library-positions");
    {  // a crew library file whose Avery Holm may be the one already in the library: the import plan asks
        CrewLibraryPanel& people = window.libraryPage().crewLibrary();
        window.libraryPage().tabs().setCurrentIndex(1);
        people.addPerson("Avery Holm", "Key Grip");
        people.addPerson("Kit Serrano", "Electrician");
        const QString file = output.filePath("crew-library.tesselcrewlibrary");
        people.exportTo(file);
        people.remove(0);
        people.addPerson("Avery Holm", "Dolly Grip");
        people.remove(static_cast<int>(people.people().size()) - 1);
        people.planImport(file);
        ok &= save(window, output, "16-library-crew-import");
        QFile::remove(file);
    }

    TesselStoreEnvironment foreign;
    const QDir scratch(output.filePath("scratch"));
    scratch.mkpath(".");
    UnavailableStoreScreen unavailable(foreignStore(scratch, foreign), foreign, {TESSEL_VERSION, TESSEL_BUILD});
    unavailable.show();
    ok &= save(unavailable, output, "08-store-unavailable");
    QDir(scratch).removeRecursively();
    return ok ? 0 : 1;
}

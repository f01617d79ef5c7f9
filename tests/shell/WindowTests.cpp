// The window driven as a person drives it, through real widgets under the offscreen platform.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

#include "../support/TemporaryFolder.hpp"
#include "App/dts/DailyTimeSheets.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/shell/CrewPage.hpp"
#include "App/shell/DTSPage.hpp"
#include "App/shell/MainWindow.hpp"
#include "App/shell/PayPage.hpp"
#include "App/shell/StubImportPanel.hpp"
#include "App/shell/StubReviewPanel.hpp"
#include "App/shell/PdfPageView.hpp"
#include "App/shell/GrossChart.hpp"
#include "App/shell/ProductionPage.hpp"
#include "App/shell/TemplatePage.hpp"
#include "App/shell/LibraryPage.hpp"
#include "App/shell/RulesetLibraryPanel.hpp"
#include "App/shell/CrewLibraryPanel.hpp"
#include "App/shell/PositionsPanel.hpp"
#include "App/shell/SignaturePad.hpp"
#include "App/exchange/PendingIdentity.hpp"
#include "App/exchange/ProductionArchive.hpp"
#include "App/model/ProductionProfile.hpp"
#include <QBarSet>
#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/shell/RulesPage.hpp"
#include "App/shell/SetupGuide.hpp"
#include "App/shell/UnavailableStoreScreen.hpp"

using namespace tessel;
using namespace std::chrono;

namespace {

constexpr CalendarDate monday = 2026y / November / 2;
CalendarDate workDate(int offset) { return CalendarDate(sys_days(monday) + days(offset)); }
Instant at(CalendarDate date, int hour, int minute = 0) { return sys_days(date) + hours(hour) + minutes(minute); }

// A store with one production, two crew members with rates, and the DTS of each weekday of one week.
struct Workspace {
    testing::TemporaryFolder folder;
    TesselStoreEnvironment environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path() / "data");
    std::unique_ptr<ShellSession> session;
    std::unique_ptr<MainWindow> window;

    Workspace() {
        auto opened = ShellSession::open(environment, folder.path() / "config");
        session = std::move(std::get<std::unique_ptr<ShellSession>>(opened));
        Uuid productionID = Uuid::generate();
        session->store().perform([&](ModelContext& c) {
            productionID = ProductionSetup::createProduction(c, "Night Harbor", {}, at(monday, 6)).id;
            crew_roster::add(c, productionID, {"Rowan Vale", monday, CrewParticipation::fullTime, std::nullopt, std::nullopt, "40.00"}, "USD");
            crew_roster::add(c, productionID, {"Ines Calder", monday, CrewParticipation::fullTime, std::nullopt, std::nullopt, "36.00"}, "USD");
            for (int d = 0; d < 5; ++d) DailyTimeSheets::create(c, productionID, workDate(d));
        });
        session->chooseProduction(productionID);
        window = std::make_unique<MainWindow>(*session);
        window->show();
    }

    DTSPage& dts() { return window->dtsPage(); }
    Workday workday(CalendarDate date) { return *DailyTimeSheets::find(session->context(), session->production()->id, date); }
    CrewDailyEntry row(CalendarDate date, int index) {
        return payroll_week_repository::entries(session->context(), workday(date).id).at(static_cast<std::size_t>(index));
    }
};

void typeInto(QWidget* widget, const QString& text) {
    widget->setFocus();
    QTest::keyClicks(widget, text);
    QTest::keyClick(widget, Qt::Key_Return);
}

// Types into a grid cell as a person does: move there, type (the first key opens the cell's editor, as in a
// spreadsheet), press Enter.
void typeIntoCell(QAbstractItemView& view, const QModelIndex& cell, const QString& text) {
    view.setFocus();
    view.setCurrentIndex(cell);
    QTest::keyClicks(&view, text.left(1));
    auto* editor = view.viewport()->findChild<QLineEdit*>();
    QVERIFY2(editor, "typing did not open the cell");
    QTest::keyClicks(editor, text.mid(1));
    QTest::keyClick(editor, Qt::Key_Return);
    QApplication::processEvents();  // the delegate commits the cell from the event loop
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // and lets its editor go
}

void typeIntoCell(DTSPage& page, int row, int column, const QString& text) { typeIntoCell(page.gridView(), page.grid().index(row, column), text); }
void typeIntoCell(QTableWidget& table, int row, int column, const QString& text) { typeIntoCell(table, table.model()->index(row, column), text); }

}  // namespace

class WindowTests : public QObject {
    Q_OBJECT

private slots:
    void typingAWeekFillsTheStoreAndTheReview() {
        Workspace w;
        w.window->showPage(MainWindow::dts);
        for (int d = 0; d < 5; ++d) {
            w.dts().showDate(workDate(d));
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::call), "7.0");
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::lunchOut), "13.0");
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::wrap), "19.0");
        }
        // Rowan stays on Friday until 21.5: typed straight into the grid, and Enter goes on to Ines.
        typeIntoCell(w.dts(), 0, DTSGridModel::wrap, "21.5");
        QCOMPARE(w.dts().gridView().currentIndex().row(), 1);

        const Workday friday = w.workday(workDate(4));
        QCOMPARE(friday.generalCrewCall, std::optional<Instant>(at(workDate(4), 7)));
        QCOMPARE(friday.officialLunchOut, std::optional<Instant>(at(workDate(4), 13)));
        QCOMPARE(friday.officialLunchIn, std::optional<Instant>(at(workDate(4), 13, 30)));  // autofilled from the lunch length
        QCOMPARE(w.row(workDate(4), 0).wrapOverride, std::optional<Instant>(at(workDate(4), 21, 30)));
        QCOMPARE(w.row(workDate(4), 1).wrapOverride, std::optional<Instant>());

        // Back on Rowan's row, the review beside the grid is Rowan's week.
        w.dts().gridView().setCurrentIndex(w.dts().grid().index(0, DTSGridModel::wrap));
        const QString review = w.dts().review().reviewText();
        QVERIFY2(review.startsWith("Rowan Vale, week of 2026-11-02"), qPrintable(review));
        QVERIFY2(review.contains("Fri 2026-11-06  Call 7.0  Lunch 13.0-13.5  Wrap 21.5"), qPrintable(review));
        QVERIFY2(review.contains("Wrap 19.0"), qPrintable(review));
    }

    void aRefusedEntryShowsTheSentenceAndChangesNothing() {
        Workspace w;
        w.dts().showDate(monday);
        const auto before = w.row(monday, 0);
        const int actions = w.session->undoStack().count();
        typeIntoCell(w.dts(), 0, DTSGridModel::call, "25.0");
        QCOMPARE(w.dts().statusText(), QString::fromUtf8(time_entry_messages::call.data()));
        QCOMPARE(w.row(monday, 0).callOverride, before.callOverride);
        QCOMPARE(w.session->undoStack().count(), actions);

        typeIntoCell(w.dts(), 0, DTSGridModel::mileage, "lots");
        QCOMPARE(w.dts().statusText(), QString::fromUtf8(dts_messages::mileageInvalid.data()));
        QCOMPARE(DailyTimeSheets::rowMileage(w.session->context(), before.id), std::optional<Decimal>());
    }

    void undoTakesBackAnEditAndRedoPutsItAgain() {
        Workspace w;
        w.dts().showDate(monday);
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::call), "7.0");
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::wrap), "19.0");
        w.dts().gridView().setCurrentIndex(w.dts().grid().index(1, DTSGridModel::wrap));
        const QString reviewBefore = w.dts().review().reviewText();
        QVERIFY2(reviewBefore.startsWith("Ines Calder"), qPrintable(reviewBefore));
        typeIntoCell(w.dts(), 1, DTSGridModel::wrap, "20.0");
        QCOMPARE(w.row(monday, 1).wrapOverride, std::optional<Instant>(at(monday, 20)));
        QVERIFY(w.dts().review().reviewText() != reviewBefore);

        QTest::keyClick(w.window.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(w.row(monday, 1).wrapOverride, std::optional<Instant>());
        QCOMPARE(w.dts().grid().data(w.dts().grid().index(1, DTSGridModel::wrap), Qt::DisplayRole).toString(), QString("19.0"));
        QCOMPARE(w.dts().review().reviewText(), reviewBefore);

        w.session->undoStack().redo();
        QCOMPARE(w.row(monday, 1).wrapOverride, std::optional<Instant>(at(monday, 20)));
    }

    void draggingARowSavesTheCrewOrder() {
        Workspace w;
        w.dts().showDate(monday);
        const Uuid first = w.row(monday, 0).id;
        w.dts().gridView().verticalHeader()->moveSection(0, 1);
        QCOMPARE(w.row(monday, 1).id, first);
        QCOMPARE(w.dts().grid().crewName(1), QString("Rowan Vale"));
    }

    void removingARowKeepsThePersonOnTheProduction() {
        Workspace w;
        w.dts().showDate(monday);
        w.dts().removeRow(0, false);
        QCOMPARE(w.dts().grid().rowCount(), 1);
        QCOMPARE(crew_repository::crewMembers(w.session->context(), w.session->production()->id).size(), std::size_t{2});
        w.session->undoStack().undo();
        QCOMPARE(w.dts().grid().rowCount(), 2);
    }

    void activitiesAreAddedBesideTheGridAndRefusedForSomeoneOnTheDTS() {
        Workspace w;
        const CalendarDate saturday = workDate(5);
        w.dts().showDate(saturday);
        auto* kind = w.dts().findChild<QComboBox*>("activityKind");
        auto* person = w.dts().findChild<QComboBox*>("activityPerson");
        kind->setCurrentIndex(0);  // Travel
        person->setCurrentIndex(person->findText("Rowan Vale"));
        w.dts().findChild<QLineEdit*>("activityTravel")->setText("4.0");
        QVERIFY(!w.dts().addActivity());
        const auto saved = NonDTSActivities::onDate(w.session->context(), w.session->production()->id, saturday);
        QCOMPARE(saved.size(), std::size_t{1});
        QCOMPARE(saved.front().travelDurationSeconds, std::optional<std::int64_t>(4 * 3600));

        w.dts().showDate(monday);  // Rowan has a DTS row on Monday: offered, not choosable, and refused
        QVERIFY(person->itemText(person->findText("Rowan Vale", Qt::MatchStartsWith)).contains("DTS"));
        person->setCurrentIndex(person->findText("Rowan Vale", Qt::MatchStartsWith));
        QVERIFY(w.dts().addActivity().has_value());
        QVERIFY(NonDTSActivities::onDate(w.session->context(), w.session->production()->id, monday).empty());
    }

    void quittingSavesTypedNotesWhenAsked() {
        Workspace w;
        w.dts().showDate(monday);
        QVERIFY(!w.dts().hasUnsavedNotes());
        auto* notes = w.dts().findChild<QPlainTextEdit*>("dtsNotes");
        notes->setPlainText("Rain cover on stage 2.");
        QVERIFY(w.dts().hasUnsavedNotes());
        QVERIFY(w.window->saveEditors());
        QCOMPARE(DailyTimeSheets::notes(w.session->context(), w.workday(monday).id), std::string("Rain cover on stage 2."));
        QVERIFY(!w.dts().hasUnsavedNotes());
    }

    void thePayPageComparesTheWeekAndMarksAGroupOfIssuesReported() {
        Workspace w;
        for (int d = 0; d < 5; ++d) {  // a whole week of times, so that the expected week is complete
            w.dts().showDate(workDate(d));
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::call), "7.0");
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::lunchOut), "13.0");
            typeInto(&w.dts().sharedTimeEdit(DTSTimeField::wrap), "19.0");
        }
        const Production production = *w.session->production();
        const auto rowan = crew_repository::crewMembers(w.session->context(), production.id).front();
        const Workday day = w.workday(monday);
        // Payroll paid Rowan eight hours of straight time only, for a week of 11.5-hour days.
        QVERIFY(!w.session->perform("Confirm", [&](ModelContext& c) {
            pay_comparison_settings::setProfile(c, production.id, PayComparisonProfile::ep);
            const Uuid stubID = Uuid::generate();
            const ConfirmedPayStubEarningLine regular{Uuid::generate(), stubID, "REGULAR", Decimal("8.0"), Decimal("40.00"), Decimal("320.00"), 0};
            const ConfirmedPayStubActualPay stub{stubID,          production.id,    rowan.id,         day.payrollWeekID, monday,
                                                 workDate(6),     "ROWAN VALE",     std::nullopt,     std::nullopt,      "GRIP",
                                                 std::nullopt,    Decimal("320.00"), "%PDF-1.4\n%%EOF\n", "rowan.pdf",   at(monday, 20),
                                                 at(monday, 20),  at(monday, 20),   {regular}};
            confirmed_pay_stubs::confirm(c, stub, false);
        }));
        w.window->showPage(MainWindow::pay);  // looked at where a person looks at it
        PayPage& pay = w.window->payPage();
        pay.showWeek(day.payrollWeekID);
        QVERIFY2(pay.dashboardText().startsWith("Pay stubs confirmed: 1 of 2 people in this Payroll Week."), qPrintable(pay.dashboardText()));
        QVERIFY(pay.dashboardText().contains("Awaiting Pay Stub: Ines Calder"));
        QCOMPARE(pay.comparison()->comparisons.front().outcome, PayComparisonOutcome::discrepancy);

        const auto openIssues = [&] {
            auto issues = payroll_issues::list(w.session->context(), production.id);
            std::erase_if(issues, [](const PayrollIssue& issue) { return issue.state() != PayrollIssueState::needsAttention; });
            return issues.size();
        };
        const auto before = openIssues();
        QVERIFY(before > 0);
        QVERIFY(!pay.setGroupState(0, PayrollIssueState::reported));
        QCOMPARE(openIssues(), before - 1);

        // One issue chosen in the tree shows its detail; a note set on it alone is shown there afterwards.
        auto* tree = pay.findChild<QTreeWidget*>("payIssues");
        QTreeWidgetItem* firstIssue = nullptr;
        for (QTreeWidgetItemIterator it(tree); *it && !firstIssue; ++it) {
            if ((*it)->data(0, Qt::UserRole + 1).isValid() && (*it)->text(2) == "Reported to Payroll") firstIssue = *it;
        }
        QVERIFY(firstIssue);
        const int group = firstIssue->data(0, Qt::UserRole).toInt();
        tree->setCurrentItem(firstIssue);
        QVERIFY2(pay.issueDetailText().contains("  Reported "), qPrintable(pay.issueDetailText()));
        pay.findChild<QLineEdit*>()->setText("Sent to payroll on Monday.");
        QVERIFY(!pay.setIssueState(group, 0, PayrollIssueState::noted));
        tree = pay.findChild<QTreeWidget*>("payIssues");
        QVERIFY(!pay.moveWeekIssues(PayrollIssueState::needsAttention, PayrollIssueState::reported));
        QCOMPARE(openIssues(), std::size_t{0});
        const auto noted = payroll_issues::inState(w.session->context(), production.id, PayrollIssueState::noted, std::nullopt);
        QCOMPARE(noted.size(), std::size_t{1});
        QVERIFY(payroll_issues::detailText(noted.front()).find("Previously reported") != std::string::npos);
        QVERIFY(payroll_issues::detailText(noted.front()).find("Previous workflow note: Sent to payroll on Monday.") != std::string::npos);
        QVERIFY(pay.summaryText().startsWith("Payroll Issues \u2014 Night Harbor"));
        QVERIFY2(pay.claimText().contains("Rowan Vale"), qPrintable(pay.claimText()));
    }

    void exportingADTSIsHeldUntilItIsReadyThenWritesThePDF() {
        Workspace w;
        w.dts().showDate(monday);
        const QString file = QString::fromStdString((w.folder.path() / "Production DTS.pdf").string());
        const auto unconfigured = w.dts().exportTo(file, true);
        QVERIFY(unconfigured.has_value());  // no form chosen for the production yet
        QVERIFY(!QFile::exists(file));

        QVERIFY(!w.session->perform("Choose Form", [&](ModelContext& c) {
            dts_export::setMode(c, w.session->production()->id, ProductionDTSExportTemplateMode::legacyKestrel);
            dts_export::setBuiltInFormEligible(c, w.session->production()->id, true);
        }));
        const auto held = w.dts().exportTo(file, false);  // no times yet: the export waits for the user's word
        QVERIFY(held.has_value());
        QCOMPARE(held->title, QString::fromUtf8(dts_export_words::reviewTitle.data()));
        QVERIFY2(held->message.contains("Rowan Vale: "), qPrintable(held->message));
        QVERIFY(!QFile::exists(file));

        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::call), "7.0");
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::lunchOut), "13.0");
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::wrap), "19.0");
        const auto exported = w.dts().exportTo(file, true);
        QVERIFY2(!exported, exported ? qPrintable(exported->title + ": " + exported->message) : "");
        QFile pdf(file);
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        QCOMPARE(pdf.read(5), QByteArray("%PDF-"));
    }

    void stubsAreReadAwayFromTheWindowAndTheReadyOnesConfirmed() {
        Workspace w;
        QVERIFY(!w.window->crewPage().addPerson({"Marisol Quint", monday, CrewParticipation::fullTime, std::nullopt, std::nullopt, "52.00"}));
        PayPage& pay = w.window->payPage();
        pay.showWeek(w.workday(monday).payrollWeekID);
        const QString stub = QString(TESSEL_STUB_FIXTURES) + "/demo-week/01-quint.pdf";
        const QString copy = QString::fromStdString((w.folder.path() / "same-stub-again.pdf").string());
        QVERIFY(QFile::copy(stub, copy));
        QVERIFY(!pay.stubs().importFiles({stub, copy}));
        QVERIFY(pay.stubs().isReading());  // the window goes on while the files are read
        QTRY_VERIFY_WITH_TIMEOUT(!pay.stubs().isReading(), 60000);
        const auto& batch = *pay.stubs().batch();
        QCOMPARE(batch.candidates.size(), std::size_t{2});
        QCOMPARE(statusOf(batch.candidates[0], batch), PayStubBatchStatus::ready);
        QCOMPARE(statusOf(batch.candidates[1], batch), PayStubBatchStatus::duplicate);

        QVERIFY(!pay.stubs().confirmReady());
        const auto confirmed = confirmed_pay_stubs::forWeek(w.session->context(), w.workday(monday).payrollWeekID);
        QCOMPARE(confirmed.size(), std::size_t{1});
        QCOMPARE(confirmed.front().sourceFilename, std::string("01-quint.pdf"));
        QCOMPARE(statusOf(pay.stubs().batch()->candidates[0], *pay.stubs().batch()), PayStubBatchStatus::confirmed);
    }

    // Fenwick's stub prints the week before (11/01 to 11/07): reviewed beside its page, an amount and the
    // gross corrected, the period associated with the week, then confirmed, opened again and removed.
    void aStubIsCorrectedBesideItsPageConfirmedAndRemoved() {
        Workspace w;
        QVERIFY(!w.window->crewPage().addPerson({"Fenwick Osei", monday, CrewParticipation::fullTime, std::nullopt, std::nullopt, "38.00"}));
        w.window->showPage(MainWindow::pay);
        PayPage& pay = w.window->payPage();
        const Uuid weekID = w.workday(monday).payrollWeekID;
        pay.showWeek(weekID);
        QVERIFY(!pay.stubs().importFiles({QString(TESSEL_STUB_FIXTURES) + "/demo-week/06-osei.pdf"}));
        QTRY_VERIFY_WITH_TIMEOUT(!pay.stubs().isReading(), 60000);
        QCOMPARE(statusOf(pay.stubs().batch()->candidates[0], *pay.stubs().batch()), PayStubBatchStatus::wrongPeriod);

        pay.reviewCandidate(0);
        QVERIFY(pay.isReviewing());
        StubReviewPanel& review = pay.stubReview();
        QCOMPARE(review.findChild<QComboBox*>("stubCrew")->currentText(), QString("Fenwick Osei"));
        QVERIFY(review.page().pageCount() == 1);
        QPushButton* confirm = nullptr;
        for (auto* button : review.findChildren<QPushButton*>()) {
            if (button->text() == "Confirm Pay Stub") confirm = button;
        }
        QVERIFY(confirm);
        QVERIFY(!confirm->isEnabled());
        QVERIFY(review.remainingText().contains(QString::fromUtf8(pay_stub_review_words::periodMismatch.data())));

        // The overtime amount chosen: marked where it was printed (right of the page's middle), both readings shown.
        auto& earnings = *review.findChild<QTableWidget*>("stubEarnings");
        earnings.setCurrentCell(1, 3);
        QCOMPARE(review.page().marks().size(), std::size_t{2});
        QVERIFY(review.page().marks().front().emphasised);
        QVERIFY(review.page().marks().front().bounds.x > 0.5);
        QVERIFY2(review.detailText().contains("Downloaded PDF text:</b> 456.00") && review.detailText().contains("Tesseract OCR:"),
                 qPrintable(review.detailText()));

        typeIntoCell(earnings, 1, 3, "456.01");
        QApplication::processEvents();
        QCOMPARE(earnings.item(1, 4)->text(), QString("Corrected"));
        QVERIFY(review.remainingText().contains(QString::fromUtf8(pay_stub_review_words::grossNotSum.data())));
        typeIntoCell(*review.findChild<QTableWidget*>("stubFacts"), 5, 0, "2001.01");
        QApplication::processEvents();
        QVERIFY(!review.remainingText().contains(QString::fromUtf8(pay_stub_review_words::grossNotSum.data())));
        auto* acknowledge = review.findChild<QCheckBox*>("stubAcknowledge");
        QVERIFY(acknowledge->isVisibleTo(&review));
        QTest::mouseClick(acknowledge, Qt::LeftButton, {}, QPoint(4, acknowledge->height() / 2));
        QVERIFY(confirm->isEnabled());
        QTest::mouseClick(confirm, Qt::LeftButton);

        QVERIFY(!pay.isReviewing());
        auto stored = confirmed_pay_stubs::forWeek(w.session->context(), weekID);
        QCOMPARE(stored.size(), std::size_t{1});
        QCOMPARE(stored.front().gross.toString(), std::string("2001.01"));
        QCOMPARE(stored.front().printedPayPeriodStart, workDate(-1));
        QCOMPARE(statusOf(pay.stubs().batch()->candidates[0], *pay.stubs().batch()), PayStubBatchStatus::confirmed);
        QVERIFY(pay.dashboardText().contains("Pay stubs confirmed: 1 of"));
        // The chart shows Fenwick's paid gross as not compared: the DTS has no times, so nothing is expected yet.
        const int fenwick = static_cast<int>(pay.chart().crewNames().indexOf("Fenwick Osei"));
        QVERIFY(fenwick >= 0);
        QCOMPARE(pay.chart().paidSet(GrossChart::Paid::notCompared)->at(fenwick), 2001.01);
        QCOMPARE(pay.chart().paidSet(GrossChart::Paid::overpaid)->at(fenwick), 0.0);
        QCOMPARE(pay.chart().expectedSet()->at(fenwick), 0.0);

        // Opened again from the person's row of the comparison: saved as an existing stub, or removed.
        const auto& people = pay.comparison()->comparisons;
        const auto row = std::find_if(people.begin(), people.end(), [](const auto& p) { return p.crewName == "Fenwick Osei"; }) - people.begin();
        QVERIFY(!pay.openConfirmedStub(static_cast<int>(row)));
        QVERIFY(pay.isReviewing());
        QCOMPARE(review.session()->isExistingAuthority, true);
        QCOMPARE(earnings.item(1, 3)->text(), QString("456.01"));
        QVERIFY(!review.remove());
        QVERIFY(!pay.isReviewing());
        QVERIFY(confirmed_pay_stubs::forWeek(w.session->context(), weekID).empty());
        w.session->undoStack().undo();  // and brought back with Ctrl+Z
        QCOMPARE(confirmed_pay_stubs::forWeek(w.session->context(), weekID).size(), std::size_t{1});
    }

    // The Department Head signs on the pad; the production travels as an archive and comes back as a copy
    // whose imported identity waits until it is accepted.
    void aDrawnSignatureTravelsInTheArchiveAndWaitsToBeAccepted() {
        Workspace w;
        w.window->showPage(MainWindow::production);
        ProductionPage& page = w.window->productionPage();
        page.findChild<QLineEdit*>("departmentHead")->setText("Morgan Hale");
        QVERIFY(!page.saveDetails());

        SignaturePad& pad = page.signaturePad();
        QVERIFY(pad.isEmpty());
        QTest::mousePress(&pad, Qt::LeftButton, {}, QPoint(30, 70));
        for (int x = 40; x <= 200; x += 20) QTest::mouseMove(&pad, QPoint(x, 70 - (x % 40)));
        QTest::mouseRelease(&pad, Qt::LeftButton, {}, QPoint(210, 60));
        QVERIFY(!pad.isEmpty());
        QVERIFY(!page.useDrawnSignature());
        const Uuid original = w.session->production()->id;
        const auto stored = dts_export::signature(w.session->context(), original);
        QVERIFY(stored && stored->rfind("\x89PNG", 0) == 0);

        const QString notAnImage = QString::fromStdString((w.folder.path() / "notes.png").string());
        QFile notes(notAnImage);
        QVERIFY(notes.open(QIODevice::WriteOnly));
        notes.write("not a picture");
        notes.close();
        const auto refused = page.importSignature(notAnImage);
        QVERIFY(refused.has_value());
        QCOMPARE(refused->message, QString::fromUtf8(dts_export_words::signatureRefused.data()));
        QCOMPARE(dts_export::signature(w.session->context(), original), stored);  // the drawn one is kept

        const QString archive = QString::fromStdString((w.folder.path() / "Tessel-Production.tesselarchive").string());
        QVERIFY(!page.exportProductionTo(archive));
        QFile file(archive);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const std::string bytes = file.readAll().toStdString();
        production_archive::ImportedProduction copy{Uuid::generate(), {}, false, false};
        QVERIFY(!w.session->perform("Import", [&](ModelContext& c) { copy = production_archive::importProduction(c, bytes); }));
        QVERIFY(copy.copy && copy.pendingIdentity);
        w.session->chooseProduction(copy.productionID);
        QApplication::processEvents();
        QVERIFY(page.identityWaiting());
        QVERIFY(production_profile::identity(w.session->context(), copy.productionID).departmentHeadName.empty());
        QVERIFY(!dts_export::signature(w.session->context(), copy.productionID));

        QVERIFY(!page.useImportedIdentity());
        QVERIFY(!page.identityWaiting());
        QCOMPARE(production_profile::identity(w.session->context(), copy.productionID).departmentHeadName, std::string("Morgan Hale"));
        QCOMPARE(dts_export::signature(w.session->context(), copy.productionID), stored);
        QVERIFY(!pending_identity::find(w.session->context(), copy.productionID));
    }

    // The invented typical blank form: imported, its notes left blank, the page number drawn with the mouse,
    // the crew rows confirmed, test-filled, approved, chosen as the export form and a DTS exported on it.
    void aBlankFormIsMappedApprovedAndUsedForExport() {
        Workspace w;
        w.window->showPage(MainWindow::form);
        TemplatePage& form = w.window->templatePage();
        QVERIFY(!form.importBlankPage(QString(TESSEL_FORM_FIXTURES) + "/typical.pdf"));
        QVERIFY(form.page().pageCount() == 1);
        QVERIFY(!form.page().marks().empty());  // the proposals, drawn over the page
        QVERIFY2(form.blockersText().contains(QString::fromUtf8(dts_template_words::unresolvedReview.data())), qPrintable(form.blockersText()));
        const auto rowOf = [&](DTSSemanticFieldID field) {
            const auto& m = form.mappings();
            return static_cast<int>(std::find_if(m.begin(), m.end(), [&](const auto& x) { return x.semanticFieldID == field; }) - m.begin());
        };
        QVERIFY(!form.leaveBlank(rowOf(DTSSemanticFieldID::workdayNotes)));

        form.drawField(DTSSemanticFieldID::derivedPageXOfY);
        PdfPageView& view = form.page();
        const int w_ = view.width(), h_ = view.heightForWidth(view.width());
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(int(w_ * 0.8), int(h_ * 0.945)));
        QTest::mouseMove(&view, QPoint(int(w_ * 0.9), int(h_ * 0.96)));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(int(w_ * 0.95), int(h_ * 0.97)));
        const auto& placed = form.mappings()[static_cast<std::size_t>(rowOf(DTSSemanticFieldID::derivedPageXOfY))];
        QCOMPARE(placed.status, DTSTemplateReviewMapping::Status::mapped);
        QVERIFY(placed.region);
        QVERIFY2(std::abs(placed.region->x - 0.8) < 0.01 && std::abs(placed.region->width - 0.15) < 0.01,
                 qPrintable(QString("%1 %2 %3 %4 of %5x%6").arg(placed.region->x).arg(placed.region->y).arg(placed.region->width).arg(placed.region->height).arg(w_).arg(h_)));

        QVERIFY(form.approve().has_value());  // the rows are not confirmed yet
        QVERIFY(!form.confirmCrewRows());
        QVERIFY(!form.testFill(GenericDTSTestFillScenario::overflow));
        QVERIFY(form.page().pageCount() >= 2);
        form.showDraft();
        QVERIFY(!form.approve());

        QVERIFY(!w.window->productionPage().chooseExportForm(ProductionDTSExportTemplateMode::productionTemplate));
        w.window->showPage(MainWindow::dts);
        w.dts().showDate(monday);
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::call), "7.0");
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::lunchOut), "13.0");
        typeInto(&w.dts().sharedTimeEdit(DTSTimeField::wrap), "19.0");
        const QString file = QString::fromStdString((w.folder.path() / "Production DTS.pdf").string());
        const auto exported = w.dts().exportTo(file, true);
        QVERIFY2(!exported, exported ? qPrintable(exported->title + ": " + exported->message) : "");
        PdfPageView check;
        QFile pdf(file);
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        QVERIFY(check.setDocument(pdf.readAll()));
        QCOMPARE(check.pageCount(), 1);
    }

    // A ruleset saved to the library travels as a file and comes back through the file manager's way in;
    // a crew library file's person of a known name waits for the user's choice; a position is priced.
    void theLibrariesKeepRulesetsPeopleAndRates() {
        Workspace w;
        w.window->showPage(MainWindow::library);
        LibraryPage& library = w.window->libraryPage();
        RulesetLibraryPanel& rulesets = library.rulesets();
        QVERIFY(!rulesets.saveCurrent("House Rules"));
        QCOMPARE(rulesets.items().size(), std::size_t{1});
        QVERIFY(rulesets.saveCurrent("  ").has_value());  // a blank name is refused with its sentence
        QCOMPARE(rulesets.statusText(), QString::fromUtf8(rules_library::emptyName.data()));
        const QString rulesFile = QString::fromStdString((w.folder.path() / "House.tesselrules").string());
        QVERIFY(!rulesets.exportTo(0, rulesFile));
        QVERIFY(!rulesets.remove(0));
        QVERIFY(rulesets.items().empty());
        const QString folder = QString::fromStdString(w.folder.path().string());
        QCOMPARE(rulesets.importFrom(folder)->message, QString("The file \u201C%1\u201D could not be read.").arg(folder));
        QVERIFY(!w.window->openFile(rulesFile));
        QCOMPARE(rulesets.items().size(), std::size_t{1});
        QVERIFY(rulesets.items().front().importedAt.has_value());
        QVERIFY(!rulesets.apply(0));

        CrewLibraryPanel& people = library.crewLibrary();
        QVERIFY(!people.addPerson("Rowan Vale", "Key Grip"));
        const QString crewFile = QString::fromStdString((w.folder.path() / "Crew.tesselcrewlibrary").string());
        QVERIFY(!people.exportTo(crewFile));
        QVERIFY(!people.remove(0));
        QVERIFY(!people.addPerson("Rowan Vale", "Best Boy Grip"));  // another Rowan Vale, as far as the file knows
        QVERIFY(!w.window->openFile(crewFile));
        QVERIFY(people.plan().has_value());
        QCOMPARE(people.plan()->conflicts.size(), std::size_t{1});
        const auto unsettled = people.importPlan();
        QVERIFY(unsettled.has_value());
        QCOMPARE(unsettled->message, QString::fromUtf8(crew_library_words::chooseEveryMatch.data()));
        QCOMPARE(people.people().size(), std::size_t{1});
        people.resolve(0, CrewLibraryImportResolution::importSeparate);
        QVERIFY(!people.importPlan());
        QCOMPARE(people.people().size(), std::size_t{2});
        QVERIFY(people.statusText().startsWith(QString::fromUtf8(crew_library_words::importComplete.data())));

        PositionsPanel& positions = library.positions();
        QVERIFY(!positions.addPosition("Key Grip", "7001"));
        QVERIFY(positions.addPosition("Dolly Grip", "70a1").has_value());
        QCOMPARE(positions.statusText(), QString::fromUtf8(position_words::digitsOnly.data()));
        QVERIFY(!positions.createCard("Local 80", monday));
        QVERIFY(!positions.setScale("Local 80", 0, "45.00"));
        const auto scales = rate_cards::scales(w.session->context(), w.session->production()->id);
        QCOMPARE(scales.size(), std::size_t{1});
        QCOMPARE(scales.front().hourlyAmount.toString(), std::string("45.00"));
    }

    void theCrewEditorRefusesADuplicateNameWithTheRosterSentence() {
        Workspace w;
        w.window->showPage(MainWindow::crew);  // edited where a person edits crew
        const auto refusal = w.window->crewPage().addPerson({"Rowan Vale", monday});
        QVERIFY(refusal.has_value());
        QCOMPARE(refusal->message, QString("There is already a crew member named \u201CRowan Vale\u201D on this production."));
        QCOMPARE(crew_repository::crewMembers(w.session->context(), w.session->production()->id).size(), std::size_t{2});
        QVERIFY(!w.window->crewPage().addPerson({"Dell Okafor", monday, CrewParticipation::dayplayer, std::nullopt, std::nullopt, "30.00"}));
        QCOMPARE(crew_repository::crewMembers(w.session->context(), w.session->production()->id).size(), std::size_t{3});
    }

    void theCrewEditorSetsDatedTermsAndAllowancesThroughItsForm() {
        Workspace w;
        w.window->showPage(MainWindow::crew);  // edited where a person edits crew
        CrewPage& page = w.window->crewPage();
        const auto rowan = crew_repository::crewMembers(w.session->context(), w.session->production()->id).front();
        page.choosePerson(rowan.id);
        auto* kind = page.findChild<QComboBox*>("termKind");
        auto* value = page.findChild<QLineEdit*>("termValue");
        auto* set = page.findChild<QPushButton*>("setTerm");
        kind->setCurrentIndex(kind->findText("Per Diem"));
        value->setText("12.50");
        QTest::mouseClick(set, Qt::LeftButton);
        kind->setCurrentIndex(kind->findText("Guarantee"));
        value->setText("ten hours");
        QTest::mouseClick(set, Qt::LeftButton);
        QCOMPARE(page.statusText(), QString("Enter the guarantee in payroll-decimal hours, such as 10.0."));

        const auto record = crew_roster::records(w.session->context(), rowan.id).front();
        const auto terms = CompensationProvisions::engagementTerms(w.session->context(), record.engagement.id);
        QCOMPARE(terms.size(), std::size_t{1});
        QCOMPARE(terms.front().personalDailyAmount->toString(), std::string("12.50"));
        QVERIFY(record.guarantees.empty());
        auto* shown = page.findChild<QTableWidget*>("terms");
        QCOMPARE(shown->rowCount(), 2);  // the rate and the per diem
        QCOMPARE(shown->item(1, 2)->text(), QString("12.50 USD a day"));
    }

    void aSecondEngagementIsRefusedWhileTheFirstIsInForceAndSavedOnceItEnds() {
        Workspace w;
        w.window->showPage(MainWindow::crew);  // edited where a person edits crew
        CrewPage& page = w.window->crewPage();
        const auto rowan = crew_repository::crewMembers(w.session->context(), w.session->production()->id).front();
        page.choosePerson(rowan.id);
        auto* saveNew = page.findChild<QPushButton*>("newEngagement");
        QTest::mouseClick(saveNew, Qt::LeftButton);  // the same dates again: overlapping
        QVERIFY2(page.statusText().contains("already has an engagement from 2026-11-02"), qPrintable(page.statusText()));
        QCOMPARE(crew_roster::records(w.session->context(), rowan.id).size(), std::size_t{1});

        QVERIFY(!w.session->perform("End", [&](ModelContext& c) {
            auto first = crew_roster::records(c, rowan.id).front().engagement;
            first.effectiveThrough = workDate(4);
            crew_roster::saveEngagement(c, first, {});
        }));
        page.findChild<QDateEdit*>("engagementFrom")->setDate(QDate(2026, 12, 1));  // a later hire, open-ended
        page.findChild<QCheckBox*>("engagementHasLastDay")->setChecked(false);
        QTest::mouseClick(saveNew, Qt::LeftButton);
        QCOMPARE(page.statusText(), QString());
        QCOMPARE(crew_roster::records(w.session->context(), rowan.id).size(), std::size_t{2});
    }

    void theRulesFormSavesOnlyAValidRuleset() {
        Workspace w;
        RulesPage& rules = w.window->rulesPage();
        QTreeWidgetItem* minimum = rules.item("payrollRules.localSchedule.dailyMinimumSeconds");
        QVERIFY(minimum);
        minimum->setText(1, "-3600");
        QVERIFY(rules.hasUnsavedChanges());
        QVERIFY(rules.save().has_value());
        QVERIFY(!rules.statusText().isEmpty());
        QVERIFY(rules.hasUnsavedChanges());  // the edit is kept for the user to mend

        rules.item("payrollRules.localSchedule.dailyMinimumSeconds")->setText(1, "36000");
        QVERIFY(!rules.save().has_value());
        QVERIFY(!rules.hasUnsavedChanges());
        ModelContext& c = w.session->context();
        const auto revision = ProductionRulesets::currentRevision(c, w.session->production()->id, monday);
        QCOMPARE(ProductionRulesets::readConfiguration(c, w.session->production()->id, *revision).payrollRules.localSchedule.dailyMinimumSeconds,
                 std::int64_t{36000});
    }

    void theSetupGuideMakesAProductionReadyForItsFirstDTS() {
        testing::TemporaryFolder folder;
        auto opened = ShellSession::open(TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path() / "data"), folder.path() / "config");
        ShellSession& session = *std::get<std::unique_ptr<ShellSession>>(opened);
        SetupGuide guide(session);
        guide.show();
        guide.findChild<QLineEdit*>("setupName")->setText("Cold Open");
        guide.next();
        guide.next();
        guide.addCrewLine("Avery Holm", "48.00", false);
        guide.addCrewLine("", "", false);  // a line left empty is not a person
        guide.addCrewLine("Kit Serrano", "41.50", true);
        guide.next();
        guide.accept();
        QVERIFY(guide.createdProduction().has_value());
        ModelContext& c = session.context();
        const auto crew = crew_repository::crewMembers(c, *guide.createdProduction());
        QCOMPARE(crew.size(), std::size_t{2});
        const auto firstDTS = DailyTimeSheets::find(c, *guide.createdProduction(), *guide.plan().firstDTS);
        QVERIFY(firstDTS.has_value());
        QCOMPARE(payroll_week_repository::entries(c, firstDTS->id).size(), std::size_t{1});  // the dayplayer is added by hand
    }

    void anUnreadableSettingsFileIsReportedAtStartUp() {
        testing::TemporaryFolder folder;
        const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path() / "data");
        const auto settingsFile = UserSettingsStore::settingsPath(TesselStoreEnvironmentKind::normal, folder.path() / "config");
        std::filesystem::create_directories(settingsFile.parent_path());
        std::ofstream(settingsFile) << "{ not json";
        auto opened = ShellSession::open(environment, folder.path() / "config");
        const auto& session = *std::get<std::unique_ptr<ShellSession>>(opened);
        QCOMPARE(session.startupWarnings().size(), std::size_t{1});
        QVERIFY2(session.startupWarnings().front().message.contains(QString::fromStdString(settingsFile.string())),
                 qPrintable(session.startupWarnings().front().message));
    }

    void aForeignStoreShowsOnlyTheUnavailableScreen() {
        testing::TemporaryFolder folder;
        const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path());
        std::filesystem::create_directories(environment.storeURL.parent_path());
        std::ofstream(environment.storeURL) << "not a store";
        auto opened = ShellSession::open(environment, folder.path() / "config");
        QVERIFY(std::holds_alternative<TesselUnavailableStoreState>(opened));
        UnavailableStoreScreen screen(std::get<TesselUnavailableStoreState>(opened), environment, {"0.1.0", "Test"});
        screen.show();
        QCOMPARE(screen.windowTitle(), QString("Tessel Data Store Unavailable"));
        bool saysWhy = false;
        for (auto* label : screen.findChildren<QLabel*>()) saysWhy |= label->text() == QString::fromUtf8(TesselUnavailableStoreState::message.data());
        QVERIFY(saysWhy);
        QCOMPARE(screen.exportButton()->text(), QString("Export Diagnostic Package\u2026"));

        const QString package = QString::fromStdString((folder.path() / "support.tesseldiagnostic").string());
        QVERIFY(!screen.writePackage(package).has_value());
        QFile written(package);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.read(2), QByteArray("PK"));
        std::ifstream store(environment.storeURL);
        std::string kept;
        std::getline(store, kept);
        QCOMPARE(kept, std::string("not a store"));  // the store is only read
    }
};

QTEST_MAIN(WindowTests)
#include "WindowTests.moc"

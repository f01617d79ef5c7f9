#include "MainWindow.hpp"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <QUrlQuery>
#include <QVBoxLayout>

#include "App/exchange/ProductionArchive.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/RulesLibrary.hpp"
#include "App/rules/RulesetFile.hpp"
#include "App/shell/CrewPage.hpp"
#include "App/shell/DTSPage.hpp"
#include "App/shell/PayPage.hpp"
#include "App/shell/ProductionPage.hpp"
#include "App/shell/TemplatePage.hpp"
#include "App/shell/CrewLibraryPanel.hpp"
#include "App/shell/LibraryPage.hpp"
#include "App/shell/PositionsPanel.hpp"
#include "App/shell/RulesetLibraryPanel.hpp"
#include "App/shell/RulesPage.hpp"
#include "App/shell/SetupGuide.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

using shell_widgets::now;

}  // namespace

// ---- welcome ----

WelcomePage::WelcomePage(ShellSession& session, MainWindow& window, QWidget* parent) : QWidget(parent), session_(session), window_(window) {
    // A column of reading width, not the whole window.
    auto* outer = new QHBoxLayout(this);
    auto* column = new QWidget;
    column->setMaximumWidth(900);
    outer->addWidget(column, 1);
    outer->addStretch(0);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(40, 32, 40, 32);
    layout->setSpacing(14);
    auto* title = new QLabel(tr("Welcome to Tessel"));
    title->setStyleSheet("font-size: 22pt; font-weight: bold;");
    layout->addWidget(title);
    auto* about = new QLabel(tr("Keep your department\u2019s Daily Time Sheets, see what every crew member should be paid and why, "
                                "and check it against the payroll company\u2019s stubs."));
    about->setWordWrap(true);
    about->setStyleSheet("font-size: 12pt; color: #333;");
    layout->addWidget(about);
    auto* notice = new QLabel(qtext(alphaNotice));
    notice->setObjectName("alphaNotice");
    notice->setWordWrap(true);
    notice->setStyleSheet("background: #fff4d6; border: 1px solid #e3c77a; border-radius: 4px; padding: 8px;");
    layout->addWidget(notice);
    auto* heading = new QLabel(tr("Productions"));
    heading->setStyleSheet("font-size: 14pt; font-weight: bold; margin-top: 10px;");
    layout->addWidget(heading);
    list_ = new QListWidget;
    list_->setObjectName("welcomeProductions");
    list_->setMaximumHeight(220);
    list_->setStyleSheet("QListWidget { font-size: 12pt; } QListWidget::item { padding: 6px; }");
    connect(list_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        session_.chooseProduction(Uuid::parse(utf8(item->data(Qt::UserRole).toString())));
        window_.showPage(MainWindow::dts);
    });
    layout->addWidget(list_);
    summary_ = new QLabel;
    summary_->setStyleSheet("color: #555;");
    layout->addWidget(summary_);
    auto* buttons = new QHBoxLayout;
    auto* setUp = new QPushButton(tr("Set Up a New Production\u2026"));
    setUp->setDefault(true);
    connect(setUp, &QPushButton::clicked, this, [this] { window_.runSetupGuide(); });
    auto* open = new QPushButton(tr("Open"));
    connect(open, &QPushButton::clicked, this, [this] {
        if (auto* item = list_->currentItem()) emit list_->itemActivated(item);
    });
    auto* feedback = new QPushButton(tr("Send Feedback\u2026"));
    connect(feedback, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(MainWindow::feedbackMail()); });
    buttons->addWidget(setUp);
    buttons->addWidget(open);
    buttons->addStretch(1);
    buttons->addWidget(feedback);
    layout->addLayout(buttons);
    layout->addStretch(1);
    shell_widgets::reloadWhenShown(this, session_, [this] { reload(); });
}

void WelcomePage::reload() {
    list_->clear();
    ModelContext& context = session_.context();
    const auto current = session_.production();
    for (const auto& production : production_repository::list(context)) {
        const auto crew = crew_repository::crewMembers(context, production.id).size();
        const auto weeks = payroll_week_repository::weeks(context, production.id).size();
        auto* item = new QListWidgetItem(QString("%1 \u2014 %2 crew, %3 %4")
                                             .arg(qtext(production.name))
                                             .arg(crew)
                                             .arg(weeks)
                                             .arg(weeks == 1 ? tr("payroll week") : tr("payroll weeks")));
        item->setData(Qt::UserRole, QString::fromStdString(production.id.text()));
        list_->addItem(item);
        if (current && current->id == production.id) list_->setCurrentItem(item);
    }
    summary_->setText(list_->count() == 0 ? tr("No productions yet: the setup guide walks you from a name to a first DTS.")
                                          : tr("Double-click a production to open it."));
}

// ---- main window ----

MainWindow::MainWindow(ShellSession& session, QWidget* parent) : QMainWindow(parent), session_(session) {
    setWindowTitle("Tessel");
    setWindowIcon(QIcon::fromTheme("app.tessel.Tessel"));  // installed with the desktop entry
    auto* toolbar = addToolBar(tr("Production"));
    toolbar->setMovable(false);
    toolbar->addWidget(new QLabel(tr(" Production: ")));
    productions_ = new QComboBox;
    productions_->setObjectName("productionChoice");
    productions_->setMinimumContentsLength(24);
    connect(productions_, &QComboBox::activated, this, [this] {
        session_.chooseProduction(Uuid::parse(utf8(productions_->currentData().toString())));
    });
    toolbar->addWidget(productions_);

    navigation_ = new QListWidget;
    navigation_->setObjectName("navigation");
    navigation_->addItems({tr("Welcome"), tr("Crew"), tr("DTS"), tr("Pay"), tr("Rules"), tr("Production"), tr("DTS Form"), tr("Library")});
    navigation_->setFixedWidth(130);
    navigation_->setStyleSheet("QListWidget { font-size: 12pt; } QListWidget::item { padding: 8px; }");
    pages_ = new QStackedWidget;
    welcome_ = new WelcomePage(session_, *this);
    crew_ = new CrewPage(session_);
    dts_ = new DTSPage(session_);
    pay_ = new PayPage(session_);
    rules_ = new RulesPage(session_);
    production_ = new ProductionPage(session_);
    form_ = new TemplatePage(session_);
    library_ = new LibraryPage(session_);
    for (QWidget* page : std::initializer_list<QWidget*>{welcome_, crew_, dts_, pay_, rules_, production_, form_, library_}) pages_->addWidget(page);
    connect(navigation_, &QListWidget::currentRowChanged, pages_, &QStackedWidget::setCurrentIndex);
    auto* centre = new QWidget;
    auto* layout = new QHBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(navigation_);
    layout->addWidget(pages_, 1);
    setCentralWidget(centre);

    auto* notice = new QLabel(qtext(alphaNotice));
    notice->setStyleSheet("color: #7a5a00; padding: 0 6px;");
    statusBar()->addWidget(notice, 1);
    buildMenus();
    connect(&session_, &ShellSession::productionChanged, this, &MainWindow::productionChanged);
    connect(&session_, &ShellSession::storeChanged, this, &MainWindow::reloadProductions);
    connect(&session_, &ShellSession::undoRefused, this, &MainWindow::showRefusal);
    reloadProductions();
    showPage(session_.production() ? dts : welcome);
    resize(1500, 900);
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    connect(file->addAction(tr("Set Up a New Production\u2026")), &QAction::triggered, this, [this] { runSetupGuide(); });
    QAction* open = file->addAction(tr("Import\u2026"));
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Import"), QString(),
                                                          tr("Tessel files (*.tesselarchive *.tesselrules *.tesselcrewlibrary *.tesselratepackage)"));
        if (path.isEmpty()) return;
        if (const auto refusal = openFile(path)) showRefusal(*refusal);
    });
    connect(file->addAction(tr("Export Production\u2026")), &QAction::triggered, this, [this] {
        showPage(production);
        production_->askAndExportProduction();
    });
    file->addSeparator();
    QAction* quit = file->addAction(tr("Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = session_.undoStack().createUndoAction(this, tr("Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = session_.undoStack().createRedoAction(this, tr("Redo"));
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(undo);
    edit->addAction(redo);

    QMenu* go = menuBar()->addMenu(tr("&Go"));
    const std::array<QString, 8> names{tr("Welcome"), tr("Crew"), tr("DTS"), tr("Pay"), tr("Rules"), tr("Production"), tr("DTS Form"), tr("Library")};
    for (int page = 0; page < static_cast<int>(names.size()); ++page) {
        QAction* action = go->addAction(names[static_cast<std::size_t>(page)]);
        action->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + page)));
        connect(action, &QAction::triggered, this, [this, page] { showPage(static_cast<Page>(page)); });
    }

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    connect(help->addAction(tr("Send Feedback\u2026")), &QAction::triggered, this, [] { QDesktopServices::openUrl(feedbackMail()); });
    connect(help->addAction(tr("About Tessel")), &QAction::triggered, this, [this] {
        QMessageBox::about(this, tr("About Tessel"), tr("Tessel %1\n\n%2").arg(TESSEL_VERSION, qtext(alphaNotice)));
    });
}

QUrl MainWindow::feedbackMail() {
    QUrl mail(QString("mailto:") + qtext(feedbackAddress));
    QUrlQuery query;
    query.addQueryItem("subject", QString("Tessel %1 feedback").arg(TESSEL_VERSION));
    query.addQueryItem("body", tr("What were you doing, what did you expect, and what happened?\n\n"));
    mail.setQuery(query);
    return mail;
}

void MainWindow::showPage(Page page) {
    navigation_->setCurrentRow(page);
    pages_->setCurrentIndex(page);
}

void MainWindow::reloadProductions() {
    const QSignalBlocker quiet(productions_);
    productions_->clear();
    const auto current = session_.production();
    for (const auto& production : production_repository::list(session_.context())) {
        productions_->addItem(qtext(production.name), QString::fromStdString(production.id.text()));
        if (current && current->id == production.id) productions_->setCurrentIndex(productions_->count() - 1);
    }
    if (!current) productions_->setCurrentIndex(-1);
    setWindowTitle(current ? QString("%1 \u2014 Tessel").arg(qtext(current->name)) : QString("Tessel"));
}

void MainWindow::productionChanged() { reloadProductions(); }

bool MainWindow::runSetupGuide() {
    SetupGuide guide(session_, this);
    if (guide.exec() != QDialog::Accepted || !guide.createdProduction()) return false;
    session_.chooseProduction(guide.createdProduction());
    if (const auto plan = guide.plan(); plan.firstDTS) dts_->showDate(*plan.firstDTS);
    showPage(dts);
    return true;
}

std::optional<Refusal> MainWindow::openFile(const QString& path) {
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) return Refusal{{}, shell_widgets::unreadableFile(path)};
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == "tesselarchive") {
        std::optional<production_archive::ImportedProduction> imported;
        if (auto refusal = session_.perform(tr("Import Production"), [&](ModelContext& c) { imported = production_archive::importProduction(c, *bytes); })) {
            if (refusal->title.isEmpty()) refusal->title = qtext(production_archive::importTitle);
            return refusal;
        }
        session_.chooseProduction(imported->productionID);
        QString text = tr("Imported the production \u201C%1\u201D.").arg(qtext(imported->name));
        if (imported->pendingIdentity) text += "\n\n" + qtext(production_archive::pendingIdentityNotice);
        QMessageBox::information(this, tr("Production Imported"), text);
        showPage(imported->pendingIdentity ? production : dts);  // where the identity is accepted or left for later
        return std::nullopt;
    }
    // Library files are shown where the library is kept, their outcome in words there.
    const auto inLibrary = [&](int tab, const std::function<std::optional<Refusal>()>& import) {
        showPage(library);
        library_->tabs().setCurrentIndex(tab);
        return import();
    };
    if (suffix == "tesselrules") return inLibrary(0, [&] { return library_->rulesets().importFrom(path); });
    if (suffix == "tesselcrewlibrary") return inLibrary(1, [&] { return library_->crewLibrary().planImport(path); });
    if (suffix == "tesselratepackage") return inLibrary(2, [&] { return library_->positions().importSavedCard(path); });
    return Refusal{{}, tr("Tessel cannot open \u201C%1\u201D: choose a production archive, a ruleset, a crew library or a rate card file.").arg(QFileInfo(path).fileName())};
}

void MainWindow::showRefusal(const Refusal& refusal) {
    QMessageBox::warning(this, refusal.title.isEmpty() ? QString("Tessel") : refusal.title, refusal.message);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QStringList unsaved;
    if (rules_->hasUnsavedChanges()) unsaved << tr("the rules form");
    if (dts_->hasUnsavedNotes()) unsaved << tr("the DTS notes");
    if (!unsaved.isEmpty()) {
        const auto answer = QMessageBox::question(this, tr("Save Changes Before Quitting?"),
                                                  tr("There are changes in %1 that are not saved yet.").arg(unsaved.join(tr(" and "))),
                                                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
        if (answer == QMessageBox::Cancel) return event->ignore();
        if (answer == QMessageBox::Save && !saveEditors()) return event->ignore();  // a refused save keeps Tessel open on it
    }
    event->accept();
}

bool MainWindow::saveEditors() {
    if (dts_->hasUnsavedNotes() && !dts_->saveNotes()) {
        showPage(dts);
        return false;
    }
    if (rules_->hasUnsavedChanges() && rules_->save()) {
        showPage(rules);
        return false;
    }
    return true;
}

}  // namespace tessel

#include <QApplication>
#include <QCoreApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTimer>

#include <string_view>

#include "App/shell/MainWindow.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/UnavailableStoreScreen.hpp"

using namespace tessel;

// tessel-app [--store-root DIR] [--test-store] [FILE]: opens the store (the data folder, or DIR) and the
// window on the most recently used production; a FILE (a production archive or a ruleset file opened from
// the file manager) goes to its import.
namespace {

bool asksForHelpOrVersion(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument(argv[i]);
        if (argument == "-h" || argument == "--help" || argument == "--help-all" || argument == "-v" || argument == "--version") return true;
    }
    return false;
}

void describe(QCommandLineParser& arguments, const QCommandLineOption& storeRoot, const QCommandLineOption& testStore) {
    arguments.setApplicationDescription("Tessel: time sheets and expected pay for a film or television crew department.");
    arguments.addHelpOption();
    arguments.addVersionOption();
    arguments.addOption(storeRoot);
    arguments.addOption(testStore);
    arguments.addPositionalArgument("file", "A .tesselarchive or .tesselrules file to import.", "[FILE]");
}

}  // namespace

int main(int argc, char** argv) {
    const QCommandLineOption storeRoot("store-root", "The data folder holding the store (default: $TESSEL_STORE_ROOT, else ~/.local/share/Tessel).", "DIR");
    const QCommandLineOption testStore("test-store", "Use the physically separate test store.");
    if (asksForHelpOrVersion(argc, argv)) {  // answered without a display
        QCoreApplication app(argc, argv);
        QCoreApplication::setApplicationName("tessel-app");
        QCoreApplication::setApplicationVersion(TESSEL_VERSION);
        QCommandLineParser arguments;
        describe(arguments, storeRoot, testStore);
        arguments.process(app);
        return 0;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName("Tessel");
    QApplication::setApplicationVersion(TESSEL_VERSION);
    QApplication::setDesktopFileName("app.tessel.Tessel");
    QCommandLineParser arguments;
    describe(arguments, storeRoot, testStore);
    arguments.process(app);

    const std::filesystem::path root = arguments.isSet(storeRoot) ? std::filesystem::path(utf8(arguments.value(storeRoot))) : defaultApplicationDataRoot();
    const auto environment = TesselStoreEnvironment::make(arguments.isSet(testStore) ? TesselStoreEnvironmentKind::test : TesselStoreEnvironmentKind::normal, root);
    auto opened = ShellSession::open(environment, UserSettingsStore::defaultConfigRoot());
    if (auto* state = std::get_if<TesselUnavailableStoreState>(&opened)) {
        UnavailableStoreScreen screen(*state, environment, {TESSEL_VERSION, TESSEL_BUILD});
        screen.show();
        return QApplication::exec();
    }
    ShellSession& session = *std::get<std::unique_ptr<ShellSession>>(opened);
    MainWindow window(session);
    window.show();
    QTimer::singleShot(0, &window, [&] {
        for (const auto& warning : session.startupWarnings()) QMessageBox::warning(&window, warning.title, warning.message);
        if (!arguments.positionalArguments().isEmpty()) {
            if (const auto refusal = window.openFile(arguments.positionalArguments().front())) {
                QMessageBox::warning(&window, refusal->title.isEmpty() ? QString("Tessel") : refusal->title, refusal->message);
            }
        }
    });
    return QApplication::exec();
}

#include "UnavailableStoreScreen.hpp"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "App/exchange/StoredZip.hpp"
#include "App/shell/ShellText.hpp"

namespace tessel {

namespace package = diagnostic_package;

UnavailableStoreScreen::UnavailableStoreScreen(TesselUnavailableStoreState state, TesselStoreEnvironment environment,
                                               ApplicationIdentity application, QWidget* parent)
    : QWidget(parent), state_(std::move(state)), environment_(std::move(environment)), application_(std::move(application)) {
    setWindowTitle(qtext(TesselUnavailableStoreState::title));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 28, 32, 28);
    layout->setSpacing(12);

    auto* title = new QLabel(qtext(TesselUnavailableStoreState::title));
    title->setObjectName("screenTitle");
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setBold(true);
    title->setFont(titleFont);
    layout->addWidget(title);

    auto* message = new QLabel(qtext(TesselUnavailableStoreState::message));
    message->setWordWrap(true);
    layout->addWidget(message);

    auto* error = new QLabel(qtext(state_.errorDescription));
    error->setWordWrap(true);
    error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(error);

    auto* detailsHeading = new QLabel(tr("Details for Tessel support"));
    detailsHeading->setStyleSheet("font-weight: bold; margin-top: 8px;");
    layout->addWidget(detailsHeading);
    auto* details = new QPlainTextEdit;
    details->setObjectName("details");
    details->setReadOnly(true);
    QString detailText = tr("Store: ") + QString::fromStdString(state_.storeURL.string()) + "\n";
    if (state_.backupRootURL) detailText += tr("Backups: ") + QString::fromStdString(state_.backupRootURL->string()) + "\n";
    detailText += qtext(state_.details);
    details->setPlainText(detailText);
    layout->addWidget(details, 1);

    exportButton_ = new QPushButton(tr("Export Diagnostic Package\u2026"));
    exportButton_->setDefault(true);
    connect(exportButton_, &QPushButton::clicked, this, &UnavailableStoreScreen::exportDiagnosticPackage);
    auto* quit = new QPushButton(tr("Quit Tessel"));
    connect(quit, &QPushButton::clicked, this, &QWidget::close);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(quit);
    buttons->addWidget(exportButton_);
    layout->addLayout(buttons);
    resize(720, 520);
}

void UnavailableStoreScreen::exportDiagnosticPackage() {
    QMessageBox question(QMessageBox::Warning, qtext(package::exportTitle), qtext(package::privacyWarning),
                         QMessageBox::Cancel, this);
    question.addButton(tr("Export\u2026"), QMessageBox::AcceptRole);
    if (question.exec() == QMessageBox::Cancel) return;
    const QString proposed = QDir::home().filePath(QString::fromStdString(package::proposedFileName(std::chrono::system_clock::now())));
    const QString file = QFileDialog::getSaveFileName(this, tr("Export Diagnostic Package"), proposed,
                                                      tr("Tessel Diagnostic Package (*.tesseldiagnostic)"));
    if (file.isEmpty()) return;
    if (const auto refusal = writePackage(file)) {
        QMessageBox::warning(this, refusal->title, refusal->message);
        return;
    }
    QMessageBox::information(this, tr("Diagnostic Package Exported"),
                             tr("The diagnostic package was saved as \u201C%1\u201D.").arg(file));
}

std::optional<Refusal> UnavailableStoreScreen::writePackage(const QString& file) {
    const auto failed = [](const std::string& reason) {
        return Refusal{qtext(package::failureTitle), qtext(package::failureMessage) + " " + qtext(reason)};
    };
    try {
        package::write(environment_, application_, file.toStdString(), std::chrono::system_clock::now());
        return std::nullopt;
    } catch (const TesselDiagnosticPackageError& error) {
        return failed(error.description());
    } catch (const stored_zip::FormatError& error) {
        return failed(error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        return failed("The file \u201C" + file.toStdString() + "\u201D could not be written (" + error.code().message() + ").");
    }
}

}  // namespace tessel

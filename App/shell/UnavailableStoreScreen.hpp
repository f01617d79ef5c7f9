#pragma once

#include <QWidget>

#include "App/exchange/DiagnosticPackage.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/shell/ShellSession.hpp"

class QPushButton;

namespace tessel {

// The only screen shown when the store cannot be opened safely: what happened, the details support needs,
// and the offer to export a diagnostic package. Nothing else of the application runs.
class UnavailableStoreScreen : public QWidget {
    Q_OBJECT
public:
    UnavailableStoreScreen(TesselUnavailableStoreState state, TesselStoreEnvironment environment,
                           ApplicationIdentity application, QWidget* parent = nullptr);

    QPushButton* exportButton() const noexcept { return exportButton_; }

    // "Export Diagnostic Package…": asks the privacy question, then where to save, then writes it.
    void exportDiagnosticPackage();
    // Writes the package to the file; the refusal (title and sentence) when it could not be written.
    std::optional<Refusal> writePackage(const QString& file);

private:
    TesselUnavailableStoreState state_;
    TesselStoreEnvironment environment_;
    ApplicationIdentity application_;
    QPushButton* exportButton_ = nullptr;
};

}  // namespace tessel

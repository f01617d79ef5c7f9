#pragma once

#include <QWidget>

#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/shell/ShellSession.hpp"

class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;

namespace tessel {
class SignaturePad;

// Production Settings: what the DTS prints about the production, the form a DTS is exported on, the
// Department Head's signature (imported from an image or drawn on the pad), a Department Head identity
// an imported archive brought (used only once accepted), and the production archive to share it.
class ProductionPage : public QWidget {
    Q_OBJECT
public:
    explicit ProductionPage(ShellSession& session, QWidget* parent = nullptr);

    std::optional<Refusal> saveDetails();
    std::optional<Refusal> chooseExportForm(ProductionDTSExportTemplateMode mode);
    std::optional<Refusal> allowBuiltInForm(bool allowed);
    std::optional<Refusal> importSignature(const QString& path);
    std::optional<Refusal> useDrawnSignature();
    std::optional<Refusal> removeSignature();
    std::optional<Refusal> useImportedIdentity();
    void reviewIdentityLater();
    bool identityWaiting() const;
    // Writes the production archive as a new file; the refusal when it cannot.
    std::optional<Refusal> exportProductionTo(const QString& path);
    // "Export Production…": asks where, then writes.
    void askAndExportProduction();

    SignaturePad& signaturePad() noexcept { return *pad_; }
    QString statusText() const;

private:
    void reload();
    std::optional<Refusal> act(const QString& name, const std::function<void(ModelContext&, const Uuid&)>& action);

    ShellSession& session_;
    std::optional<Uuid> identityDismissedFor_;  // "Review Later" hides the question for this production until the next start
    QLineEdit* company_ = nullptr;
    QLineEdit* department_ = nullptr;
    QLineEdit* workState_ = nullptr;
    QLineEdit* departmentHead_ = nullptr;
    QComboBox* form_ = nullptr;
    QCheckBox* builtInAllowed_ = nullptr;
    QLabel* signature_ = nullptr;
    SignaturePad* pad_ = nullptr;
    QFrame* pendingIdentity_ = nullptr;
    QLabel* pendingText_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel

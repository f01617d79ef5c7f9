#include "ProductionPage.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFormLayout>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>


#include "App/dtsexport/ProductionDTSTemplates.hpp"
#include "App/exchange/PendingIdentity.hpp"
#include "App/exchange/ProductionArchive.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/ProductionProfile.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"
#include "App/shell/SignaturePad.hpp"

namespace tessel {
namespace {

QLabel* explanation(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setStyleSheet("color: #555;");
    return label;
}

}  // namespace

ProductionPage::ProductionPage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    outer->addWidget(scroll);
    auto* content = new QWidget;
    content->setMaximumWidth(900);
    scroll->setWidget(content);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(16, 12, 16, 12);
    auto* title = new QLabel(tr("Production Settings"));
    title->setStyleSheet("font-size: 15pt; font-weight: bold;");
    layout->addWidget(title);

    pendingIdentity_ = new QFrame;
    pendingIdentity_->setObjectName("pendingIdentity");
    pendingIdentity_->setStyleSheet("#pendingIdentity { background: #fff4d6; border: 1px solid #e3c77a; border-radius: 4px; }");
    auto* pendingLayout = new QVBoxLayout(pendingIdentity_);
    pendingText_ = new QLabel;
    pendingText_->setWordWrap(true);
    pendingLayout->addWidget(pendingText_);
    auto* pendingButtons = new QHBoxLayout;
    auto* use = new QPushButton(qtext(pending_identity::useTitle));
    connect(use, &QPushButton::clicked, this, [this] { useImportedIdentity(); });
    auto* later = new QPushButton(tr("Review Later"));
    later->setToolTip(qtext(pending_identity::reviewLater));
    connect(later, &QPushButton::clicked, this, [this] { reviewIdentityLater(); });
    pendingButtons->addWidget(use);
    pendingButtons->addWidget(later);
    pendingButtons->addStretch(1);
    pendingLayout->addLayout(pendingButtons);
    layout->addWidget(pendingIdentity_);

    auto* details = new QGroupBox(tr("Printed on the DTS"));
    auto* form = new QFormLayout(details);
    company_ = new QLineEdit;
    department_ = new QLineEdit;
    workState_ = new QLineEdit;
    departmentHead_ = new QLineEdit;
    departmentHead_->setObjectName("departmentHead");
    form->addRow(tr("Production company:"), company_);
    form->addRow(tr("Department:"), department_);
    form->addRow(tr("Work state:"), workState_);
    form->addRow(tr("Department Head:"), departmentHead_);
    auto* save = new QPushButton(tr("Save Details"));
    save->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    connect(save, &QPushButton::clicked, this, [this] { saveDetails(); });
    form->addRow(QString(), save);
    layout->addWidget(details);

    auto* exportBox = new QGroupBox(tr("DTS export form"));
    auto* exportLayout = new QVBoxLayout(exportBox);
    form_ = new QComboBox;
    form_->setObjectName("exportForm");
    form_->addItem(tr("No form chosen"), static_cast<int>(ProductionDTSExportTemplateMode::unconfigured));
    form_->addItem(tr("Kestrel built-in DTS"), static_cast<int>(ProductionDTSExportTemplateMode::legacyKestrel));
    form_->addItem(tr("Production DTS Template"), static_cast<int>(ProductionDTSExportTemplateMode::productionTemplate));
    connect(form_, &QComboBox::activated, this,
            [this] { chooseExportForm(static_cast<ProductionDTSExportTemplateMode>(form_->currentData().toInt())); });
    exportLayout->addWidget(form_);
    builtInAllowed_ = new QCheckBox(tr("This production may use the Kestrel built-in DTS"));
    connect(builtInAllowed_, &QCheckBox::clicked, this, [this](bool on) { allowBuiltInForm(on); });
    exportLayout->addWidget(builtInAllowed_);
    exportLayout->addWidget(explanation(qtext(dts_template_words::usesApprovedPDF)));
    layout->addWidget(exportBox);

    auto* signatureBox = new QGroupBox(tr("Department Head signature"));
    auto* signatureLayout = new QVBoxLayout(signatureBox);
    signatureLayout->addWidget(explanation(qtext(dts_export_words::signaturePurpose)));
    auto* current = new QHBoxLayout;
    signature_ = new QLabel;
    signature_->setObjectName("signaturePreview");
    signature_->setFixedSize(300, 100);
    signature_->setAlignment(Qt::AlignCenter);
    signature_->setStyleSheet("background: white; border: 1px solid #ccc;");
    current->addWidget(signature_);
    auto* signatureButtons = new QVBoxLayout;
    auto* importButton = new QPushButton(tr("Import Signature\u2026"));
    connect(importButton, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getOpenFileName(this, tr("Import Signature"), QString(), tr("Images (*.png *.jpg *.jpeg *.tif *.tiff)"));
        if (!chosen.isEmpty()) importSignature(chosen);
    });
    auto* removeButton = new QPushButton(tr("Remove Signature"));
    connect(removeButton, &QPushButton::clicked, this, [this] { removeSignature(); });
    signatureButtons->addWidget(importButton);
    signatureButtons->addWidget(removeButton);
    signatureButtons->addStretch(1);
    current->addLayout(signatureButtons);
    current->addStretch(1);
    signatureLayout->addLayout(current);
    signatureLayout->addWidget(new QLabel(tr("Or draw it:")));
    pad_ = new SignaturePad;
    pad_->setObjectName("signaturePad");
    signatureLayout->addWidget(pad_);
    auto* padButtons = new QHBoxLayout;
    auto* clear = new QPushButton(tr("Clear"));
    connect(clear, &QPushButton::clicked, pad_, &SignaturePad::clear);
    auto* useDrawn = new QPushButton(tr("Use Drawn Signature"));
    useDrawn->setEnabled(false);
    connect(pad_, &SignaturePad::changed, this, [this, useDrawn] { useDrawn->setEnabled(!pad_->isEmpty()); });
    connect(useDrawn, &QPushButton::clicked, this, [this] { useDrawnSignature(); });
    padButtons->addWidget(clear);
    padButtons->addWidget(useDrawn);
    padButtons->addStretch(1);
    signatureLayout->addLayout(padButtons);
    layout->addWidget(signatureBox);

    auto* sharing = new QGroupBox(tr("Sharing"));
    auto* sharingLayout = new QHBoxLayout(sharing);
    sharingLayout->addWidget(explanation(tr("Creates a portable Tessel Production archive containing this Production\u2019s owned data.")), 1);
    auto* exportButton = new QPushButton(tr("Export Production\u2026"));
    connect(exportButton, &QPushButton::clicked, this, &ProductionPage::askAndExportProduction);
    sharingLayout->addWidget(exportButton);
    layout->addWidget(sharing);

    status_ = new QLabel;
    status_->setObjectName("productionStatus");
    status_->setWordWrap(true);
    layout->addWidget(status_);
    layout->addStretch(1);
    shell_widgets::reloadWhenShown(this, session_, [this] { reload(); });
}

void ProductionPage::reload() {
    const auto production = session_.production();
    setEnabled(production.has_value());
    if (!production) return;
    ModelContext& context = session_.context();
    const auto identity = production_profile::identity(context, production->id);
    company_->setText(qtext(identity.company));
    department_->setText(qtext(identity.department));
    workState_->setText(qtext(identity.defaultWorkState));
    departmentHead_->setText(qtext(identity.departmentHeadName));
    const auto choice = dts_export::choice(context, production->id);
    form_->setCurrentIndex(form_->findData(static_cast<int>(choice.mode)));
    builtInAllowed_->setChecked(choice.legacyKestrelEligible);
    const auto image = dts_export::signature(context, production->id);
    QPixmap pixmap;
    if (image) pixmap.loadFromData(QByteArray::fromStdString(*image));
    if (pixmap.isNull()) {
        signature_->setText(image ? tr("The signature cannot be shown.") : tr("No signature"));
    } else {
        signature_->setPixmap(pixmap.scaled(signature_->size() - QSize(8, 8), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    }
    const auto pending = pending_identity::find(context, production->id);
    pendingIdentity_->setVisible(pending && identityDismissedFor_ != production->id);
    if (pending) {
        pendingText_->setText(qtext(production_archive::pendingIdentityNotice) + "\n\n" +
                              tr("Department Head: %1%2")
                                  .arg(qtext(pending->departmentHeadName), pending->signatureImage ? tr(", with a signature") : QString()));
    }
}

std::optional<Refusal> ProductionPage::act(const QString& name, const std::function<void(ModelContext&, const Uuid&)>& action) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose a production first.")};
    const auto refusal = session_.perform(name, [&](ModelContext& c) { action(c, production->id); });
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : QString());
    return refusal;
}

std::optional<Refusal> ProductionPage::saveDetails() {
    const ProductionIdentity identity{utf8(department_->text().trimmed()), utf8(company_->text().trimmed()), utf8(workState_->text().trimmed()),
                                      utf8(departmentHead_->text().trimmed())};
    auto refusal = act(tr("Save Production Details"), [&](ModelContext& c, const Uuid& id) { production_profile::setIdentity(c, id, identity); });
    if (!refusal) status_->setText(tr("Saved."));
    return refusal;
}

std::optional<Refusal> ProductionPage::chooseExportForm(ProductionDTSExportTemplateMode mode) {
    return act(tr("Choose DTS Export Form"), [&](ModelContext& c, const Uuid& id) { dts_export::setMode(c, id, mode); });
}

std::optional<Refusal> ProductionPage::allowBuiltInForm(bool allowed) {
    return act(tr("Allow Built-in DTS"), [&](ModelContext& c, const Uuid& id) { dts_export::setBuiltInFormEligible(c, id, allowed); });
}

std::optional<Refusal> ProductionPage::importSignature(const QString& path) {
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) {
        const Refusal refusal{{}, qtext(dts_export_words::signatureRefused)};
        status_->setText(refusal.message);
        return refusal;
    }
    const std::string& image = *bytes;
    return act(tr("Import Signature"), [&](ModelContext& c, const Uuid& id) { dts_export::setSignature(c, id, image); });
}

std::optional<Refusal> ProductionPage::useDrawnSignature() {
    if (pad_->isEmpty()) return Refusal{{}, tr("Draw the signature on the pad first.")};
    const std::string image = pad_->pngBytes();
    auto refusal = act(tr("Use Drawn Signature"), [&](ModelContext& c, const Uuid& id) { dts_export::setSignature(c, id, image); });
    if (!refusal) pad_->clear();
    return refusal;
}

std::optional<Refusal> ProductionPage::removeSignature() {
    return act(tr("Remove Signature"), [&](ModelContext& c, const Uuid& id) { dts_export::clearSignature(c, id); });
}

std::optional<Refusal> ProductionPage::useImportedIdentity() {
    auto refusal = act(qtext(pending_identity::useTitle), [&](ModelContext& c, const Uuid& id) { pending_identity::accept(c, id); });
    if (refusal) {
        refusal->title = qtext(pending_identity::useFailedTitle);
    } else {
        status_->setText(qtext(pending_identity::accepted));
    }
    return refusal;
}

void ProductionPage::reviewIdentityLater() {
    identityDismissedFor_ = session_.production() ? std::optional(session_.production()->id) : std::nullopt;
    pendingIdentity_->hide();
    status_->setStyleSheet("color: #555;");
    status_->setText(qtext(pending_identity::reviewLater));
}

bool ProductionPage::identityWaiting() const { return pendingIdentity_->isVisibleTo(this); }

std::optional<Refusal> ProductionPage::exportProductionTo(const QString& path) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose a production first.")};
    Refusal refusal{qtext(production_archive::exportTitle), {}};
    try {
        const std::string archive = production_archive::exportProduction(session_.context(), production->id, shell_widgets::now(), TESSEL_VERSION, TESSEL_BUILD);
        // A file of that name is replaced only because the save dialog asked the user first.
        if (new_file::replace(std::filesystem::path(utf8(path)), archive)) {
            status_->setStyleSheet("color: #2b6a2b;");
            status_->setText(tr("Exported \u201C%1\u201D to %2.").arg(qtext(production->name), path));
            return std::nullopt;
        }
        refusal.message = tr("The Production archive could not be exported.");
    } catch (...) {
        refusal.message = refusalOf(std::current_exception()).message;
    }
    status_->setStyleSheet("color: #a00000;");
    status_->setText(refusal.message);
    return refusal;
}

void ProductionPage::askAndExportProduction() {
    const QString chosen =
        QFileDialog::getSaveFileName(this, tr("Export Production"), qtext(production_archive::defaultFileName), tr("Tessel production archive (*.tesselarchive)"));
    if (!chosen.isEmpty()) exportProductionTo(chosen);
}

QString ProductionPage::statusText() const { return status_->text(); }

}  // namespace tessel

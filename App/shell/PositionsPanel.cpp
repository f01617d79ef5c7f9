#include "PositionsPanel.hpp"

#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <map>

#include "App/exchange/SetupFiles.hpp"
#include "App/model/CalendarText.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

QString readinessText(const PositionReadiness& readiness) {
    return readiness.state == ProductionPositionReadiness::ready ? QObject::tr("Ready") : qtext(readiness.reason.value_or(""));
}

}  // namespace

PositionsPanel::PositionsPanel(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* layout = new QVBoxLayout(this);
    auto* positionsBox = new QGroupBox(tr("Positions"));
    auto* positionsLayout = new QVBoxLayout(positionsBox);
    positionTable_ = shell_widgets::readOnlyTable({tr("Position"), tr("Occupation code"), tr("Readiness")});
    positionTable_->setObjectName("positions");
    positionsLayout->addWidget(positionTable_, 1);
    auto* addRow = new QHBoxLayout;
    positionName_ = new QLineEdit;
    positionName_->setPlaceholderText(tr("Position name"));
    positionCode_ = new QLineEdit;
    positionCode_->setPlaceholderText(tr("Occupation code (digits)"));
    auto* add = new QPushButton(tr("Add Position"));
    connect(add, &QPushButton::clicked, this, [this] { addPosition(positionName_->text(), positionCode_->text()); });
    addRow->addWidget(positionName_, 2);
    addRow->addWidget(positionCode_, 1);
    addRow->addWidget(add);
    positionsLayout->addLayout(addRow);
    layout->addWidget(positionsBox, 1);

    auto* cardsBox = new QGroupBox(tr("Rate Cards"));
    auto* cardsLayout = new QVBoxLayout(cardsBox);
    cardTable_ = shell_widgets::readOnlyTable({tr("Rate Card"), tr("From"), tr("Through"), tr("Scales")});
    cardTable_->setObjectName("rateCards");
    cardsLayout->addWidget(cardTable_, 1);
    auto* cardRow = new QHBoxLayout;
    cardLabel_ = new QLineEdit;
    cardLabel_->setPlaceholderText(tr("Rate Card label"));
    cardFrom_ = shell_widgets::dateEdit();
    auto* create = new QPushButton(tr("Create Rate Card"));
    connect(create, &QPushButton::clicked, this, [this] { createCard(cardLabel_->text(), shell_widgets::calendarDate(cardFrom_->date())); });
    scale_ = new QLineEdit;
    scale_->setPlaceholderText(tr("Scale hourly rate for the chosen Position"));
    auto* setScaleButton = new QPushButton(tr("Set Scale"));
    connect(setScaleButton, &QPushButton::clicked, this, [this] {
        const int card = cardTable_->currentRow();
        const QString label = card >= 0 && card < static_cast<int>(cards_.size()) ? qtext(cards_[static_cast<std::size_t>(card)].label) : cardLabel_->text();
        setScale(label, positionTable_->currentRow(), scale_->text());
    });
    cardRow->addWidget(cardLabel_, 2);
    cardRow->addWidget(new QLabel(tr("from")));
    cardRow->addWidget(cardFrom_);
    cardRow->addWidget(create);
    cardRow->addSpacing(16);
    cardRow->addWidget(scale_, 2);
    cardRow->addWidget(setScaleButton);
    cardsLayout->addLayout(cardRow);
    auto* savedRow = new QHBoxLayout;
    savedCards_ = new QComboBox;
    savedCards_->setObjectName("savedRateCards");
    auto* apply = new QPushButton(tr("Copy Saved Rate Card into Production"));
    apply->setToolTip(qtext(rate_card_words::copies));
    connect(apply, &QPushButton::clicked, this, [this] { applySavedCard(savedCards_->currentText()); });
    savedRow->addWidget(new QLabel(tr("Saved Rate Cards:")));
    savedRow->addWidget(savedCards_, 1);
    savedRow->addWidget(apply);
    auto* importCard = new QPushButton(tr("Import Rate Card File\u2026"));
    connect(importCard, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Import Rate Card"), QString(), tr("Tessel rate card (*.tesselratepackage)"));
        if (!path.isEmpty()) importSavedCard(path);
    });
    savedRow->addWidget(importCard);
    cardsLayout->addLayout(savedRow);
    layout->addWidget(cardsBox, 1);
    status_ = new QLabel;
    status_->setWordWrap(true);
    layout->addWidget(status_);
}

void PositionsPanel::reload() {
    positions_.clear();
    cards_.clear();
    positionTable_->setRowCount(0);
    cardTable_->setRowCount(0);
    savedCards_->clear();
    ModelContext& context = session_.context();
    for (const auto& card : rate_cards::savedCards(context)) savedCards_->addItem(qtext(card.displayName));
    const auto production = session_.production();
    if (!production) return;
    positions_ = positions::list(context, PositionScope::production, production->id);
    positionTable_->setRowCount(static_cast<int>(positions_.size()));
    for (int row = 0; row < positionTable_->rowCount(); ++row) {
        const auto& position = positions_[static_cast<std::size_t>(row)];
        const QStringList cells{qtext(position.positionName), qtext(position.occupationCode.value_or("")), readinessText(rate_cards::readiness(context, position))};
        for (int column = 0; column < cells.size(); ++column) positionTable_->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
    cards_ = rate_cards::cards(context, production->id);
    std::map<Uuid, int> scaleCounts;
    for (const auto& scale : rate_cards::scales(context, production->id)) ++scaleCounts[scale.rateCardID];
    cardTable_->setRowCount(static_cast<int>(cards_.size()));
    for (int row = 0; row < cardTable_->rowCount(); ++row) {
        const auto& card = cards_[static_cast<std::size_t>(row)];
        const int scales = scaleCounts[card.id];
        const QStringList cells{qtext(card.label), qtext(calendar_text::formatDate(card.effectiveStart)),
                                card.effectiveEnd ? qtext(calendar_text::formatDate(*card.effectiveEnd)) : tr("open"),
                                scales == 0 ? qtext(rate_card_words::incomplete) : QString::number(scales)};
        for (int column = 0; column < cells.size(); ++column) cardTable_->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
}

std::optional<Refusal> PositionsPanel::act(const QString& name, const std::function<QString(ModelContext&, const Uuid&)>& action) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose a production first.")};
    QString done;
    const auto refusal = session_.perform(name, [&](ModelContext& c) { done = action(c, production->id); });
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : done);
    reload();
    return refusal;
}

std::optional<Refusal> PositionsPanel::addPosition(const QString& name, const QString& code) {
    PositionEdit edit;
    edit.positionName = utf8(name.trimmed());
    if (!code.trimmed().isEmpty()) edit.occupationCode = std::optional(utf8(code.trimmed()));
    auto refusal = act(tr("Add Position"), [&](ModelContext& c, const Uuid& production) {
        const auto added = positions::add(c, PositionScope::production, production, edit, shell_widgets::now());
        return tr("Added the Position %1.").arg(qtext(added.positionName));
    });
    if (!refusal) {
        positionName_->clear();
        positionCode_->clear();
    }
    return refusal;
}

std::optional<Refusal> PositionsPanel::createCard(const QString& label, CalendarDate from) {
    return act(tr("Create Rate Card"), [&](ModelContext& c, const Uuid& production) {
        const auto card = rate_cards::create(c, production, utf8(label.trimmed()), from, std::nullopt);
        return tr("Created the Rate Card %1 from %2.").arg(qtext(card.label), qtext(calendar_text::formatDate(card.effectiveStart)));
    });
}

std::optional<Refusal> PositionsPanel::setScale(const QString& cardLabel, int positionRow, const QString& amount) {
    if (positionRow < 0 || positionRow >= static_cast<int>(positions_.size())) return Refusal{{}, tr("Choose a Position first.")};
    const auto position = positions_[static_cast<std::size_t>(positionRow)];
    const auto card = std::find_if(cards_.begin(), cards_.end(), [&](const auto& c) { return qtext(c.label) == cardLabel; });
    if (card == cards_.end()) return Refusal{{}, tr("Choose a Rate Card first.")};
    const CalendarDate from = card->effectiveStart;
    return act(tr("Set Scale"), [&](ModelContext& c, const Uuid& production) {
        const auto rate = rate_cards::addScale(c, production, utf8(cardLabel), position, utf8(amount.trimmed()), from, EmploymentSchedule::daily);
        return tr("%1 is %2 an hour on %3.").arg(qtext(position.positionName), qtext(rate.hourlyAmount.toString()), cardLabel);
    });
}

std::optional<Refusal> PositionsPanel::applySavedCard(const QString& label) {
    if (label.isEmpty()) return Refusal{{}, tr("The library has no Saved Rate Cards yet.")};
    return act(tr("Copy Saved Rate Card"), [&](ModelContext& c, const Uuid& production) {
        const auto card = rate_cards::apply(c, production, rate_cards::savedNamed(c, utf8(label)), shell_widgets::now());
        return qtext(rate_card_words::copies) + " " + tr("Copied %1 into the production.").arg(qtext(card.label));
    });
}

std::optional<Refusal> PositionsPanel::importSavedCard(const QString& path) {
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) return Refusal{{}, shell_widgets::unreadableFile(path)};
    const std::string& file = *bytes;
    QString done;
    const auto refusal = session_.perform(tr("Import Rate Card"), [&](ModelContext& c) {
        const auto card = setup_files::readRateCard(file);
        rate_cards::addSaved(c, card, shell_widgets::now());
        done = tr("Added the Rate Card %1 to the library.").arg(qtext(card.displayName));
    });
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : done);
    reload();
    return refusal;
}

QString PositionsPanel::statusText() const { return status_->text(); }

}  // namespace tessel

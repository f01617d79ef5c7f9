#pragma once

#include <QWidget>

#include "App/rules/Positions.hpp"
#include "App/rules/RateCards.hpp"
#include "App/shell/ShellSession.hpp"

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace tessel {

// The production's Positions with their readiness, and its Rate Cards with each Position's scale: a
// Position added, a card made for a period, a scale set on it, or a saved card copied in from the library.
class PositionsPanel : public QWidget {
    Q_OBJECT
public:
    explicit PositionsPanel(ShellSession& session, QWidget* parent = nullptr);

    void reload();
    std::optional<Refusal> addPosition(const QString& name, const QString& code);
    std::optional<Refusal> createCard(const QString& label, CalendarDate from);
    // The scale of the position (by row of the positions table) on the card of that label.
    std::optional<Refusal> setScale(const QString& cardLabel, int positionRow, const QString& amount);
    std::optional<Refusal> applySavedCard(const QString& label);
    // Adds the saved Rate Card of a rate-card file to the library.
    std::optional<Refusal> importSavedCard(const QString& path);
    const std::vector<PositionRecord>& positions() const noexcept { return positions_; }
    QString statusText() const;

private:
    std::optional<Refusal> act(const QString& name, const std::function<QString(ModelContext&, const Uuid&)>& action);

    ShellSession& session_;
    std::vector<PositionRecord> positions_;
    std::vector<ProductionRateCard> cards_;
    QTableWidget* positionTable_ = nullptr;
    QTableWidget* cardTable_ = nullptr;
    QLineEdit* positionName_ = nullptr;
    QLineEdit* positionCode_ = nullptr;
    QLineEdit* cardLabel_ = nullptr;
    QDateEdit* cardFrom_ = nullptr;
    QLineEdit* scale_ = nullptr;
    QComboBox* savedCards_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel

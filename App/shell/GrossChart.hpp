#pragma once

#include <QChartView>

#include "App/actualpay/PayComparison.hpp"

class QBarSet;

namespace tessel {

// Expected against paid gross for each crew member of a week: the expected gross a wide grey bar, the
// paid gross a narrow bar in front of it, coloured by what the difference means to the person paid
// (matches, underpaid, overpaid, not compared), so that who was short is seen at a glance.
class GrossChart : public QChartView {
    Q_OBJECT
public:
    enum class Paid { matches, underpaid, overpaid, notCompared };

    explicit GrossChart(QWidget* parent = nullptr);
    void showWeek(const PayComparisonWeek* week);

    // The bar of one kind of paid gross (its value is zero for a person whose gross is of another kind).
    const QBarSet* paidSet(Paid kind) const noexcept { return paid_[static_cast<int>(kind)]; }
    const QBarSet* expectedSet() const noexcept { return expected_; }
    QStringList crewNames() const;

private:
    QBarSet* expected_ = nullptr;
    QBarSet* paid_[4] = {};
};

// Which colour a person's paid gross takes.
GrossChart::Paid paidKind(const CrewPayComparison& person);

}  // namespace tessel

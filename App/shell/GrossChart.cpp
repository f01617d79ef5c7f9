#include "GrossChart.hpp"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QStackedBarSeries>
#include <QValueAxis>

#include <algorithm>

#include "App/shell/ShellText.hpp"

namespace tessel {
namespace {

// Read in the C locale whatever the user's, as QString reads numbers.
double number(const std::optional<Decimal>& value) { return value ? qtext(value->toString()).toDouble() : 0.0; }

}  // namespace

GrossChart::Paid paidKind(const CrewPayComparison& person) {
    if (!person.grossStatus || !person.actual) return GrossChart::Paid::notCompared;
    switch (*person.grossStatus) {
        case PayComparisonLineStatus::matches:
        case PayComparisonLineStatus::withinTolerance: return GrossChart::Paid::matches;
        case PayComparisonLineStatus::underpaid:
        case PayComparisonLineStatus::expectedOnly: return GrossChart::Paid::underpaid;
        case PayComparisonLineStatus::overpaid:
        case PayComparisonLineStatus::actualOnly: return GrossChart::Paid::overpaid;
        case PayComparisonLineStatus::review: return GrossChart::Paid::notCompared;
    }
    return GrossChart::Paid::notCompared;
}

GrossChart::GrossChart(QWidget* parent) : QChartView(parent) {
    setRenderHint(QPainter::Antialiasing);
    setMinimumHeight(220);
    chart()->setTitle(tr("Gross by crew member"));
    chart()->legend()->setAlignment(Qt::AlignBottom);
    chart()->setAnimationOptions(QChart::NoAnimation);  // a week switched is shown at once
}

QStringList GrossChart::crewNames() const {
    const auto axes = chart()->axes(Qt::Horizontal);
    auto* categories = axes.isEmpty() ? nullptr : qobject_cast<QBarCategoryAxis*>(axes.front());
    return categories ? categories->categories() : QStringList();
}

void GrossChart::showWeek(const PayComparisonWeek* week) {
    QChart* c = chart();
    c->removeAllSeries();
    for (auto* axis : c->axes()) {
        c->removeAxis(axis);
        delete axis;
    }
    expected_ = nullptr;
    std::fill(std::begin(paid_), std::end(paid_), nullptr);
    if (!week || week->comparisons.empty()) return;

    auto* expectedSeries = new QBarSeries;
    expectedSeries->setBarWidth(0.8);
    expected_ = new QBarSet(tr("Expected"));
    expected_->setColor(QColor(0xd4, 0xd4, 0xd4));
    expected_->setBorderColor(QColor(0xa8, 0xa8, 0xa8));
    expectedSeries->append(expected_);
    auto* paidSeries = new QStackedBarSeries;
    paidSeries->setBarWidth(0.4);
    const std::pair<QString, QColor> kinds[] = {{tr("Paid \u2014 matches"), QColor(0x2b, 0x8a, 0x3e)},
                                                {tr("Paid \u2014 underpaid"), QColor(0xc0, 0x1c, 0x1c)},
                                                {tr("Paid \u2014 overpaid"), QColor(0xd9, 0x8a, 0x00)},
                                                {tr("Paid \u2014 not compared"), QColor(0x70, 0x80, 0x90)}};
    for (int k = 0; k < 4; ++k) {
        paid_[k] = new QBarSet(kinds[k].first);
        paid_[k]->setColor(kinds[k].second);
        paid_[k]->setBorderColor(kinds[k].second.darker(120));
        paidSeries->append(paid_[k]);
    }
    QStringList names;
    double highest = 0;
    for (const auto& person : week->comparisons) {
        names << qtext(person.crewName);
        const double expected = number(person.expected ? person.expected->gross : std::nullopt);
        const double paid = number(person.actual ? std::optional(person.actual->gross) : std::nullopt);
        expected_->append(expected);
        const int kind = static_cast<int>(paidKind(person));
        for (int k = 0; k < 4; ++k) paid_[k]->append(k == kind ? paid : 0.0);
        highest = std::max({highest, expected, paid});
    }
    c->addSeries(expectedSeries);
    c->addSeries(paidSeries);  // drawn in front of the expected bars
    auto* crewAxis = new QBarCategoryAxis;
    crewAxis->append(names);
    auto* amountAxis = new QValueAxis;
    amountAxis->setRange(0, highest > 0 ? highest * 1.08 : 1);
    amountAxis->setLabelFormat("%.0f");
    amountAxis->applyNiceNumbers();
    c->addAxis(crewAxis, Qt::AlignBottom);
    c->addAxis(amountAxis, Qt::AlignLeft);
    for (auto* series : {static_cast<QAbstractSeries*>(expectedSeries), static_cast<QAbstractSeries*>(paidSeries)}) {
        series->attachAxis(crewAxis);
        series->attachAxis(amountAxis);
    }
}

}  // namespace tessel

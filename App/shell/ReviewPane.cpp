#include "ReviewPane.hpp"

#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>

#include <ctime>
#include <map>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/GoldenHourAdvisory.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/shell/ShellText.hpp"

namespace tessel {
namespace {

// DTS times are wall-clock times of the DTS date, so "now" is the local wall clock read the same way.
Instant localNow() {
    using namespace std::chrono;
    const std::time_t now = system_clock::to_time_t(system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    return Instant(seconds(now + local.tm_gmtoff));
}

// The week of all crew at a glance: one line each, the full review being one choice away.
std::string summaryHeading() { return review_text::padded("Crew", 26) + review_text::padded("Expected gross", 26) + "Days\n"; }

std::string summaryLine(const WeeklyCrewPayrollReview& review) {
    std::string gross = review.estimatedGross ? review.estimatedGross->amount().toString() + " " + review.estimatedGross->currency().code() : "\u2014";
    if (review.estimatedGrossIsPartial) gross += " (partial)";
    return review_text::padded(review.crewName, 26) + review_text::padded(gross, 26) + std::to_string(review.days.size()) + "\n";
}

}  // namespace

ReviewPane::ReviewPane(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session), clock_(localNow) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* heading = new QHBoxLayout;
    auto* title = new QLabel(tr("Weekly Review"));
    title->setStyleSheet("font-weight: bold; font-size: 13pt;");
    heading->addWidget(title);
    heading->addStretch(1);
    crewChoice_ = new QComboBox;
    crewChoice_->setObjectName("reviewCrew");
    crewChoice_->setMinimumContentsLength(18);
    connect(crewChoice_, &QComboBox::currentIndexChanged, this, [this] { render(); });
    heading->addWidget(crewChoice_);
    layout->addLayout(heading);
    gross_ = new QLabel;
    gross_->setObjectName("reviewGross");
    layout->addWidget(gross_);
    advisories_ = new QVBoxLayout;
    layout->addLayout(advisories_);
    text_ = new QPlainTextEdit;
    text_->setObjectName("reviewText");
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::WidgetWidth);  // an explanation cut off at the edge explains nothing
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(fixed.pointSizeF() * 0.9);
    text_->setFont(fixed);
    layout->addWidget(text_, 1);
    connect(&session_, &ShellSession::storeChanged, this, &ReviewPane::storeChanged);
    connect(&session_, &ShellSession::productionChanged, this, [this] {
        review_.reset();
        showWeek(std::nullopt, std::nullopt);
    });
}

ReviewPane::~ReviewPane() = default;

void ReviewPane::showWeek(const std::optional<Uuid>& payrollWeekID, const std::optional<Uuid>& workdayID) {
    const bool otherWeek = weekID_ != payrollWeekID;
    weekID_ = payrollWeekID;
    workdayID_ = workdayID;
    if (otherWeek) crewChoice_->clear();
    refresh();
}

void ReviewPane::expectTimeSheetEdit(const Uuid& workdayID) { editedTimeSheet_ = workdayID; }

void ReviewPane::storeChanged() {
    if (review_ && editedTimeSheet_) {
        review_->forgetTimeSheet(*editedTimeSheet_);
    } else {
        review_.reset();  // rules, crew or rates may have changed: read everything again
    }
    editedTimeSheet_.reset();
    refresh();
}

QString ReviewPane::reviewText() const { return text_->toPlainText(); }

void ReviewPane::refresh() {
    reviews_.clear();
    const auto production = session_.production();
    if (!production || !weekID_) {
        text_->setPlainText(production ? tr("Choose a DTS date to see its week.") : QString());
        gross_->clear();
        return;
    }
    if (!review_ || productionID_ != production->id) {
        review_ = std::make_unique<ExpectedPayrollReview>(session_.context(), production->id);
        productionID_ = production->id;
    }
    try {
        reviews_ = review_->weeklyForAll(*weekID_);
        const QString chosen = crewChoice_->currentData().toString();
        const QSignalBlocker quiet(crewChoice_);
        crewChoice_->clear();
        crewChoice_->addItem(tr("All crew (%1)").arg(reviews_.size()), QString());
        for (const auto& r : reviews_) crewChoice_->addItem(qtext(r.crewName), QString::fromStdString(r.crewMemberID.text()));
        crewChoice_->setCurrentIndex(std::max(0, crewChoice_->findData(chosen)));
        std::map<std::string, Decimal> totals;  // by currency: amounts are only added within one
        for (const auto& r : reviews_) {
            if (!r.estimatedGross) continue;
            auto& total = totals[r.estimatedGross->currency().code()];
            total = total + r.estimatedGross->amount();
        }
        QStringList grossTexts;
        for (const auto& [currency, total] : totals) grossTexts << qtext(total.toString() + " " + currency);
        gross_->setText(grossTexts.isEmpty() ? QString() : tr("Week\u2019s expected gross, all crew: %1").arg(grossTexts.join(", ")));
        render();
        showAdvisories(*review_);
    } catch (const std::exception& error) {
        text_->setPlainText(QString::fromUtf8(error.what()));
        gross_->clear();
    }
}

void ReviewPane::showCrewMember(const std::optional<Uuid>& crewMemberID) {
    const int index = crewMemberID ? crewChoice_->findData(QString::fromStdString(crewMemberID->text())) : 0;
    if (index < 0 || index == crewChoice_->currentIndex()) return;
    const QSignalBlocker quiet(crewChoice_);
    crewChoice_->setCurrentIndex(index);
    render();
}

// The week as last calculated: everyone's line, or the chosen person's whole review.
void ReviewPane::render() {
    if (reviews_.empty()) {
        text_->setPlainText(weekID_ ? tr("Nobody has a DTS row or an activity in this week yet.") : QString());
        return;
    }
    const QString chosen = crewChoice_->currentData().toString();
    const review_text::Style style{session_.settings().categoryLabels(), session_.settings().showMonetaryDetails(), false};
    std::string text = chosen.isEmpty() ? summaryHeading() : std::string();
    for (const auto& r : reviews_) {
        if (chosen.isEmpty()) text += summaryLine(r);
        else if (QString::fromStdString(r.crewMemberID.text()) == chosen) text += review_text::weekly(r, style);
    }
    if (chosen.isEmpty()) text += "\nChoose a person above, or a row of the DTS, for every day, band and explanation.\n";
    const int scroll = text_->verticalScrollBar()->value();
    text_->setPlainText(qtext(text));
    text_->verticalScrollBar()->setValue(scroll);  // recalculating keeps the place being read
}

void ReviewPane::showAdvisories(ExpectedPayrollReview& review) {
    while (auto* item = advisories_->takeAt(0)) {
        if (auto* widget = item->widget()) widget->deleteLater();
        delete item;
    }
    if (!workdayID_) return;
    const auto settings = session_.settings().goldenHourAdvisory();
    for (const auto& day : review.dailyForWorkday(*workdayID_)) {
        const auto& member = day.source.crewMemberID;
        if (!member) continue;
        const auto advisory = golden_hour_advisory::at(day, *member, clock_(), settings);
        if (!advisory) continue;
        const auto person = crew_repository::fetchCrewMember(session_.context(), *member);
        auto* row = new QWidget;
        row->setStyleSheet("background: #fff4d6; border-radius: 4px;");
        auto* rowLayout = new QHBoxLayout(row);
        rowLayout->addWidget(new QLabel(tr("Golden Hour for %1 at %2 (%3 min left)")
                                            .arg(person ? qtext(person->displayName) : QString(),
                                                 qtext(payroll_decimal_time::formatTimeOfDay(advisory->target.targetTime, day.calendarDate)))
                                            .arg((advisory->remainingSeconds + 59) / 60)));
        auto* dismiss = new QPushButton(tr("Dismiss Golden Hour advisory"));
        const std::string key = golden_hour_advisory::key(day.id, *member);
        connect(dismiss, &QPushButton::clicked, this, [this, key, row] {
            session_.settings().dismissGoldenHourAdvisory(key);
            row->hide();
        });
        rowLayout->addStretch(1);
        rowLayout->addWidget(dismiss);
        advisories_->addWidget(row);
    }
}

}  // namespace tessel

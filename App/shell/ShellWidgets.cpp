#include "ShellWidgets.hpp"

#include <QFile>

#include <QDateEdit>
#include <QEvent>
#include <QWidget>
#include <QHeaderView>
#include <QTableWidget>

#include <array>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/shell/ShellSession.hpp"
#include "App/shell/ShellText.hpp"

namespace tessel::shell_widgets {

Instant now() { return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()); }

CalendarDate today() { return CalendarDate(std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())); }

QDateEdit* dateEdit(const QDate& date) {
    auto* edit = new QDateEdit(date);
    edit->setCalendarPopup(true);
    edit->setDisplayFormat("yyyy-MM-dd");
    return edit;
}

namespace {

class ReloadWhenShown : public QObject {
public:
    ReloadWhenShown(QWidget* page, std::function<void()> reload) : QObject(page), page_(page), reload_(std::move(reload)) {
        page->installEventFilter(this);
    }
    void storeChanged() {
        if (page_->isVisible()) reload_();
        else stale_ = true;
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show && stale_) {
            stale_ = false;
            reload_();
        }
        return false;
    }

private:
    QWidget* page_;
    std::function<void()> reload_;
    bool stale_ = true;
};

}  // namespace

void reloadWhenShown(QWidget* page, ShellSession& session, std::function<void()> reload) {
    auto* watcher = new ReloadWhenShown(page, std::move(reload));
    QObject::connect(&session, &ShellSession::storeChanged, watcher, [watcher] { watcher->storeChanged(); });
    QObject::connect(&session, &ShellSession::productionChanged, watcher, [watcher] { watcher->storeChanged(); });
}

QTableWidget* readOnlyTable(const QStringList& headers) {
    auto* table = new QTableWidget(0, static_cast<int>(headers.size()));
    table->setHorizontalHeaderLabels(headers);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}

std::optional<std::string> readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return std::nullopt;
    return bytes.toStdString();
}

QString unreadableFile(const QString& path) { return QObject::tr("The file \u201C%1\u201D could not be read.").arg(path); }

QDate qdate(CalendarDate date) {
    return QDate(static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                 static_cast<int>(static_cast<unsigned>(date.day())));
}

CalendarDate calendarDate(const QDate& date) {
    return std::chrono::year(date.year()) / std::chrono::month(static_cast<unsigned>(date.month())) /
           std::chrono::day(static_cast<unsigned>(date.day()));
}

QString dateTitle(CalendarDate date) {
    static constexpr std::array<const char*, 7> weekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const auto weekday = std::chrono::weekday(std::chrono::sys_days(date)).c_encoding();
    return QString("%1 %2").arg(weekdayNames[weekday], qtext(calendar_text::formatDate(date)));
}

std::optional<std::int64_t> durationEntry(const QString& text, std::string_view message) {
    if (entry_text::isBlank(utf8(text))) return std::nullopt;
    try {
        return PayrollDecimalDurationParser::parse(utf8(text));
    } catch (const std::exception&) {
        throw EntryRefused{std::string(message)};
    }
}

QString durationText(const std::optional<std::int64_t>& seconds) {
    return seconds ? qtext(payroll_decimal_time::formatDuration(*seconds)) : QString();
}

}  // namespace tessel::shell_widgets

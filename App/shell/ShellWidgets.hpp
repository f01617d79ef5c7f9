#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

class QDateEdit;
class QWidget;

class QTableWidget;

#include <functional>
#include <optional>

#include "App/model/PersistenceModels.hpp"

// Small conversions every page of the window shares.
namespace tessel {
class ShellSession;
}

namespace tessel::shell_widgets {

// The moment of a user action, to the second, as the store keeps it; and today's date.
Instant now();
CalendarDate today();
// A date field with its calendar, showing dates as the rest of Tessel writes them.
QDateEdit* dateEdit(const QDate& date = QDate::currentDate());

// Runs `reload` after every store change or change of production while the page is shown, and when it
// is first shown. A hidden page is only marked, and reloaded when it is next shown, so that a time typed
// on one page does not recalculate every other, and start-up builds only the page it opens on.
void reloadWhenShown(QWidget* page, ShellSession& session, std::function<void()> reload);

// A table that is read, not typed into: whole rows chosen one at a time, columns sized to their contents.
QTableWidget* readOnlyTable(const QStringList& headers);

// The bytes of a file the user chose; nothing when it cannot be read (a folder, no permission).
std::optional<std::string> readFile(const QString& path);
// "The file “…” could not be read."
QString unreadableFile(const QString& path);

QDate qdate(CalendarDate date);
CalendarDate calendarDate(const QDate& date);
// "Tue 2026-11-03".
QString dateTitle(CalendarDate date);
// Payroll-decimal hours typed by the user: nothing for blank text; throws EntryRefused with `message`
// for text that is not such a duration.
std::optional<std::int64_t> durationEntry(const QString& text, std::string_view message);
QString durationText(const std::optional<std::int64_t>& seconds);

}  // namespace tessel::shell_widgets

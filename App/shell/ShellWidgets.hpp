#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

class QDateEdit;

class QTableWidget;

#include <optional>

#include "App/model/PersistenceModels.hpp"

// Small conversions every page of the window shares.
namespace tessel::shell_widgets {

// The moment of a user action, to the second, as the store keeps it; and today's date.
Instant now();
CalendarDate today();
// A date field with its calendar, showing dates as the rest of Tessel writes them.
QDateEdit* dateEdit(const QDate& date = QDate::currentDate());

// A table that is read, not typed into: whole rows chosen one at a time, columns sized to their contents.
QTableWidget* readOnlyTable(const QStringList& headers);

QDate qdate(CalendarDate date);
CalendarDate calendarDate(const QDate& date);
// "Tue 2026-11-03".
QString dateTitle(CalendarDate date);
// Payroll-decimal hours typed by the user: nothing for blank text; throws EntryRefused with `message`
// for text that is not such a duration.
std::optional<std::int64_t> durationEntry(const QString& text, std::string_view message);
QString durationText(const std::optional<std::int64_t>& seconds);

}  // namespace tessel::shell_widgets

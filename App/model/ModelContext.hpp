#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "App/model/Uuid.hpp"
#include "PayrollDomain/Decimal.hpp"
#include "PayrollDomain/Instant.hpp"

namespace tessel {

// A stored value that cannot be read back (a malformed identifier, instant or decimal): the store was
// changed by something other than Tessel.
class StoreCorruptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The connection the repositories work through. Statements are prepared once and reused, since a
// season of time sheets is tens of thousands of rows.
class ModelContext {
public:
    explicit ModelContext(SQLite::Database& database) : database_(database) {}

    SQLite::Database& database() noexcept { return database_; }
    // The cached statement for this SQL text, reset and with its bindings cleared.
    SQLite::Statement& prepare(const std::string& sql);
    // Resets every cached statement, ending the read snapshots that statements stopped inside their
    // results still hold; a write begun on an old snapshot could not take the write lock.
    void finishReads();

private:
    SQLite::Database& database_;
    std::unordered_map<std::string, std::unique_ptr<SQLite::Statement>> statements_;
};

// A stored value of any column (null, integer or boolean, text, blob) and a row as column/value pairs,
// for the generic repositories.
using StoreValue = std::variant<std::monostate, std::int64_t, std::string, std::vector<unsigned char>>;
using StoreFields = std::vector<std::pair<std::string, StoreValue>>;

// Binding and reading the column conventions of the store.
namespace columns {

void bindValue(SQLite::Statement& statement, int index, const StoreValue& value);
StoreValue readValue(const SQLite::Column& column);

void bind(SQLite::Statement& statement, int index, const Uuid& id);
void bind(SQLite::Statement& statement, int index, const std::optional<Uuid>& id);
void bind(SQLite::Statement& statement, int index, Instant instant);
void bind(SQLite::Statement& statement, int index, const std::optional<Instant>& instant);
void bind(SQLite::Statement& statement, int index, CalendarDate date);
void bind(SQLite::Statement& statement, int index, const std::optional<CalendarDate>& date);
void bind(SQLite::Statement& statement, int index, const Decimal& value);
void bind(SQLite::Statement& statement, int index, const std::optional<Decimal>& value);
// Bytes (a PDF, a JSON document) as a blob; empty bytes as null.
void bindBlob(SQLite::Statement& statement, int index, std::string_view bytes);
void bind(SQLite::Statement& statement, int index, const std::string& text);
void bind(SQLite::Statement& statement, int index, const std::optional<std::string>& text);
void bind(SQLite::Statement& statement, int index, std::int64_t value);
void bind(SQLite::Statement& statement, int index, const std::optional<std::int64_t>& value);
void bind(SQLite::Statement& statement, int index, bool value);

// Binds the values to ?1, ?2, … in order.
template <typename... Values>
void bindAll(SQLite::Statement& statement, const Values&... values) {
    int index = 0;
    (bind(statement, ++index, values), ...);
}

// Every row a query answers, or its first, each read by `read`.
template <typename Record, typename Reader>
std::vector<Record> readAll(SQLite::Statement& statement, Reader read) {
    std::vector<Record> records;
    while (statement.executeStep()) records.push_back(read(statement));
    return records;
}
template <typename Reader>
auto readFirst(SQLite::Statement& statement, Reader read) -> std::optional<decltype(read(statement))> {
    if (!statement.executeStep()) return std::nullopt;
    auto record = read(statement);
    statement.reset();  // a statement left inside its result keeps its read snapshot open
    return record;
}

Uuid uuid(const SQLite::Column& column);
std::optional<Uuid> optionalUuid(const SQLite::Column& column);
Instant instant(const SQLite::Column& column);
std::optional<Instant> optionalInstant(const SQLite::Column& column);
CalendarDate date(const SQLite::Column& column);
std::optional<CalendarDate> optionalDate(const SQLite::Column& column);
Decimal decimal(const SQLite::Column& column);
std::string text(const SQLite::Column& column);
std::optional<std::string> optionalText(const SQLite::Column& column);
std::int64_t integer(const SQLite::Column& column);
std::optional<std::int64_t> optionalInteger(const SQLite::Column& column);
std::optional<Decimal> optionalDecimal(const SQLite::Column& column);
std::string blob(const SQLite::Column& column);  // null as empty
bool boolean(const SQLite::Column& column);

}  // namespace columns
}  // namespace tessel

#include "ModelContext.hpp"

#include "App/model/CalendarText.hpp"

namespace tessel {

void ModelContext::finishReads() {
    for (auto& [sql, statement] : statements_) statement->reset();
}

SQLite::Statement& ModelContext::prepare(const std::string& sql) {
    auto& statement = statements_[sql];
    if (!statement) {
        statement = std::make_unique<SQLite::Statement>(database_, sql);
    } else {
        statement->reset();
        statement->clearBindings();
    }
    return *statement;
}

namespace columns {
namespace {

template <typename Value>
void bindOptional(SQLite::Statement& statement, int index, const std::optional<Value>& value) {
    if (value) {
        bind(statement, index, *value);
    } else {
        statement.bind(index);
    }
}

[[noreturn]] void corrupt(const SQLite::Column& column, std::string_view expectation) {
    throw StoreCorruptionError("The stored value of " + std::string(column.getName()) + " is not " +
                               std::string(expectation) + ".");
}

}  // namespace

void bindValue(SQLite::Statement& statement, int index, const StoreValue& value) {
    std::visit(
        [&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, std::monostate>) {
                statement.bind(index);
            } else if constexpr (std::is_same_v<T, std::int64_t>) {
                statement.bind(index, static_cast<int64_t>(v));
            } else if constexpr (std::is_same_v<T, std::string>) {
                statement.bind(index, v);
            } else {
                statement.bind(index, v.data(), static_cast<int>(v.size()));
            }
        },
        value);
}

StoreValue readValue(const SQLite::Column& column) {
    if (column.isNull()) return std::monostate{};
    if (column.isInteger()) return static_cast<std::int64_t>(column.getInt64());
    if (column.isBlob()) {
        const auto* bytes = static_cast<const unsigned char*>(column.getBlob());
        return std::vector<unsigned char>(bytes, bytes + column.getBytes());
    }
    return column.getString();
}

void bind(SQLite::Statement& statement, int index, const Uuid& id) { statement.bind(index, id.text()); }
void bind(SQLite::Statement& statement, int index, const std::optional<Uuid>& id) { bindOptional(statement, index, id); }
void bind(SQLite::Statement& statement, int index, Instant instant) {
    statement.bind(index, calendar_text::formatInstant(instant));
}
void bind(SQLite::Statement& statement, int index, const std::optional<Instant>& instant) {
    bindOptional(statement, index, instant);
}
void bind(SQLite::Statement& statement, int index, CalendarDate date) {
    bind(statement, index, Instant(std::chrono::sys_days(date)));
}
void bind(SQLite::Statement& statement, int index, const std::optional<CalendarDate>& date) {
    bindOptional(statement, index, date);
}
void bind(SQLite::Statement& statement, int index, const Decimal& value) { statement.bind(index, value.toString()); }
void bind(SQLite::Statement& statement, int index, const std::optional<Decimal>& value) {
    if (value) {
        bind(statement, index, *value);
    } else {
        statement.bind(index);
    }
}
void bindBlob(SQLite::Statement& statement, int index, std::string_view bytes) {
    if (bytes.empty()) {
        statement.bind(index);
    } else {
        statement.bind(index, bytes.data(), static_cast<int>(bytes.size()));
    }
}
void bind(SQLite::Statement& statement, int index, const std::string& text) { statement.bind(index, text); }
void bind(SQLite::Statement& statement, int index, const std::optional<std::string>& text) {
    bindOptional(statement, index, text);
}
void bind(SQLite::Statement& statement, int index, std::int64_t value) { statement.bind(index, static_cast<int64_t>(value)); }
void bind(SQLite::Statement& statement, int index, const std::optional<std::int64_t>& value) {
    bindOptional(statement, index, value);
}
void bind(SQLite::Statement& statement, int index, bool value) { statement.bind(index, value ? 1 : 0); }

// The column's text without a copy of its own; valid until the statement moves on.
static std::string_view textOf(const SQLite::Column& column) { return {column.getText(), static_cast<std::size_t>(column.getBytes())}; }

Uuid uuid(const SQLite::Column& column) {
    if (const auto id = Uuid::parse(textOf(column))) return *id;
    corrupt(column, "an identifier");
}

std::optional<Uuid> optionalUuid(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return uuid(column);
}

Instant instant(const SQLite::Column& column) {
    if (const auto parsed = calendar_text::parseInstant(textOf(column))) return *parsed;
    corrupt(column, "an instant");
}

std::optional<Instant> optionalInstant(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return instant(column);
}

CalendarDate date(const SQLite::Column& column) {
    return CalendarDate(std::chrono::floor<std::chrono::days>(instant(column)));
}

std::optional<CalendarDate> optionalDate(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return date(column);
}

Decimal decimal(const SQLite::Column& column) {
    if (const auto parsed = Decimal::parse(textOf(column))) return *parsed;
    corrupt(column, "a decimal number");
}

std::string text(const SQLite::Column& column) { return column.getString(); }

std::optional<std::string> optionalText(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return column.getString();
}

std::int64_t integer(const SQLite::Column& column) { return column.getInt64(); }

std::optional<std::int64_t> optionalInteger(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return column.getInt64();
}

std::optional<Decimal> optionalDecimal(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return decimal(column);
}

std::string blob(const SQLite::Column& column) {
    if (column.isNull()) return {};
    return std::string(static_cast<const char*>(column.getBlob()), static_cast<std::size_t>(column.getBytes()));
}

bool boolean(const SQLite::Column& column) { return column.getInt() != 0; }

}  // namespace columns
}  // namespace tessel

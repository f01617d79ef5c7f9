#pragma once

#include <string_view>
#include <vector>

// The production archive described once: for each collection of the document, where its records live
// in the store and, for each archive key, the stored value it carries and of what kind. Reading a
// production from the store, writing the document, and (later) decoding and checking it all follow this
// one description rather than each spelling the records out again.
namespace tessel::archive_format {

// How a value travels: text and decimals as text, dates as ISO 8601 text, identifiers as UUID text,
// blobs as base64, lists of identifiers and of text as JSON lists, and nested JSON payloads as objects.
// Text that names records by their identities (a payroll issue's identity key) travels as text, and in an
// imported copy each identity in it follows its record's new one.
enum class FieldKind { id, uuid, text, identityText, integer, boolean, decimal, date, bytes, uuidList, textList, object, objectList };

struct Field {
    std::string_view key;      // the archive key
    std::string_view column;   // the SQL expression in the collection's query that holds the value
    FieldKind kind;
    bool optional = false;     // absent when the stored value is null
};

enum class Shape { list, optionalList, single, optionalSingle };

struct Collection {
    std::string_view key;    // the top-level archive key
    Shape shape;
    std::string_view from;   // FROM and WHERE of the query selecting the production's records (?1 the production)
    std::string_view order;  // the ORDER BY that makes the document the same each time
    std::vector<Field> fields;
};

// The record collections, in the document's key order (the top-level scalars are apart, below).
const std::vector<Collection>& collections();

// The earning lines inside each confirmed pay stub ("earningLines"), selected by the stub's id as ?1.
const Collection& earningLines();

// Top-level values that are not records: "dtsExportTemplateMode", "payrollWeekStartWeekday",
// "payrollTerminologyProfile", "roundingTolerance", and the built-in form's eligibility (an extra key).
const std::vector<Collection>& settings();

// One content check of an imported archive: a record's reference to a record of the archive, or a
// value that must read. Checks run in the order listed, and the first that fails gives the sentence.
// A top-level setting is checked with its own key as the collection and an empty key.
struct Check {
    enum class Rule { reference, decimal, nonNegativeDecimal, oneOf, notEmpty, nonNegativeInteger, weekday, payload, uniqueID, notAfter, uniquePair, currency };
    std::string_view collection, key;
    Rule rule;
    // reference: the target collection; oneOf: the raw values, "|"-separated; payload: what the base64
    // blob must read as ("json", "positionDefaults", "positionOverrides", "schedule", "mealPenaltyRules",
    // "turnaroundRules", "pdf"); uniqueID: no two records of the collection share the key's value;
    // notAfter: the keys ("|"-separated) whose dates the key's date must not follow; uniquePair: the
    // second key that, with the first, no two records share; currency: a three-letter capital code
    std::string_view argument;
    std::string_view message;
};
const std::vector<Check>& checks();

// Where a collection's values are stored: its own table ("t") and the satellites joined to it, each by
// the column that holds the owner's id. A satellite row is written when any of its values is present.
struct StoredTable {
    std::string_view alias, table, ownerColumn;
    std::string_view ownerKey = "id";               // the record's key whose value the owner column holds
    bool hasOwnID = false;                         // an "id" column of its own, given a new identity
    std::vector<std::string_view> stampColumns{};  // required timestamps the archive does not carry
};
std::vector<StoredTable> tablesOf(const Collection& collection);

}  // namespace tessel::archive_format

#include "ConfirmedPayStubs.hpp"

#include <map>
#include <set>

#include "App/actualpay/StubExtraction.hpp"
#include "App/actualpay/StubPdfDocument.hpp"
#include "App/model/CalendarText.hpp"

namespace tessel::confirmed_pay_stubs {
namespace {

using namespace columns;

constexpr const char* stubColumns =
    "id, productionID, crewMemberID, payrollWeekID, payrollWeekStart, payrollWeekEnd, printedEmployeeName, printedPayPeriodStart, "
    "printedPayPeriodEnd, printedOccupation, totalHours, gross, sourceFilename, importedAt, confirmedAt, modifiedAt";

ConfirmedPayStubActualPay readStub(SQLite::Statement& row, bool withPDF) {
    ConfirmedPayStubActualPay stub{uuid(row.getColumn(0)),  uuid(row.getColumn(1)),         uuid(row.getColumn(2)),
                                   uuid(row.getColumn(3)),  date(row.getColumn(4)),         date(row.getColumn(5)),
                                   text(row.getColumn(6)),  optionalDate(row.getColumn(7)), optionalDate(row.getColumn(8)),
                                   text(row.getColumn(9)),  optionalDecimal(row.getColumn(10)), decimal(row.getColumn(11)),
                                   {},                      text(row.getColumn(12)),        instant(row.getColumn(13)),
                                   instant(row.getColumn(14)), instant(row.getColumn(15)),  {}};
    if (withPDF) {
        stub.sourcePDFData = blob(row.getColumn(16));
    }
    return stub;
}

std::vector<ConfirmedPayStubEarningLine> linesOf(ModelContext& context, const Uuid& payStubID) {
    auto& statement = context.prepare(
        "SELECT id, payStubID, printedLabel, hours, rate, amount, displayOrder FROM ConfirmedPayStubEarningLine WHERE payStubID = ?1 "
        "ORDER BY displayOrder, id");
    bind(statement, 1, payStubID);
    return readAll<ConfirmedPayStubEarningLine>(statement, [](SQLite::Statement& row) {
        return ConfirmedPayStubEarningLine{uuid(row.getColumn(0)),          uuid(row.getColumn(1)),     text(row.getColumn(2)),
                                           optionalDecimal(row.getColumn(3)), optionalDecimal(row.getColumn(4)), decimal(row.getColumn(5)),
                                           integer(row.getColumn(6))};
    });
}

std::vector<ConfirmedPayStubActualPay> stubsWhere(ModelContext& context, const std::string& condition, const Uuid& id, bool withPDF) {
    auto& statement = context.prepare(std::string("SELECT ") + stubColumns + (withPDF ? ", sourcePDFData" : "") +
                                      " FROM ConfirmedPayStubActualPay s WHERE " + condition +
                                      " ORDER BY payrollWeekStart, (SELECT c.displayOrder FROM CrewMember c WHERE c.id = s.crewMemberID), crewMemberID");
    bind(statement, 1, id);
    auto stubs = readAll<ConfirmedPayStubActualPay>(statement, [&](SQLite::Statement& row) { return readStub(row, withPDF); });
    for (auto& stub : stubs) stub.lines = linesOf(context, stub.id);
    return stubs;
}

void insertLines(ModelContext& context, const ConfirmedPayStubActualPay& s);

void insert(ModelContext& context, const ConfirmedPayStubActualPay& s) {
    auto& statement = context.prepare(std::string("INSERT INTO ConfirmedPayStubActualPay (") + stubColumns +
                                      ", sourcePDFData) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)");
    bindAll(statement, s.id, s.productionID, s.crewMemberID, s.payrollWeekID, s.payrollWeekStart, s.payrollWeekEnd, s.printedEmployeeName,
            s.printedPayPeriodStart, s.printedPayPeriodEnd, s.printedOccupation);
    bind(statement, 11, s.totalHours);
    bind(statement, 12, s.gross);
    bind(statement, 13, s.sourceFilename);
    bind(statement, 14, s.importedAt);
    bind(statement, 15, s.confirmedAt);
    bind(statement, 16, s.modifiedAt);
    bindBlob(statement, 17, s.sourcePDFData);
    statement.exec();
    insertLines(context, s);
}

void insertLines(ModelContext& context, const ConfirmedPayStubActualPay& s) {
    auto& line = context.prepare(
        "INSERT INTO ConfirmedPayStubEarningLine (id, payStubID, printedLabel, hours, rate, amount, displayOrder) VALUES (?1, ?2, ?3, ?4, ?5, "
        "?6, ?7)");
    for (const auto& l : s.lines) {
        bindAll(line, l.id, s.id, l.printedLabel);
        bind(line, 4, l.hours);
        bind(line, 5, l.rate);
        bind(line, 6, l.amount);
        bind(line, 7, l.displayOrder);
        line.exec();
        line.reset();
        line.clearBindings();
    }
}

void erase(ModelContext& context, const Uuid& payStubID) {
    auto& lines = context.prepare("DELETE FROM ConfirmedPayStubEarningLine WHERE payStubID = ?1");
    bind(lines, 1, payStubID);
    lines.exec();
    auto& stub = context.prepare("DELETE FROM ConfirmedPayStubActualPay WHERE id = ?1");
    bind(stub, 1, payStubID);
    stub.exec();
}

bool readsAsDecimal(const std::optional<std::string>& text) { return text && Decimal::parse(*text).has_value(); }

}  // namespace

std::vector<ConfirmedPayStubActualPay> forWeek(ModelContext& context, const Uuid& payrollWeekID, bool withPDF) {
    return stubsWhere(context, "payrollWeekID = ?1", payrollWeekID, withPDF);
}

std::vector<ConfirmedPayStubActualPay> forProduction(ModelContext& context, const Uuid& productionID, bool withPDF) {
    return stubsWhere(context, "productionID = ?1", productionID, withPDF);
}

std::optional<ConfirmedPayStubActualPay> find(ModelContext& context, const Uuid& crewMemberID, const Uuid& payrollWeekID, bool withPDF) {
    for (auto& stub : forWeek(context, payrollWeekID, withPDF)) {
        if (stub.crewMemberID == crewMemberID) return std::move(stub);
    }
    return std::nullopt;
}

void confirm(ModelContext& context, const ConfirmedPayStubActualPay& stub, bool replace) {
    if (const auto existing = find(context, stub.crewMemberID, stub.payrollWeekID)) {
        if (!replace) throw ConfirmedPayStubError(std::string(confirmed_pay_stub_words::alreadyConfirmed));
        erase(context, existing->id);
    }
    insert(context, stub);
}

namespace {

void requireExisting(ModelContext& context, const Uuid& payStubID) {
    auto& statement = context.prepare("SELECT 1 FROM ConfirmedPayStubActualPay WHERE id = ?1");
    bind(statement, 1, payStubID);
    if (!readFirst(statement, [](SQLite::Statement&) { return true; })) {
        throw ConfirmedPayStubError(std::string(confirmed_pay_stub_words::noLongerExists));
    }
}

}  // namespace

void update(ModelContext& context, const ConfirmedPayStubActualPay& stub) {
    requireExisting(context, stub.id);
    if (const auto other = find(context, stub.crewMemberID, stub.payrollWeekID); other && other->id != stub.id) {
        throw ConfirmedPayStubError(std::string(confirmed_pay_stub_words::alreadyConfirmed));
    }
    auto& statement = context.prepare(
        "UPDATE ConfirmedPayStubActualPay SET crewMemberID = ?2, printedEmployeeName = ?3, printedPayPeriodStart = ?4, printedPayPeriodEnd = ?5, "
        "printedOccupation = ?6, totalHours = ?7, gross = ?8, modifiedAt = ?9 WHERE id = ?1");
    bindAll(statement, stub.id, stub.crewMemberID, stub.printedEmployeeName, stub.printedPayPeriodStart, stub.printedPayPeriodEnd,
            stub.printedOccupation);
    bind(statement, 7, stub.totalHours);
    bind(statement, 8, stub.gross);
    bind(statement, 9, stub.modifiedAt);
    statement.exec();
    auto& lines = context.prepare("DELETE FROM ConfirmedPayStubEarningLine WHERE payStubID = ?1");
    bind(lines, 1, stub.id);
    lines.exec();
    insertLines(context, stub);
}

void remove(ModelContext& context, const Uuid& payStubID) {
    requireExisting(context, payStubID);
    erase(context, payStubID);
}

std::vector<std::string> integrityFindings(ModelContext& context, const Uuid& productionID) {
    struct Row {
        std::string id, crewMemberID, weekID, name, gross, importedAt, confirmedAt, modifiedAt;
        std::optional<std::string> totalHours;
        std::string pdf;
        bool crewExists, weekExists;
    };
    auto& statement = context.prepare(
        "SELECT s.id, s.crewMemberID, s.payrollWeekID, s.printedEmployeeName, s.gross, s.totalHours, s.importedAt, s.confirmedAt, s.modifiedAt, "
        "s.sourcePDFData, EXISTS (SELECT 1 FROM CrewMember c WHERE c.id = s.crewMemberID), "
        "EXISTS (SELECT 1 FROM PayrollWeek w WHERE w.id = s.payrollWeekID) FROM ConfirmedPayStubActualPay s WHERE s.productionID = ?1 ORDER BY s.id");
    bind(statement, 1, productionID);
    const auto rows = readAll<Row>(statement, [](SQLite::Statement& r) {
        return Row{r.getColumn(0).getString(), r.getColumn(1).getString(), r.getColumn(2).getString(), r.getColumn(3).getString(),
                   r.getColumn(4).getString(), r.getColumn(6).getString(), r.getColumn(7).getString(), r.getColumn(8).getString(),
                   optionalText(r.getColumn(5)),
                   blob(r.getColumn(9)),
                   r.getColumn(10).getInt() != 0, r.getColumn(11).getInt() != 0};
    });
    std::vector<std::string> findings;
    std::map<std::pair<std::string, std::string>, int> perPersonAndWeek;
    for (const auto& row : rows) {
        if (!row.crewExists) findings.emplace_back("A confirmed pay stub references missing crew.");
        if (!row.weekExists) findings.emplace_back("A confirmed pay stub references a missing Payroll Week.");
        try {
            stub_pdf::open(row.pdf);
        } catch (const PayStubExtractionError&) {
            findings.emplace_back("A confirmed pay stub source PDF is invalid.");
        }
        if (!readsAsDecimal(row.gross)) findings.emplace_back("A confirmed pay stub gross is invalid.");
        if (row.totalHours && !readsAsDecimal(row.totalHours)) findings.emplace_back("A confirmed pay stub total-hours value is invalid.");
        if (row.name.find_first_not_of(" \t\n") == std::string::npos) findings.emplace_back("A confirmed pay stub employee name is missing.");
        const auto parsed = [](const std::string& text) { return calendar_text::parseInstant(text); };
        const auto imported = parsed(row.importedAt), confirmed = parsed(row.confirmedAt), modified = parsed(row.modifiedAt);
        if (!imported || !confirmed || !modified || *confirmed < *imported || *modified < *confirmed) {
            findings.emplace_back("A confirmed pay stub timestamp sequence is invalid.");
        }
        ++perPersonAndWeek[{row.crewMemberID, row.weekID}];
    }
    auto& orders = context.prepare(
        "SELECT COUNT(*) FROM (SELECT 1 FROM ConfirmedPayStubEarningLine l JOIN ConfirmedPayStubActualPay s ON s.id = l.payStubID "
        "WHERE s.productionID = ?1 GROUP BY l.payStubID, l.displayOrder HAVING COUNT(*) > 1)");
    bind(orders, 1, productionID);
    const auto duplicated = readFirst(orders, [](SQLite::Statement& r) { return r.getColumn(0).getInt64(); });
    for (std::int64_t i = 0; i < duplicated.value_or(0); ++i) findings.emplace_back("A confirmed pay stub has duplicate earning-line order values.");
    for (const auto& [key, count] : perPersonAndWeek) {
        if (count > 1) findings.emplace_back("Competing confirmed pay stubs exist for one crew member and Payroll Week.");
    }
    return findings;
}

}  // namespace tessel::confirmed_pay_stubs

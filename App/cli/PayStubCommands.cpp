#include "PayStubCommands.hpp"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <sstream>
#include <thread>

#include "App/actualpay/PayStubImport.hpp"
#include "App/actualpay/StubExtraction.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using command_actions::act;
using command_actions::dateArgument;
namespace words = pay_stub_review_words;

using command_actions::now;

PayStubTextSource embeddedSourceOf(const std::string& text) {
    if (text == "downloaded") return PayStubTextSource::embeddedPDFText;
    if (text == "ocr-layer") return PayStubTextSource::embeddedOCRText;
    throw Refused{"invalidChoice", "Give --embedded downloaded or ocr-layer."};
}

PayStubWeek stubWeek(ModelContext& context, const Production& production, const std::string& dateText) {
    const auto week = weekHolding(context, production.id, dateArgument(dateText));
    if (!week) throw Refused{"weekNotFound", "There is no Payroll Week with a DTS or activity on " + dateText + "."};
    const auto start = CalendarDate(floor<days>(week->startDate));
    return {production.id, week->id, start, CalendarDate(sys_days(start) + days(6))};
}

using ImportSetting = PayStubImportSetting;

std::optional<ImportSetting> importSetting(CommandSession& session, const std::string& weekDate, int& status) {
    std::optional<ImportSetting> setting;
    status = act(session, [&](ModelContext& context, const Production& production) {
        const auto week = weekHolding(context, production.id, dateArgument(weekDate));
        if (!week) throw Refused{"weekNotFound", "There is no Payroll Week with a DTS or activity on " + weekDate + "."};
        try {
            setting = tessel::importSetting(context, production.id, *week);
        } catch (const PayStubImportError& error) {
            throw Refused{"noCrew", error.what()};
        }
        return exitSuccess;
    });
    return status == exitSuccess ? setting : std::nullopt;
}

// "12/20" after each file; on a terminal, one line redrawn as a bar.
std::function<void(std::size_t, std::size_t)> progressOn(CommandSession& session) {
    const bool terminal = &session.streams().err == &std::cerr && ::isatty(STDERR_FILENO);
    return [&session, terminal](std::size_t done, std::size_t total) {
        auto& err = session.streams().err;
        if (!terminal) {
            err << done << "/" << total << "\n";
            return;
        }
        const std::size_t width = 30, filled = total ? done * width / total : width;
        err << "\rReading pay stubs [" << std::string(filled, '#') << std::string(width - filled, '.') << "] " << done << "/" << total
            << (done == total ? "\n" : "") << std::flush;
    };
}

PayStubBatchSession readBatch(const ImportSetting& setting, const std::vector<PayStubBatchInput>& inputs, const std::string& embedded,
                              const std::function<void(std::size_t, std::size_t)>& progress = {}) {
    PayStubBatchOptions options{embeddedSourceOf(embedded), static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, 2u)), now()};
    return importBatch(inputs, setting.week, setting.crew, setting.existing, options, progress);
}

std::string crewName(const PayStubBatchSession& batch, const std::optional<Uuid>& id) {
    if (!id) return "";
    for (const auto& person : batch.crew) {
        if (person.id == *id) return choiceText(person);
    }
    return "";
}

std::string printedPeriod(const PayStubReviewSession& r) {
    const auto date = [](const auto& d) { return d.value ? calendar_text::formatDate(*d.value) : std::string("?"); };
    return date(r.payPeriodStart) + " to " + date(r.payPeriodEnd);
}

Json candidateJSON(const PayStubBatchCandidate& c, const PayStubBatchSession& batch) {
    const auto status = statusOf(c, batch);
    Json json{{"file", c.filename}, {"status", toRawValue(status)}, {"label", label(status)}, {"reviewReasons", reviewReasons(c, batch)}};
    if (c.review) {
        const auto& r = *c.review;
        json["crewMemberID"] = r.selectedCrewMemberID ? Json(r.selectedCrewMemberID->text()) : Json();
        json["printedEmployeeName"] = r.printedEmployeeName.value.value_or("");
        json["payPeriodStart"] = r.payPeriodStart.value ? Json(calendar_text::formatDate(*r.payPeriodStart.value)) : Json();
        json["payPeriodEnd"] = r.payPeriodEnd.value ? Json(calendar_text::formatDate(*r.payPeriodEnd.value)) : Json();
        json["gross"] = r.gross.rawValue;
        json["earningLineCount"] = r.earningLines.size();
    }
    return json;
}

std::string batchText(const PayStubBatchSession& batch) {
    std::ostringstream out;
    out << "Pay stubs for the Payroll Week " << calendar_text::formatPeriod(batch.week.start, batch.week.end) << " ("
        << counted(static_cast<std::int64_t>(batch.candidates.size()), "file", "files") << ")\n";
    const auto shownCrew = [&](const PayStubBatchCandidate& c) {
        const auto name = crewName(batch, c.review ? c.review->selectedCrewMemberID : std::nullopt);
        return name.empty() ? std::string("(no crew member)") : name;
    };
    std::size_t fileWidth = 4, crewWidth = 4;
    for (const auto& c : batch.candidates) {
        fileWidth = std::max(fileWidth, c.filename.size());
        if (!c.review) continue;
        crewWidth = std::max(crewWidth, review_text::characters(shownCrew(c)));
    }
    for (const auto& c : batch.candidates) {
        const std::string status(label(statusOf(c, batch)));
        out << "  " << review_text::padded(c.filename, fileWidth) << "  " << (c.review ? review_text::padded(status, 18) : status);
        if (c.review) {
            const auto& r = *c.review;
            out << "  " << review_text::padded(shownCrew(c), crewWidth) << "  " << printedPeriod(r) << "  gross "
                << (r.gross.rawValue.empty() ? "?" : r.gross.rawValue);
        }
        out << "\n";
        for (const auto& reason : reviewReasons(c, batch)) out << "      " << reason << "\n";
    }
    if (batch.message) out << *batch.message << "\n";
    return out.str();
}

int importStubs(CommandSession& session, const PayStubCommandArguments& a) {
    int status = exitSuccess;
    const auto setting = importSetting(session, a.week, status);
    if (!setting) return status;
    std::vector<std::filesystem::path> paths(a.paths.begin(), a.paths.end());
    std::optional<PayStubBatchSession> read;
    try {
        read = readBatch(*setting, batchInputs(paths), a.embedded, progressOn(session));
    } catch (const PayStubImportError& error) {
        return session.refuse("noPDFs", error.what());
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    }
    PayStubBatchSession& batch = *read;
    std::string confirmedText;
    if (a.confirmReady) {
        status = act(session, [&](ModelContext& context, const Production&) {
            try {
                confirmedText = "Confirmed " + counted(confirmReady(context, batch, now()), "pay stub", "pay stubs") + ".\n";
            } catch (const ConfirmedPayStubError& error) {
                throw Refused{"alreadyConfirmed", std::string(error.what()) + " Nothing was confirmed."};
            }
            return exitSuccess;
        });
        if (status != exitSuccess) return status;
    }
    Json candidates = Json::array();
    for (const auto& c : batch.candidates) candidates.push_back(candidateJSON(c, batch));
    Json json{{"payrollWeekStart", calendar_text::formatDate(batch.week.start)},
              {"payrollWeekEnd", calendar_text::formatDate(batch.week.end)},
              {"candidates", candidates},
              {"message", batch.message ? Json(*batch.message) : Json()}};
    session.answer(json, batchText(batch) + confirmedText);
    return exitSuccess;
}

// ---- one stub reviewed with corrections and confirmed ----

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::string part;
    std::istringstream in(text);
    while (std::getline(in, part, separator)) parts.push_back(part);
    if (!text.empty() && text.back() == separator) parts.emplace_back();
    return parts;
}

const Refused badLine{"invalidLine",
                      "Give an earning line as LABEL,HOURS,RATE,AMOUNT (numbers without grouping commas; leave hours and rate empty for a flat "
                      "amount), such as OVERTIME,10.5,67.50,708.75."};

void correctLine(PayStubReviewedEarningLine& line, const std::string& fields) {
    const auto parts = split(fields, ',');
    if (parts.size() != 4) throw badLine;
    correct(line.printedLabel, parts[0]);
    correct(line.hours, parts[1]);
    correct(line.rate, parts[2]);
    correct(line.amount, parts[3]);
}

std::size_t lineIndex(const PayStubReviewSession& r, int number) {
    if (number < 1 || static_cast<std::size_t>(number) > r.earningLines.size()) {
        throw Refused{"invalidLine", "There is no earning line " + std::to_string(number) + " on this stub; lines are numbered from 1."};
    }
    return static_cast<std::size_t>(number - 1);
}

void applyCorrections(PayStubReviewSession& r, const PayStubCommandArguments& a, const std::optional<Uuid>& crewID) {
    if (crewID) chooseCrewMember(r, *crewID);
    if (a.acceptPeriod) r.weekMismatchAcknowledged = true;
    if (a.printedName) correct(r.printedEmployeeName, *a.printedName);
    if (a.occupation) correct(r.printedOccupation, *a.occupation);
    if (a.start) correct(r.payPeriodStart, dateArgument(*a.start));
    if (a.end) correct(r.payPeriodEnd, dateArgument(*a.end));
    if (a.gross) correct(r.gross, *a.gross);
    if (a.totalHours) correct(r.totalHours, *a.totalHours);
    for (const auto& line : a.lines) {
        const auto equals = line.find('=');
        if (equals == std::string::npos) throw badLine;
        int number = 0;
        try {
            number = std::stoi(line.substr(0, equals));
        } catch (const std::exception&) {
            throw badLine;
        }
        correctLine(r.earningLines[lineIndex(r, number)], line.substr(equals + 1));
    }
    // Lines are dropped by the numbers the stub showed, so drop from the last.
    std::vector<std::size_t> dropped;
    for (const int number : a.dropLines) dropped.push_back(lineIndex(r, number));
    std::sort(dropped.rbegin(), dropped.rend());
    dropped.erase(std::unique(dropped.begin(), dropped.end()), dropped.end());
    for (const auto index : dropped) removeEarningLine(r, index);
    for (const auto& fields : a.addLines) correctLine(addEarningLine(r), fields);
}

std::string corrected(bool was) { return was ? " (corrected)" : ""; }

std::string confirmationText(const PayStubReviewSession& r, const ConfirmedPayStubActualPay& record, const std::string& crew) {
    std::ostringstream out;
    out << (r.isExistingAuthority ? "Saved the confirmed pay stub \u201C" : "Confirmed \u201C") << record.sourceFilename << "\u201D as the Actual Pay of "
        << crew << " for the Payroll Week " << calendar_text::formatPeriod(record.payrollWeekStart, record.payrollWeekEnd) << ".\n";
    out << "  Printed name: " << record.printedEmployeeName << corrected(r.printedEmployeeName.wasUserCorrected) << "\n";
    if (!record.printedOccupation.empty()) out << "  Occupation: " << record.printedOccupation << corrected(r.printedOccupation.wasUserCorrected) << "\n";
    out << "  Printed period: " << printedPeriod(r) << corrected(r.payPeriodStart.wasUserCorrected || r.payPeriodEnd.wasUserCorrected)
        << (r.weekMismatchAcknowledged && !periodMatchesWeek(r) ? " (associated with this week)" : "") << "\n";
    for (std::size_t i = 0; i < record.lines.size(); ++i) {
        const auto& line = record.lines[i];
        const auto& reviewed = r.earningLines[i];
        const bool was = reviewed.printedLabel.wasUserCorrected || reviewed.hours.wasUserCorrected || reviewed.rate.wasUserCorrected ||
                         reviewed.amount.wasUserCorrected;
        out << "  " << (i + 1) << ". " << line.printedLabel;
        if (line.hours) out << "  " << line.hours->toString() << " h";
        if (line.rate) out << "  at " << line.rate->toString();
        out << "  " << line.amount.toString() << corrected(was) << "\n";
    }
    if (record.totalHours) out << "  Total hours: " << record.totalHours->toString() << corrected(r.totalHours.wasUserCorrected) << "\n";
    out << "  Gross: " << record.gross.toString() << corrected(r.gross.wasUserCorrected) << "\n";
    return out.str();
}

int confirmStub(CommandSession& session, const PayStubCommandArguments& a) {
    int status = exitSuccess;
    const auto setting = importSetting(session, a.week, status);
    if (!setting) return status;
    std::error_code ignored;
    if (std::filesystem::is_directory(a.file, ignored)) return session.refuse("notAFile", "Give one pay-stub PDF to confirm, not a folder.");
    std::optional<Uuid> crewID;
    if (!a.crew.empty()) {
        status = act(session, [&](ModelContext& context, const Production& production) {
            crewID = crewMemberNamed(context, production.id, a.crew).id;
            return exitSuccess;
        });
        if (status != exitSuccess) return status;
    }
    std::optional<PayStubBatchSession> batch;
    std::optional<ConfirmedPayStubActualPay> confirmed;
    try {
        batch = readBatch(*setting, batchInputs({a.file}), a.embedded);
        auto& candidate = batch->candidates.front();
        if (candidate.failure) return session.refuse("failed", *candidate.failure);
        applyCorrections(*candidate.review, a, crewID);
        confirmed = confirmedRecord(*candidate.review, now());
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const PayStubReviewError& error) {
        return session.refuse("unresolved", error.what(), Json{{"unresolved", error.unresolved()}});
    }
    const auto& record = *confirmed;
    status = act(session, [&](ModelContext& context, const Production&) {
        try {
            confirmed_pay_stubs::confirm(context, record, a.replace);
        } catch (const ConfirmedPayStubError& error) {
            throw Refused{"alreadyConfirmed", std::string(error.what()) + " Give --replace to replace it with this PDF."};
        }
        const auto& review = *batch->candidates.front().review;
        session.answer(Json{{"id", record.id.text()}, {"crewMemberID", record.crewMemberID.text()}, {"gross", record.gross.toString()},
                            {"replaced", a.replace && setting->existing.contains(record.crewMemberID)}},
                       confirmationText(review, record, crewName(*batch, record.crewMemberID)));
        return exitSuccess;
    }, "Pay Stub Not Saved", confirmed_pay_stub_words::saveFailed);
    return status;
}

// ---- confirmed stubs ----

Json stubJSON(const ConfirmedPayStubActualPay& s, const std::string& crew) {
    Json lines = Json::array();
    for (const auto& l : s.lines) {
        lines.push_back({{"printedLabel", l.printedLabel},
                         {"hours", l.hours ? Json(l.hours->toString()) : Json()},
                         {"rate", l.rate ? Json(l.rate->toString()) : Json()},
                         {"amount", l.amount.toString()},
                         {"displayOrder", l.displayOrder}});
    }
    const auto date = [](const std::optional<CalendarDate>& d) { return d ? Json(calendar_text::formatDate(*d)) : Json(); };
    return {{"id", s.id.text()},
            {"crewMemberID", s.crewMemberID.text()},
            {"crewMember", crew},
            {"payrollWeekStart", calendar_text::formatDate(s.payrollWeekStart)},
            {"payrollWeekEnd", calendar_text::formatDate(s.payrollWeekEnd)},
            {"printedEmployeeName", s.printedEmployeeName},
            {"printedPayPeriodStart", date(s.printedPayPeriodStart)},
            {"printedPayPeriodEnd", date(s.printedPayPeriodEnd)},
            {"printedOccupation", s.printedOccupation},
            {"totalHours", s.totalHours ? Json(s.totalHours->toString()) : Json()},
            {"gross", s.gross.toString()},
            {"sourceFilename", s.sourceFilename},
            {"importedAt", calendar_text::formatInstant(s.importedAt)},
            {"confirmedAt", calendar_text::formatInstant(s.confirmedAt)},
            {"modifiedAt", calendar_text::formatInstant(s.modifiedAt)},
            {"earningLines", lines}};
}

std::map<Uuid, std::string> crewNames(ModelContext& context, const Uuid& productionID) {
    std::map<Uuid, std::string> names;
    for (const auto& person : crew_repository::crewMembers(context, productionID)) names[person.id] = person.displayName;
    return names;
}

int listStubs(CommandSession& session, const PayStubCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto stubs = a.week.empty() ? confirmed_pay_stubs::forProduction(context, production.id)
                                          : confirmed_pay_stubs::forWeek(context, stubWeek(context, production, a.week).payrollWeekID);
        const auto names = crewNames(context, production.id);
        Json list = Json::array();
        std::ostringstream text;
        for (const auto& s : stubs) {
            const auto name = names.contains(s.crewMemberID) ? names.at(s.crewMemberID) : std::string("(missing crew member)");
            list.push_back(stubJSON(s, name));
            text << calendar_text::formatPeriod(s.payrollWeekStart, s.payrollWeekEnd) << "  " << review_text::padded(name, 24) << "  gross "
                 << review_text::padded(s.gross.toString(), 10) << "  " << counted(static_cast<std::int64_t>(s.lines.size()), "line", "lines") << "  "
                 << s.sourceFilename << "\n";
        }
        if (stubs.empty()) text << "No pay stubs are confirmed" << (a.week.empty() ? "" : " for this Payroll Week") << ".\n";
        session.answer(list, text.str());
        return exitSuccess;
    });
}

ConfirmedPayStubActualPay namedStub(ModelContext& context, const Production& production, const PayStubCommandArguments& a, bool withPDF) {
    const auto person = crewMemberNamed(context, production.id, a.crew);
    const auto week = stubWeek(context, production, a.week);
    auto stub = confirmed_pay_stubs::find(context, person.id, week.payrollWeekID, withPDF);
    if (!stub) throw Refused{"notConfirmed", person.displayName + " has no confirmed pay stub for this Payroll Week."};
    return std::move(*stub);
}

int showStub(CommandSession& session, const PayStubCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto stub = namedStub(context, production, a, !a.pdf.empty());
        if (!a.pdf.empty() && !new_file::write(a.pdf, stub.sourcePDFData)) {
            throw Refused{"writeFailed", "The file \u201C" + a.pdf + "\u201D could not be written; it may already exist."};
        }
        std::ostringstream text;
        text << a.crew << ", Payroll Week " << calendar_text::formatPeriod(stub.payrollWeekStart, stub.payrollWeekEnd) << ": confirmed from \u201C" << stub.sourceFilename
             << "\u201D\n  Printed name: " << stub.printedEmployeeName << "\n";
        if (!stub.printedOccupation.empty()) text << "  Occupation: " << stub.printedOccupation << "\n";
        if (stub.printedPayPeriodStart && stub.printedPayPeriodEnd) {
            text << "  Printed period: " << calendar_text::formatPeriod(*stub.printedPayPeriodStart, *stub.printedPayPeriodEnd) << "\n";
        }
        for (const auto& line : stub.lines) {
            text << "  " << (line.displayOrder + 1) << ". " << line.printedLabel << (line.hours ? "  " + line.hours->toString() + " h" : "")
                 << (line.rate ? "  at " + line.rate->toString() : "") << "  " << line.amount.toString() << "\n";
        }
        if (stub.totalHours) text << "  Total hours: " << stub.totalHours->toString() << "\n";
        text << "  Gross: " << stub.gross.toString() << "\n";
        if (!a.pdf.empty()) text << "Wrote the source PDF to \u201C" << a.pdf << "\u201D.\n";
        session.answer(stubJSON(stub, a.crew), text.str());
        return exitSuccess;
    });
}

// A confirmed stub corrected again from its stored values; its PDF must still open.
int editStub(CommandSession& session, const PayStubCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) -> int {
        const auto stub = namedStub(context, production, a, true);
        try {
            extractTextLayer(stub.sourcePDFData, PayStubTextSource::embeddedPDFText);
        } catch (const PayStubExtractionError&) {
            return session.refuseWithTitle("invalidPDF", std::string(confirmed_pay_stub_words::openFailedTitle),
                                           std::string(confirmed_pay_stub_words::invalidPDF));
        }
        const auto week = payroll_week_repository::fetchWeek(context, stub.payrollWeekID);
        if (!week) throw Refused{"weekNotFound", std::string(confirmed_pay_stub_words::noLongerExists)};
        const auto crew = tessel::importSetting(context, production.id, *week).crew;
        auto review = reviewOfConfirmed(stub, crew);
        std::optional<Uuid> reassigned;
        if (!a.reassign.empty()) reassigned = crewMemberNamed(context, production.id, a.reassign).id;
        applyCorrections(review, a, reassigned);
        std::optional<ConfirmedPayStubActualPay> record;
        try {
            record = confirmedRecord(review, now());
            confirmed_pay_stubs::update(context, *record);
        } catch (const PayStubReviewError& error) {
            return session.refuse("unresolved", error.what(), Json{{"unresolved", error.unresolved()}});
        } catch (const ConfirmedPayStubError& error) {
            throw Refused{"refused", error.what()};
        }
        const PayStubBatchSession batch{review.week, crew, {}, {}, false, 0, std::nullopt};
        session.answer(Json{{"id", record->id.text()}, {"crewMemberID", record->crewMemberID.text()}, {"gross", record->gross.toString()}},
                       confirmationText(review, *record, crewName(batch, record->crewMemberID)));
        return exitSuccess;
    }, "Pay Stub Not Saved", confirmed_pay_stub_words::saveFailed);
}

int removeStub(CommandSession& session, const PayStubCommandArguments& a) {
    if (!a.yes) return session.confirmationNeeded(confirmed_pay_stub_words::removeTitle, std::string(confirmed_pay_stub_words::removeQuestion));
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto stub = namedStub(context, production, a, false);
        try {
            confirmed_pay_stubs::remove(context, stub.id);
        } catch (const ConfirmedPayStubError& error) {
            throw Refused{"notConfirmed", error.what()};
        }
        session.answer(Json{{"removed", stub.id.text()}}, "Removed the confirmed pay stub of " + a.crew + " for the Payroll Week " +
                                                              calendar_text::formatPeriod(stub.payrollWeekStart, stub.payrollWeekEnd) + ".\n");
        return exitSuccess;
    });
}

}  // namespace

void addPayStubCommands(CLI::App& stub, CommandSession& session, PayStubCommandArguments& a, int& exitStatus) {
    auto* import = stub.add_subcommand("import", "Read pay-stub PDFs (files or folders) for a Payroll Week and show each one's status");
    import->add_option("FILES", a.paths, "PDF files, or folders of them")->required();
    import->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    import->add_flag("--confirm-ready", a.confirmReady, "Confirm every stub whose status is Ready");
    import->add_option("--embedded", a.embedded, "What the PDFs' text layers are: downloaded (the default) or ocr-layer");
    import->callback([&] { exitStatus = importStubs(session, a); });

    auto* confirm = stub.add_subcommand("confirm", "Review one pay-stub PDF with corrections and confirm it as Actual Pay");
    confirm->add_option("FILE", a.file, "The pay-stub PDF")->required();
    confirm->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    confirm->add_option("--crew", a.crew, "The crew member the stub is for, when the printed name does not settle it");
    confirm->add_flag("--accept-period", a.acceptPeriod, "Associate this mismatched pay period with the selected Payroll Week");
    confirm->add_option("--name", a.printedName, "The printed employee name, corrected");
    confirm->add_option("--occupation", a.occupation, "The printed occupation, corrected");
    confirm->add_option("--start", a.start, "The printed pay-period start, corrected (YYYY-MM-DD)");
    confirm->add_option("--end", a.end, "The printed pay-period end, corrected (YYYY-MM-DD)");
    confirm->add_option("--gross", a.gross, "The printed gross, corrected");
    confirm->add_option("--total-hours", a.totalHours, "The printed total hours, corrected");
    confirm->add_option("--line", a.lines, "N=LABEL,HOURS,RATE,AMOUNT: earning line N corrected (hours and rate may be empty)");
    confirm->add_option("--drop-line", a.dropLines, "Earning line N is not an earning");
    confirm->add_option("--add-line", a.addLines, "LABEL,HOURS,RATE,AMOUNT: an earning line the reading missed");
    confirm->add_flag("--replace", a.replace, "Replace the crew member's confirmed stub for the week with this PDF");
    confirm->add_option("--embedded", a.embedded, "What the PDF's text layer is: downloaded (the default) or ocr-layer");
    confirm->callback([&] { exitStatus = confirmStub(session, a); });

    auto* list = stub.add_subcommand("list", "The confirmed pay stubs of the production, or of one Payroll Week");
    list->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD");
    list->callback([&] { exitStatus = listStubs(session, a); });

    auto* show = stub.add_subcommand("show", "A crew member's confirmed pay stub for a Payroll Week");
    show->add_option("NAME", a.crew, "The crew member")->required();
    show->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    show->add_option("--pdf", a.pdf, "Also write the stub's source PDF to this new file");
    show->callback([&] { exitStatus = showStub(session, a); });

    auto* edit = stub.add_subcommand("edit", "Correct a crew member's confirmed pay stub for a Payroll Week");
    edit->add_option("NAME", a.crew, "The crew member")->required();
    edit->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    edit->add_option("--crew", a.reassign, "The crew member the stub is for instead");
    edit->add_flag("--accept-period", a.acceptPeriod, "Associate a mismatched pay period with the Payroll Week");
    edit->add_option("--name", a.printedName, "The printed employee name, corrected");
    edit->add_option("--occupation", a.occupation, "The printed occupation, corrected");
    edit->add_option("--start", a.start, "The printed pay-period start, corrected (YYYY-MM-DD)");
    edit->add_option("--end", a.end, "The printed pay-period end, corrected (YYYY-MM-DD)");
    edit->add_option("--gross", a.gross, "The printed gross, corrected");
    edit->add_option("--total-hours", a.totalHours, "The printed total hours, corrected");
    edit->add_option("--line", a.lines, "N=LABEL,HOURS,RATE,AMOUNT: earning line N corrected");
    edit->add_option("--drop-line", a.dropLines, "Earning line N is not an earning");
    edit->add_option("--add-line", a.addLines, "LABEL,HOURS,RATE,AMOUNT: an earning line to add");
    edit->callback([&] { exitStatus = editStub(session, a); });

    auto* remove = stub.add_subcommand("remove", "Remove a crew member's confirmed pay stub for a Payroll Week");
    remove->add_option("NAME", a.crew, "The crew member")->required();
    remove->add_option("--week", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    remove->add_flag("--yes", a.yes, "Confirm the removal");
    remove->callback([&] { exitStatus = removeStub(session, a); });
}

}  // namespace tessel

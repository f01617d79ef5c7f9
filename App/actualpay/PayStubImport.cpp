#include "PayStubImport.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <unordered_map>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/actualpay/StubBatch.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

namespace words = pay_stub_review_words;

std::optional<std::string> contentsOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (in.bad()) return std::nullopt;
    return bytes.str();
}

bool isPDFName(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".pdf";
}

PayStubBatchInput inputOf(const std::filesystem::path& path) {
    auto data = contentsOf(path);
    if (!data) return {path.filename().string(), std::nullopt, std::string(pay_stub_import_words::unreadable)};
    return {path.filename().string(), std::move(data), std::nullopt};
}

// "Most imported stubs use …" when more than half of the stubs read print one period that is not the week's.
std::optional<std::string> periodMessage(const PayStubBatchSession& batch) {
    std::map<std::pair<CalendarDate, CalendarDate>, int> periods;
    int read = 0;
    for (const auto& c : batch.candidates) {
        if (!c.review || c.duplicateFile) continue;
        ++read;
        if (c.review->payPeriodStart.value && c.review->payPeriodEnd.value) ++periods[{*c.review->payPeriodStart.value, *c.review->payPeriodEnd.value}];
    }
    for (const auto& [period, count] : periods) {
        if (2 * count > read && period != std::pair{batch.week.start, batch.week.end}) {
            return "Most imported stubs use " + calendar_text::formatPeriod(period.first, period.second) + ", but the selected Payroll Week is " +
                   calendar_text::formatPeriod(batch.week.start, batch.week.end) + ". Check the Production Payroll Week setting.";
        }
    }
    return std::nullopt;
}

// Every file proposing a person another file proposes too says so.
void flagSharedProposals(PayStubBatchSession& batch) {
    std::unordered_map<Uuid, int> proposals;
    for (const auto& c : batch.candidates) {
        if (c.review && !c.duplicateFile && c.review->selectedCrewMemberID) ++proposals[*c.review->selectedCrewMemberID];
    }
    for (auto& c : batch.candidates) {
        if (c.review && !c.duplicateFile && c.review->selectedCrewMemberID && proposals[*c.review->selectedCrewMemberID] > 1) {
            c.review->crewReviewReason = std::string(words::multiplePDFs);
        }
    }
}

}  // namespace

std::string_view toRawValue(PayStubBatchStatus status) noexcept {
    switch (status) {
        case PayStubBatchStatus::processing: return "processing";
        case PayStubBatchStatus::ready: return "ready";
        case PayStubBatchStatus::name: return "name";
        case PayStubBatchStatus::earnings: return "earnings";
        case PayStubBatchStatus::wrongPeriod: return "wrongPeriod";
        case PayStubBatchStatus::noMatch: return "noMatch";
        case PayStubBatchStatus::existing: return "existing";
        case PayStubBatchStatus::duplicate: return "duplicate";
        case PayStubBatchStatus::failed: return "failed";
        case PayStubBatchStatus::confirmed: return "confirmed";
    }
    return "failed";
}

std::string_view label(PayStubBatchStatus status) noexcept {
    switch (status) {
        case PayStubBatchStatus::processing: return "Processing";
        case PayStubBatchStatus::ready: return "Ready";
        case PayStubBatchStatus::name: return "Review Name Match";
        case PayStubBatchStatus::earnings: return "Review Earnings";
        case PayStubBatchStatus::wrongPeriod: return "Wrong Pay Period";
        case PayStubBatchStatus::noMatch: return "No Crew Match";
        case PayStubBatchStatus::existing: return "Already Confirmed";
        case PayStubBatchStatus::duplicate: return "Duplicate in Batch";
        case PayStubBatchStatus::failed: return "Failed";
        case PayStubBatchStatus::confirmed: return "Confirmed";
    }
    return "Failed";
}

std::vector<PayStubBatchInput> batchInputs(const std::vector<std::filesystem::path>& paths) {
    std::vector<PayStubBatchInput> inputs;
    for (const auto& path : paths) {
        std::error_code error;
        if (!std::filesystem::is_directory(path, error)) {
            inputs.push_back(inputOf(path));
            continue;
        }
        std::vector<std::filesystem::path> pdfs;
        for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
            if (entry.is_regular_file(error) && isPDFName(entry.path())) pdfs.push_back(entry.path());
        }
        if (pdfs.empty()) throw PayStubImportError(std::string(pay_stub_import_words::noPDFsInFolder));
        std::sort(pdfs.begin(), pdfs.end());
        for (const auto& pdf : pdfs) inputs.push_back(inputOf(pdf));
    }
    return inputs;
}

PayStubBatchSession importBatch(const std::vector<PayStubBatchInput>& inputs, const PayStubWeek& week, std::vector<PayStubCrewOption> crew,
                                std::set<Uuid> existingCrewIDs, const PayStubBatchOptions& options,
                                const std::function<void(std::size_t, std::size_t)>& progress) {
    PayStubBatchSession batch{week, std::move(crew), {}, std::move(existingCrewIDs), true, 0, std::nullopt};
    // Each readable, first-seen file is read once; a duplicate is known by its bytes.
    std::vector<stub_batch::StubFile> toRead;
    std::vector<std::optional<std::size_t>> readIndex(inputs.size());
    std::unordered_map<std::string_view, std::size_t> seen;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const auto& input = inputs[i];
        PayStubBatchCandidate candidate{"candidate-" + std::to_string(i), input.filename, std::nullopt, input.failure, false, false};
        if (input.data && !seen.emplace(*input.data, i).second) {
            candidate.duplicateFile = true;
        } else if (input.data) {
            readIndex[i] = toRead.size();
            toRead.push_back({input.filename, *input.data});
        }
        batch.candidates.push_back(std::move(candidate));
    }
    const auto outcomes = stub_batch::read(toRead, options.embedded, options.workers, [&](std::size_t done, const stub_batch::Outcome&) {
        if (progress) progress(done, toRead.size());
    });
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (!readIndex[i]) continue;
        auto& candidate = batch.candidates[i];
        const auto& outcome = outcomes[*readIndex[i]];
        if (const auto* failure = std::get_if<std::string>(&outcome)) {
            candidate.failure = *failure;
        } else {
            candidate.review = startReview(std::get<EPPayStubInterpretation>(outcome), week, batch.crew, inputs[i].filename, *inputs[i].data,
                                           options.importedAt);
        }
        ++batch.processed;
    }
    flagSharedProposals(batch);
    batch.message = periodMessage(batch);
    batch.processing = false;
    return batch;
}

PayStubImportSetting importSetting(ModelContext& context, const Uuid& productionID, const PayrollWeek& week) {
    auto& statement = context.prepare(
        "SELECT DISTINCT e.crewMemberID FROM CrewDailyEntry e JOIN Workday w ON w.id = e.workdayID WHERE w.payrollWeekID = ?1 AND e.crewMemberID "
        "IS NOT NULL");
    columns::bind(statement, 1, week.id);
    std::set<Uuid> participants;
    for (const auto& id : columns::readAll<Uuid>(statement, [](SQLite::Statement& row) { return columns::uuid(row.getColumn(0)); })) {
        participants.insert(id);
    }
    const auto start = CalendarDate(std::chrono::floor<std::chrono::days>(week.startDate));
    PayStubImportSetting setting{{productionID, week.id, start, CalendarDate(std::chrono::sys_days(start) + std::chrono::days(6))}, {}, {}};
    for (const auto& person : crew_repository::crewMembers(context, productionID)) {
        setting.crew.push_back({person.id, person.displayName, participants.contains(person.id)});
    }
    if (setting.crew.empty()) throw PayStubImportError(std::string(pay_stub_review_words::needsCrew));
    for (const auto& stub : confirmed_pay_stubs::forWeek(context, week.id)) setting.existing.insert(stub.crewMemberID);
    return setting;
}

int confirmReady(ModelContext& context, PayStubBatchSession& batch, Instant now) {
    int count = 0;
    for (auto& c : batch.candidates) {
        if (statusOf(c, batch) != PayStubBatchStatus::ready) continue;
        try {
            confirmed_pay_stubs::confirm(context, confirmedRecord(*c.review, now), false);
        } catch (const ConfirmedPayStubError& error) {  // confirmed elsewhere while the files were read
            throw ConfirmedPayStubError(c.filename + ": " + error.what());
        }
        c.confirmed = true;
        ++count;
    }
    return count;
}

PayStubBatchStatus statusOf(const PayStubBatchCandidate& c, const PayStubBatchSession& batch) {
    using S = PayStubBatchStatus;
    if (c.confirmed) return S::confirmed;
    if (c.failure) return S::failed;
    if (c.duplicateFile) return S::duplicate;
    if (!c.review) return S::processing;
    const auto& r = *c.review;
    if (!r.selectedCrewMemberID) return S::noMatch;
    if (batch.existingCrewIDs.contains(*r.selectedCrewMemberID) && !r.isExistingAuthority) return S::existing;
    if (!periodMatchesWeek(r) && !r.weekMismatchAcknowledged) return S::wrongPeriod;
    if (r.crewReviewReason) return S::name;
    if (!valueReviewReasons(r).empty() || !unresolvedItems(r).empty()) return S::earnings;
    return S::ready;
}

std::vector<std::string> reviewReasons(const PayStubBatchCandidate& c, const PayStubBatchSession&) {
    if (c.failure) return {*c.failure};
    if (c.duplicateFile) return {std::string(pay_stub_import_words::alreadyInBatch)};
    if (!c.review) return {};
    const auto& r = *c.review;
    std::vector<std::string> reasons;
    if (r.crewReviewReason) reasons.push_back(*r.crewReviewReason);
    for (auto& problem : periodProblems(r)) reasons.push_back(std::move(problem));
    for (auto& reason : valueReviewReasons(r)) reasons.push_back(std::move(reason));
    return reasons;
}

}  // namespace tessel

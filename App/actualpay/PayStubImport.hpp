#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/actualpay/PayStubReview.hpp"
#include "App/model/PersistenceModels.hpp"

// A batch of pay-stub PDFs imported for one Payroll Week: each read, interpreted and matched to a crew
// member, and given the status that says whether it is ready to confirm or what needs a look.
namespace tessel {

enum class PayStubBatchStatus { processing, ready, name, earnings, wrongPeriod, noMatch, existing, duplicate, failed, confirmed };
std::string_view toRawValue(PayStubBatchStatus status) noexcept;
// "Processing", "Ready", "Review Name Match", "Review Earnings", "Wrong Pay Period", "No Crew Match",
// "Already Confirmed", "Duplicate in Batch", "Failed", "Confirmed".
std::string_view label(PayStubBatchStatus status) noexcept;

namespace pay_stub_import_words {
inline constexpr std::string_view noPDFsInFolder = "No PDF files were found in the selected folder.";
inline constexpr std::string_view alreadyInBatch = "This PDF was already included in this batch.";
inline constexpr std::string_view unreadable = "The PDF could not be read.";
}  // namespace pay_stub_import_words

class PayStubImportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct PayStubBatchInput {
    std::string filename;
    std::optional<std::string> data;     // the file's bytes
    std::optional<std::string> failure;  // the file could not be read
};

// The chosen files, a folder standing for its PDF files (named *.pdf in any case, in name order, not
// looking into subfolders). A folder without any is refused.
std::vector<PayStubBatchInput> batchInputs(const std::vector<std::filesystem::path>& paths);

struct PayStubBatchCandidate {
    std::string id;
    std::string filename;
    std::optional<PayStubReviewSession> review;
    std::optional<std::string> failure;
    bool duplicateFile = false;  // the same bytes came earlier in the batch, whatever the name
    bool confirmed = false;
};

struct PayStubBatchSession {
    PayStubWeek week;
    std::vector<PayStubCrewOption> crew;
    std::vector<PayStubBatchCandidate> candidates;
    std::set<Uuid> existingCrewIDs;  // crew members whose stub for the week is already confirmed
    bool processing = false;
    std::size_t processed = 0;
    std::optional<std::string> message;  // about the batch as a whole
};

// What an import for one Payroll Week needs from the store, gathered in one short read so that reading
// the files (which can take minutes of OCR) holds no lock: the week, the production's crew (each marked
// when they have rows on the week's DTS) and who already has a confirmed stub for it. Refused with
// "Add Production crew before importing pay stubs." when there is no crew.
struct PayStubImportSetting {
    PayStubWeek week;
    std::vector<PayStubCrewOption> crew;
    std::set<Uuid> existing;
};
PayStubImportSetting importSetting(ModelContext& context, const Uuid& productionID, const PayrollWeek& week);

struct PayStubBatchOptions {
    PayStubTextSource embedded = PayStubTextSource::embeddedPDFText;
    int workers = 2;
    Instant importedAt;
};

// Reads every input on `workers` threads (a duplicate is not read again), reporting each file to
// `progress` in file order with the count done, then matches crew across the batch: files proposing one
// person all say so, and most stubs sharing another period than the week's gives the batch message.
PayStubBatchSession importBatch(const std::vector<PayStubBatchInput>& inputs, const PayStubWeek& week, std::vector<PayStubCrewOption> crew,
                                std::set<Uuid> existingCrewIDs, const PayStubBatchOptions& options,
                                const std::function<void(std::size_t done, std::size_t total)>& progress = {});

// Confirms every ready candidate in the caller's transaction and marks it confirmed; throws
// ConfirmedPayStubError, prefixed with the file's name, when a stub was confirmed elsewhere meanwhile.
int confirmReady(ModelContext& context, PayStubBatchSession& batch, Instant now);

// Tested in this order: confirmed, failed, duplicate, processing, no crew member, already confirmed for
// the person, a period other than the week's not acknowledged, a crew-match reason, any value with a
// review reason or failing validation; else ready. Only ready candidates are confirmed in bulk.
PayStubBatchStatus statusOf(const PayStubBatchCandidate& candidate, const PayStubBatchSession& batch);

// The reasons a candidate shows, crew first, then the period's problems and every value's reason.
std::vector<std::string> reviewReasons(const PayStubBatchCandidate& candidate, const PayStubBatchSession& batch);

}  // namespace tessel

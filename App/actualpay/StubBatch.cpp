#include "StubBatch.hpp"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "App/actualpay/StubOcr.hpp"

namespace tessel::stub_batch {
namespace {

Outcome readOne(const StubFile& file, PayStubTextSource embedded, StubOcrEngine& engine) {
    try {
        auto text = extractTextLayer(file.bytes, embedded);
        auto ocr = engine.read(file.bytes);
        return interpretEPStub(std::move(text), std::move(ocr));
    } catch (const PayStubExtractionError& error) {
        return std::string(error.what());
    } catch (const EPPayStubInterpretationError& error) {
        return std::string(error.what());
    }
}

}  // namespace

std::vector<Outcome> read(const std::vector<StubFile>& files, PayStubTextSource embedded, int workers,
                          const std::function<void(std::size_t, const Outcome&)>& progress) {
    std::vector<std::optional<Outcome>> outcomes(files.size());
    std::atomic<std::size_t> next{0};
    std::mutex lock;
    std::condition_variable finished;
    const auto work = [&] {
        StubOcrEngine engine;  // one per worker, reused for each file it takes
        for (std::size_t index = next++; index < files.size(); index = next++) {
            Outcome outcome = readOne(files[index], embedded, engine);
            const std::lock_guard guard(lock);
            outcomes[index] = std::move(outcome);
            finished.notify_one();
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < std::clamp(workers, 1, 16); ++i) threads.emplace_back(work);
    // Report in file order as each next file is done.
    for (std::size_t reported = 0; reported < files.size(); ++reported) {
        std::unique_lock guard(lock);
        finished.wait(guard, [&] { return outcomes[reported].has_value(); });
        if (progress) {
            const Outcome& outcome = *outcomes[reported];
            guard.unlock();
            progress(reported + 1, outcome);
        }
    }
    threads.clear();
    std::vector<Outcome> result;
    result.reserve(files.size());
    for (auto& outcome : outcomes) result.push_back(std::move(*outcome));
    return result;
}

}  // namespace tessel::stub_batch

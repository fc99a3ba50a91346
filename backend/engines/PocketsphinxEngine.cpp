// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/PocketsphinxEngine.h"

#include "engines/Pauses.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace lorvane::backend {

namespace {

constexpr double leastSpeechSeconds = 0.3;
// A mean over less than this says more about the words than about the voice.
constexpr double leastSecondsToLearn = 1.0;

std::string bytesOf(const CepstralMean& mean) {
    return {reinterpret_cast<const char*>(mean.data()), sizeof(float) * mean.size()};
}

std::optional<CepstralMean> meanOf(const std::string& bytes) {
    CepstralMean mean{};
    if (bytes.size() != sizeof(float) * mean.size())
        return std::nullopt;
    std::memcpy(mean.data(), bytes.data(), bytes.size());
    for (const float value : mean)
        if (!std::isfinite(value))
            return std::nullopt;
    return mean;
}

} // namespace

// A decoder that goes back to the pool with its borrower. One that was stopped in the middle goes back too:
// the next take sets its mean and begins a new utterance.
class PocketsphinxEngine::Loan {
 public:
    Loan(PocketsphinxEngine& engine, const std::stop_token& stop)
        : engine_(engine), decoder_(engine.borrow(stop)) {}
    ~Loan() {
        if (decoder_)
            engine_.giveBack(std::move(decoder_));
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    SphinxDecoder* get() const { return decoder_.get(); }

 private:
    PocketsphinxEngine& engine_;
    std::unique_ptr<SphinxDecoder> decoder_;
};

PocketsphinxEngine::PocketsphinxEngine(std::filesystem::path models, std::size_t decoders)
    : models_(std::move(models)), unmade_(decoders) {}

PocketsphinxEngine::~PocketsphinxEngine() = default;

void PocketsphinxEngine::warmUp() { const Loan loan(*this, {}); }

std::unique_ptr<SphinxDecoder> PocketsphinxEngine::borrow(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    if (!free_.wait(lock, stop, [this] { return !idle_.empty() || unmade_ > 0; }))
        return nullptr;
    if (!idle_.empty()) {
        auto decoder = std::move(idle_.back());
        idle_.pop_back();
        return decoder;
    }
    --unmade_;
    lock.unlock();
    try {
        return std::make_unique<SphinxDecoder>(models_);
    } catch (...) {
        lock.lock();
        ++unmade_;
        free_.notify_one();
        throw;
    }
}

void PocketsphinxEngine::giveBack(std::unique_ptr<SphinxDecoder> decoder) {
    {
        const std::lock_guard lock(mutex_);
        idle_.push_back(std::move(decoder));
    }
    free_.notify_one();
}

Recognition PocketsphinxEngine::recognise(const RecognitionJob& job, const OnSegment& onSegment,
                                          std::stop_token stop) try {
    const Loan loan(*this, stop);
    if (!loan.get())
        return {Recognition::End::stopped, {}, {}};
    auto& decoder = *loan.get();
    const auto voice = decoder.measure(job.samples, stop);
    if (!voice)
        return {Recognition::End::stopped, {}, {}};
    if (voice->speechSeconds < leastSpeechSeconds)
        return {Recognition::End::noSpeech, {}, {}};
    decoder.setMean(meanOf(job.adaptation).value_or(voice->mean));
    bool heard = job.segmentsKnown > 0;
    const auto segments = cutAtPauses(job.samples);
    for (std::size_t i = job.segmentsKnown; i < segments.size(); ++i) {
        const auto& cut = segments[i];
        auto text = decoder.decode(job.samples.subspan(cut.begin, cut.end - cut.begin), stop);
        if (!text)
            return {Recognition::End::stopped, {}, {}};
        heard = heard || !text->empty();
        onSegment({std::move(*text), cut.pause, true});
    }
    if (!heard)
        return {Recognition::End::noSpeech, {}, {}};
    const bool learn = voice->speechSeconds >= leastSecondsToLearn;
    return {Recognition::End::complete, learn ? bytesOf(decoder.mean()) : std::string(), {}};
} catch (const std::exception& error) {
    return {Recognition::End::failed, {}, error.what()};
}

} // namespace lorvane::backend

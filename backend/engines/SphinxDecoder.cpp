// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SphinxDecoder.h"

#include <mutex>
#include <pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fe.h>
#include <stdexcept>
#include <vector>

namespace lorvane::backend {

namespace {

constexpr std::size_t chunk = sampleRate / 10;

// The library writes its log, words heard included, to the standard error stream unless told otherwise.
void silenceLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { err_set_logfp(nullptr); });
}

cmd_ln_t* configuration(const std::filesystem::path& models) {
    const auto acoustic = (models / "en-us").string();
    const auto language = (models / "en-us.lm.bin").string();
    const auto words = (models / "cmudict-en-us.dict").string();
    // The language weight and insertion penalty are the best of a sweep over recorded speech. The limit of
    // models looked at for a frame takes back the time that they cost, for one word in five hundred. Every
    // other setting stays as the model has it, since none gained anything.
    return cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustic.c_str(), "-lm", language.c_str(), "-dict",
                       words.c_str(), "-lw", "5", "-wip", "0.2", "-maxhmmpf", "3000", nullptr);
}

// The library loads its models with shared tables behind it: one at a time.
ps_decoder_t* loadDecoder(const std::filesystem::path& models) {
    static std::mutex loading;
    const std::lock_guard lock(loading);
    silenceLibrary();
    cmd_ln_t* config = configuration(models);
    ps_decoder_t* decoder = config ? ps_init(config) : nullptr;
    cmd_ln_free_r(config);
    if (!decoder)
        throw std::runtime_error("no speech model in " + models.string());
    return decoder;
}

class MeanOfFrames {
 public:
    void add(const float* values, int frames) {
        for (int f = 0; f < frames; ++f)
            for (std::size_t i = 0; i < sums_.size(); ++i)
                sums_[i] += values[static_cast<std::size_t>(f) * sums_.size() + i];
        count_ += frames;
    }
    VoiceMeasure result() const {
        VoiceMeasure measure{count_ / 100.0, {}};
        for (std::size_t i = 0; i < sums_.size() && count_ > 0; ++i)
            measure.mean[i] = static_cast<float>(sums_[i] / count_);
        return measure;
    }

 private:
    std::array<double, 13> sums_{};
    int count_ = 0;
};

} // namespace

void SphinxDecoder::FreeDecoder::operator()(ps_decoder_s* decoder) const { ps_free(decoder); }
void SphinxDecoder::FreeFrontEnd::operator()(fe_s* frontEnd) const { fe_free(frontEnd); }

SphinxDecoder::SphinxDecoder(const std::filesystem::path& models)
    : decoder_(loadDecoder(models)), frontEnd_(fe_init_auto_r(ps_get_config(decoder_.get()))) {
    if (!frontEnd_ || fe_get_output_size(frontEnd_.get()) != static_cast<int>(CepstralMean().size()))
        throw std::runtime_error("the speech model in " + models.string() + " is of another kind");
}

SphinxDecoder::~SphinxDecoder() = default;

std::optional<VoiceMeasure> SphinxDecoder::measure(Samples samples, const std::stop_token& stop) {
    constexpr std::size_t width = CepstralMean().size();
    constexpr int room = 512;
    std::vector<float> buffer(width * room);
    std::vector<float*> rows(room);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = buffer.data() + i * width;
    MeanOfFrames mean;
    fe_start_stream(frontEnd_.get());
    fe_start_utt(frontEnd_.get());
    for (std::size_t at = 0; at < samples.size(); at += chunk * 10) {
        if (stop.stop_requested())
            return std::nullopt;
        const auto part = samples.subspan(at, std::min(chunk * 10, samples.size() - at));
        const std::int16_t* from = part.data();
        std::size_t left = part.size();
        while (left > 0) {
            const auto before = left;
            int32 frames = room;
            int32 first = 0;
            fe_process_frames(frontEnd_.get(), &from, &left, rows.data(), &frames, &first);
            mean.add(buffer.data(), frames);
            if (frames == 0 && left == before)
                break;
        }
    }
    int32 last = 0;
    fe_end_utt(frontEnd_.get(), rows[0], &last);
    mean.add(buffer.data(), last);
    return mean.result();
}

void SphinxDecoder::setMean(const CepstralMean& mean) {
    cmn_live_set(ps_get_feat(decoder_.get())->cmn_struct, mean.data());
}

CepstralMean SphinxDecoder::mean() const {
    CepstralMean mean{};
    cmn_live_get(ps_get_feat(decoder_.get())->cmn_struct, mean.data());
    return mean;
}

std::optional<std::string> SphinxDecoder::decode(Samples segment, const std::stop_token& stop) {
    auto* decoder = decoder_.get();
    ps_start_stream(decoder);
    if (ps_start_utt(decoder) < 0)
        throw std::runtime_error("the recogniser did not start");
    for (std::size_t at = 0; at < segment.size() && !stop.stop_requested(); at += chunk) {
        const auto part = segment.subspan(at, std::min(chunk, segment.size() - at));
        ps_process_raw(decoder, part.data(), part.size(), FALSE, FALSE);
    }
    const bool stopped = stop.stop_requested();
    const int ended = ps_end_utt(decoder);
    if (stopped)
        return std::nullopt;
    const char* text = ended < 0 ? nullptr : ps_get_hyp(decoder, nullptr);
    return std::string(text ? text : "");
}

} // namespace lorvane::backend

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct ps_decoder_s;
struct fe_s;

namespace lorvane::backend {

// The model's cepstral mean: thirteen values that tell voice and microphone.
using CepstralMean = std::array<float, 13>;

struct VoiceMeasure {
    double speechSeconds = 0; // as the recogniser's own voice detection hears it
    CepstralMean mean{};      // over those; meaningless without speech
};

// One pocketsphinx decoder, about 90 MB. One thread at a time. Nothing is shared between decoders.
class SphinxDecoder {
 public:
    // `models` holds en-us/, en-us.lm.bin and cmudict-en-us.dict. Takes about 0.2 s. Throws
    // std::runtime_error.
    explicit SphinxDecoder(const std::filesystem::path& models);
    ~SphinxDecoder();

    // A pass over the front end alone, about a hundredth of real time. Nothing when it was stopped.
    std::optional<VoiceMeasure> measure(Samples samples, const std::stop_token& stop);

    void setMean(const CepstralMean& mean);
    CepstralMean mean() const;

    // All passes over one segment. Nothing when it was stopped; the stop is looked at every 100 ms of sound,
    // and not during the last passes.
    std::optional<std::string> decode(Samples segment, const std::stop_token& stop);

 private:
    struct FreeDecoder {
        void operator()(ps_decoder_s* decoder) const;
    };
    struct FreeFrontEnd {
        void operator()(fe_s* frontEnd) const;
    };
    std::unique_ptr<ps_decoder_s, FreeDecoder> decoder_;
    std::unique_ptr<fe_s, FreeFrontEnd> frontEnd_;
};

} // namespace lorvane::backend

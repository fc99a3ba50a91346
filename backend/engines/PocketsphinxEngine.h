// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"
#include "engines/SphinxDecoder.h"

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace lorvane::backend {

// Offline English. About one word in four is wrong on clean prompts: it shows that dictation works without
// any server, and no more. It streams a segment's text once that text is final; its partial results change
// too often to be shown.
class PocketsphinxEngine : public Engine {
 public:
    // At most `decoders` run at once; each is loaded when it is first needed.
    PocketsphinxEngine(std::filesystem::path models, std::size_t decoders);
    ~PocketsphinxEngine() override;

    std::string_view name() const override { return "pocketsphinx"; }
    bool speaks(std::string_view language) const override { return language.empty() || language == "en"; }
    void warmUp() override;
    Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                          std::stop_token stop) override;

 private:
    class Loan;
    std::unique_ptr<SphinxDecoder> borrow(const std::stop_token& stop);
    void giveBack(std::unique_ptr<SphinxDecoder> decoder);

    const std::filesystem::path models_;
    std::mutex mutex_;
    std::condition_variable_any free_;
    std::vector<std::unique_ptr<SphinxDecoder>> idle_;
    std::size_t unmade_;
};

} // namespace lorvane::backend

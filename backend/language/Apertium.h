// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

struct Translation {
    std::string text;   // empty when there is none
    std::string reason; // then: why, in words for people
};

// Translation by the pairs of apertium that are installed here and have passed a test: some of them crash on
// every text and say nothing. Rule-based: the sense comes over, the style does not. Any thread.
class Apertium {
 public:
    explicit Apertium(std::filesystem::path program) : program_(std::move(program)) {}

    // Finds the pairs and tries each on a sentence, up to 5 s each. Blocks.
    void findPairs(const std::stop_token& stop);

    // Codes as clients send them: "en", "pt-BR". Without a source, the one whose words are known best.
    bool speaks(std::string_view source, std::string_view target) const;
    // Blocks for up to 20 s, and 8 s more to find out the source.
    Translation translate(std::string_view text, std::string_view source, std::string_view target,
                          const std::stop_token& stop) const;

 private:
    struct Pair {
        std::string mode; // what apertium calls it
        std::string_view source;
        std::string_view target;
    };
    std::vector<Pair> pairsTo(std::string_view source, std::string_view target) const;
    std::string run(const std::string& mode, std::string_view text, bool mark, std::chrono::milliseconds time,
                    const std::stop_token& stop) const;
    bool passes(const Pair& pair, std::string_view sentence, const std::stop_token& stop) const;
    const Pair* likeliest(const std::vector<Pair>& pairs, std::string_view text,
                          const std::stop_token& stop) const;

    const std::filesystem::path program_;
    mutable std::mutex mutex_;
    bool looked_ = false;
    std::vector<Pair> pairs_;
};

} // namespace lorvane::backend

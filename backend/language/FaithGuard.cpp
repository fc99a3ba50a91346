// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/FaithGuard.h"

#include "language/Sentences.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

constexpr std::size_t shortText = 6;    // words
constexpr double sharedWhenShort = 0.5; // one word in two may be put right there
constexpr std::size_t someLength = 4;   // words; of fewer, one may be all that was meant

bool hasDigit(const std::string& word) {
    return std::any_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

// A style may ask for other words: "formal".
FaithGuard::Bounds FaithGuard::forCleanUp(bool styled) {
    Bounds bounds;
    if (styled)
        bounds.shared = 0.4;
    return bounds;
}

// No word need be the same; one word is several characters in some scripts.
FaithGuard::Bounds FaithGuard::forTranslation() { return {0, 4, 0.1, 20, 1}; }

FaithGuard::FaithGuard(std::string_view given, Bounds bounds) : bounds_(bounds) {
    for (auto& word : wordsIn(given)) {
        ++givenWords_;
        ++given_[std::move(word)];
    }
}

void FaithGuard::add(std::string_view piece) {
    for (const auto& word : wordsIn(piece)) {
        ++written_;
        if (hasDigit(word))
            continue;
        const auto found = given_.find(word);
        if (found == given_.end() || found->second == 0) {
            ++strange_;
            continue;
        }
        --found->second;
        ++shared_;
    }
}

bool FaithGuard::faithful() const {
    const auto compared = shared_ + strange_;
    const double least = compared < shortText ? std::min(bounds_.shared, sharedWhenShort) : bounds_.shared;
    if (static_cast<double>(shared_) < least * static_cast<double>(compared))
        return false;
    return static_cast<double>(written_) <=
           bounds_.growth * static_cast<double>(givenWords_) + static_cast<double>(bounds_.allowance);
}

bool FaithGuard::implausible() const { return written_ >= bounds_.firstLook && !faithful(); }

bool FaithGuard::complete() const {
    if (written_ == 0 || !faithful())
        return false;
    return givenWords_ < someLength ||
           static_cast<double>(written_) >= bounds_.shrinkage * static_cast<double>(givenWords_);
}

} // namespace lorvane::backend

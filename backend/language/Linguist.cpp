// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Linguist.h"

#include "language/Labels.h"
#include "language/Sentences.h"
#include "language/Summary.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

using std::chrono::milliseconds;

// Who has waited long for a failure gets what there is without a second round.
constexpr PoolTimes usual{milliseconds(10'000), milliseconds(200), milliseconds(5000)};
constexpr PoolTimes hurry{milliseconds(500), milliseconds(0), milliseconds(0)};

std::unique_ptr<ChatClient> clientOf(const std::vector<ChatServer>& servers, PoolTimes pool) {
    return servers.empty() ? nullptr : std::make_unique<ChatClient>(servers, pool);
}

} // namespace

Linguist::Linguist(const std::vector<ChatServer>& servers, const std::filesystem::path& apertium)
    : chat_(clientOf(servers, usual)), hurried_(clientOf(servers, hurry)),
      apertium_(apertium.empty() ? nullptr : std::make_unique<Apertium>(apertium)) {
    if (servers.empty())
        return;
    writer_.emplace(*chat_);
    coach_.emplace(*chat_);
    sorter_.emplace(*hurried_);
}

Linguist::~Linguist() = default;

void Linguist::prepare(const std::stop_token& stop) {
    if (apertium_)
        apertium_->findPairs(stop);
}

ServerFigures Linguist::figures() const {
    return chat_ ? chat_->figures() + hurried_->figures() : ServerFigures();
}

std::optional<Insights> Linguist::insights(const std::vector<std::string>& samples,
                                           const std::stop_token& stop) const {
    auto counted = insightsOf(samples);
    if (counted && coach_)
        if (auto thought = coach_->insights(samples, stop))
            return thought;
    return counted;
}

std::string Linguist::summary(const std::vector<std::string>& texts, std::string_view period,
                              const std::stop_token& stop) const {
    const bool words =
        std::any_of(texts.begin(), texts.end(), [](const auto& text) { return wordCount(text) > 0; });
    if (words && coach_)
        if (auto told = coach_->summary(texts, period, stop))
            return *told;
    return summaryOf(texts);
}

std::string Linguist::label(std::string_view text, const std::stop_token& stop) const {
    if (sorter_)
        if (auto label = sorter_->label(text, stop))
            return *label;
    return std::string(labelByKeywords(text));
}

bool Linguist::translates(std::string_view source, std::string_view target) const {
    if (languageName(target).empty())
        return false;
    return chat_ || (apertium_ && apertium_->speaks(source, target));
}

Translation Linguist::translate(std::string_view text, std::string_view source, std::string_view target,
                                const Writer::OnFragment& onFragment, const std::stop_token& stop) const {
    if (languageName(target).empty())
        return {{}, "the target is no language"};
    if (writer_) {
        auto written = writer_->translate(text, target, onFragment, stop);
        if (written.end == Written::End::done)
            return {std::move(written.text), {}};
        if (written.end == Written::End::stopped || written.shown)
            return {{}, "the language server failed"};
    }
    if (apertium_) {
        auto translation = apertium_->translate(text, source, target, stop);
        if (!translation.text.empty())
            onFragment(translation.text);
        return translation;
    }
    return {{},
            writer_ ? "the language server failed" : "this service has no translator: none is configured"};
}

} // namespace lorvane::backend

// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Coach.h"

#include "language/Answers.h"
#include "language/Prompt.h"
#include "util/Log.h"

namespace lorvane::backend {

namespace {

using std::chrono::seconds;

constexpr std::size_t longestMaterial = std::size_t(40)
                                        << 10; // bytes; more is left out, whole texts at a time
constexpr std::size_t longestAnswer = std::size_t(64) << 10;
constexpr std::size_t longestLabelled = 4000; // bytes: what a text is about is told at its beginning

constexpr std::string_view insightsTask = "You coach somebody in how they speak. MESSAGES are what they "
                                          "dictated lately, each after a line of dashes. "
                                          "Answer with one JSON object and nothing else: {\"summary\": two "
                                          "or three plain sentences, \"strengths\": up to "
                                          "four short texts, \"suggestions\": up to four objects {\"title\", "
                                          "\"detail\"}, \"resources\": up to three objects "
                                          "{\"title\", \"why\"} that name well-known books or exercises}. "
                                          "Say what is seen in these messages, kindly and "
                                          "concretely, in the language that most of them are in.";
constexpr std::string_view summaryTask = "You sum up what somebody dictated. TEXTS are their notes, oldest "
                                         "first, each after a line of dashes; PERIOD says "
                                         "where they are from. Answer with one JSON object and nothing else: "
                                         "{\"summary\": a warm, short recap in at most "
                                         "six sentences, addressed to them, in the language that most of the "
                                         "notes are in}. Tell only what is there.";
constexpr std::string_view labelTask = "You sort a dictated note. Answer with one JSON object and nothing "
                                       "else: {\"label\": one of \"work\", \"personal\", "
                                       "\"inspiration\", \"family\", \"ideas\", \"tasks\", or \"none\"}.";

// All of an answer, up to a bound.
class WholeAnswer : public ChatListener {
 public:
    void begin() override { text_.clear(); }
    bool hear(std::string_view text) override {
        text_ += text;
        return text_.size() <= longestAnswer;
    }
    const std::string& text() const { return text_; }

 private:
    std::string text_;
};

std::string together(const std::vector<std::string>& texts) {
    std::string all;
    for (const auto& text : texts) {
        if (all.size() + text.size() > longestMaterial)
            continue;
        all += "-----\n" + text + '\n';
    }
    return all;
}

std::string firstOf(std::string_view text, std::size_t most) {
    if (text.size() > most) {
        while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U)
            --most;
        text = text.substr(0, most);
    }
    return std::string(text);
}

template <class Read>
auto answered(ChatClient& chat, const Prompt& prompt, seconds whole, const Read& read,
              const std::stop_token& stop) -> decltype(read(std::string_view())) {
    WholeAnswer answer;
    ChatTimes times;
    times.whole = whole;
    times.answer = std::min<std::chrono::milliseconds>(times.answer, whole);
    const auto outcome = chat.complete(prompt.request, times, answer, stop);
    if (outcome.end == ChatOutcome::End::complete)
        if (auto result = read(answer.text()))
            return result;
    if (outcome.end != ChatOutcome::End::stopped)
        logLine("language server: " + (outcome.end == ChatOutcome::End::complete
                                           ? "not the JSON it was asked for"
                                           : outcome.reason));
    return std::nullopt;
}

} // namespace

// The client waits 60 s for these two.
std::optional<Insights> Coach::insights(const std::vector<std::string>& samples,
                                        const std::stop_token& stop) const {
    const auto prompt = promptOf(insightsTask, {{"MESSAGES", together(samples)}}, 1500);
    return answered(chat_, prompt, seconds(25), &readInsights, stop);
}

std::optional<std::string> Coach::summary(const std::vector<std::string>& texts, std::string_view period,
                                          const std::stop_token& stop) const {
    const auto prompt =
        promptOf(summaryTask, {{"PERIOD", std::string(period)}, {"TEXTS", together(texts)}}, 1000);
    return answered(chat_, prompt, seconds(25), &readSummary, stop);
}

// A take waits for it, and goes without it sooner than late.
std::optional<std::string> Coach::label(std::string_view text, const std::stop_token& stop) const {
    const auto prompt = promptOf(labelTask, {{"TEXT", firstOf(text, longestLabelled)}}, 64);
    return answered(chat_, prompt, seconds(3), &readLabel, stop);
}

} // namespace lorvane::backend

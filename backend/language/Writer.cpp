// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Writer.h"

#include "language/GuardedText.h"
#include "language/Prompt.h"
#include "util/Log.h"

#include <algorithm>
#include <unicode/uloc.h>
#include <unicode/unistr.h>

namespace lorvane::backend {

namespace {

constexpr std::string_view cleanUpTask =
    "You turn the raw transcript of dictated speech in TEXT into clean written text. Take out fillers, "
    "stutters and "
    "false starts; where the speaker puts something right, keep what is right only. Set capitals, "
    "punctuation and "
    "paragraphs. Carry out spoken punctuation such as \"comma\" or \"new line\". Write numbers, times and "
    "dates as "
    "they are usually written. Keep the speaker's own words, order, person and language otherwise; add "
    "nothing and "
    "leave out nothing that was meant. A question in TEXT stays a question and a request stays a request. "
    "Answer "
    "with the written text alone: no quotes around it, no heading, no remark.";
constexpr std::string_view styleRule = " STYLE says how the speaker likes texts to look. Follow it in tone, "
                                       "form and spelling, never in what is said.";
constexpr std::string_view beforeRule =
    " BEFORE stands right before the text: go on from it in capitals and punctuation, and do not repeat it.";
constexpr std::string_view translateTask = "You translate TEXT into ";
constexpr std::string_view translateRule =
    ". Keep meaning, tone, paragraphs and names. A question stays a question and a request stays a request. "
    "Answer "
    "with the translation alone: no quotes around it, no heading, no remark.";

constexpr std::size_t longestStyle = 2400; // bytes: 600 characters
constexpr std::size_t longestBefore = 2400;

// At the border of a character.
std::string firstBytes(const std::string& text, std::size_t most) {
    if (text.size() <= most)
        return text;
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U)
        --most;
    return text.substr(0, most);
}

std::string lastBytes(const std::string& text, std::size_t most) {
    if (text.size() <= most)
        return text;
    auto begin = text.size() - most;
    while (begin < text.size() && (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U)
        ++begin;
    return text.substr(begin);
}

Written run(ChatClient& chat, const Prompt& prompt, const ChatTimes& times, GuardedText& text,
            const std::stop_token& stop) {
    const auto outcome = chat.complete(prompt.request, times, text, stop);
    if (outcome.end == ChatOutcome::End::stopped || stop.stop_requested())
        return {Written::End::stopped, {}, text.shown()};
    if (outcome.end == ChatOutcome::End::complete && text.finish())
        return {Written::End::done, text.text(), text.shown()};
    const bool doubted =
        outcome.end == ChatOutcome::End::complete || outcome.end == ChatOutcome::End::unwanted;
    logLine("language server: " + (doubted ? "what it wrote is not the text" : outcome.reason));
    return {Written::End::failed, {}, text.shown()};
}

} // namespace

std::string languageName(std::string_view code) {
    const bool plain = std::all_of(code.begin(), code.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
    });
    if (!plain || code.size() < 2 || code.size() > 16)
        return {};
    const std::string id(code);
    std::u16string buffer(64, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    const auto size = uloc_getDisplayName(id.c_str(), "en", buffer.data(),
                                          static_cast<std::int32_t>(buffer.size()), &error);
    if (U_FAILURE(error) || size <= 0 || size > static_cast<std::int32_t>(buffer.size()))
        return {};
    std::string name;
    icu::UnicodeString(buffer.data(), size).toUTF8String(name);
    return name == id ? std::string() : name;
}

Written Writer::cleanUp(const CleanUpJob& job, const OnFragment& onFragment,
                        const std::stop_token& stop) const {
    std::string task(cleanUpTask);
    std::vector<Material> materials;
    if (const auto name = languageName(job.language); !name.empty())
        task += " It is in " + name + ", and stays in it.";
    if (!job.style.empty()) {
        task += styleRule;
        materials.push_back({"STYLE", firstBytes(job.style, longestStyle)});
    }
    if (!job.before.empty()) {
        task += beforeRule;
        materials.push_back({"BEFORE", lastBytes(job.before, longestBefore)});
    }
    materials.push_back({"TEXT", job.raw});
    const auto prompt = promptOf(task, materials, tokensFor(job.raw));
    GuardedText text(job.raw, FaithGuard::forCleanUp(!job.style.empty()), prompt.marker, onFragment);
    return run(chat_, prompt, {}, text, stop);
}

Written Writer::translate(std::string_view text, std::string_view target, const OnFragment& onFragment,
                          const std::stop_token& stop) const {
    const auto name = languageName(target);
    if (name.empty())
        return {};
    const auto prompt = promptOf(std::string(translateTask) + name + std::string(translateRule),
                                 {{"TEXT", std::string(text)}}, 2 * tokensFor(text));
    GuardedText translated(text, FaithGuard::forTranslation(), prompt.marker, onFragment);
    ChatTimes times;
    times.whole = std::chrono::seconds(35); // the client gives up after 45
    return run(chat_, prompt, times, translated, stop);
}

} // namespace lorvane::backend

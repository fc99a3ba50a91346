// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/CleanUp.h"

#include "engines/SpokenMarks.h"
#include "engines/SpokenNumbers.h"

#include <algorithm>
#include <span>

namespace lorvane::backend {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t wordsThatMakeASentence = 3;
constexpr std::size_t wordsThatMakeAPart = 2;
constexpr milliseconds pauseOfSentence{1500};
constexpr milliseconds pauseOfPart{800};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string lowered(std::string_view word) {
    std::string out(word);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::string capitalised(const std::string& word) {
    std::string out = word;
    if (!out.empty() && out[0] >= 'a' && out[0] <= 'z')
        out[0] = static_cast<char>(out[0] - 'a' + 'A');
    return out;
}

bool endsSentence(std::string_view word) {
    return word.ends_with('.') || word.ends_with('!') || word.ends_with('?') || word.ends_with("…");
}

// Whether what comes after the text begins a sentence.
bool endsText(std::string_view text) {
    if (text.ends_with('\n'))
        return true;
    const auto last = text.find_last_not_of(" \t\r\n\"')]");
    return last == std::string_view::npos || endsSentence(text.substr(0, last + 1));
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : text) {
        if (!isBlank(c)) {
            word += c;
        } else if (!word.empty()) {
            words.push_back(std::move(word));
            word.clear();
        }
    }
    if (!word.empty())
        words.push_back(std::move(word));
    return words;
}

} // namespace

CleanUp::CleanUp(std::string_view before, std::string_view style)
    : wish_(readStyle(style)), sentenceStart_(endsText(before)) {}

std::string CleanUp::add(std::string_view raw, milliseconds pause) {
    pause_ = std::max(pause_, pause);
    for (auto& word : wordsOf(raw)) {
        auto lower = lowered(word);
        if (isFiller(lower))
            continue;
        held_.push_back({std::move(word), pause_});
        lower_.push_back(std::move(lower));
        pause_ = {};
    }
    return settle(false);
}

std::string CleanUp::finish() {
    auto out = settle(true);
    if (!empty_ && !closed_ && words_ >= wordsThatMakeASentence && !wish_.noLastStop)
        writeMark(".", out);
    return out;
}

std::string CleanUp::settle(bool final) {
    std::string out;
    std::size_t at = 0;
    while (at < held_.size()) {
        const auto taken = take(at, final, out);
        if (taken == 0)
            break;
        at += taken;
    }
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(at));
    lower_.erase(lower_.begin(), lower_.begin() + static_cast<std::ptrdiff_t>(at));
    return out;
}

// Writes what begins at that word and says how many words it was; none when more has to be known.
std::size_t CleanUp::take(std::size_t at, bool final, std::string& out) {
    const bool last = at + 1 == held_.size();
    if (last && !final && mayBeginMark(lower_[at]))
        return 0;
    const auto ahead = std::span(lower_).subspan(at, last ? 1 : 2);
    if (const SpokenMark* mark = namesWhatFollows(previous_) ? nullptr : spokenMark(ahead)) {
        writeMark(mark->written, out);
        return mark->second.empty() ? 1 : 2;
    }
    return takeNumber(at, final, out);
}

std::size_t CleanUp::takeNumber(std::size_t at, bool final, std::string& out) {
    const auto ahead = std::span(lower_).subspan(at);
    const auto number = wish_.numbersAsWords ? SpokenNumber{} : spokenNumber(ahead, previous_, final);
    switch (number.kind) {
    case SpokenNumber::Kind::unclear:
        return 0;
    case SpokenNumber::Kind::figures:
        writePause(held_[at].pause, out);
        writeWord(number.written, ahead[number.words - 1], out);
        return number.words;
    case SpokenNumber::Kind::words:
    case SpokenNumber::Kind::none:
        break;
    }
    const auto count = std::max<std::size_t>(number.words, 1);
    for (std::size_t i = 0; i < count; ++i)
        takeWord(at + i, out);
    return count;
}

void CleanUp::takeWord(std::size_t at, std::string& out) {
    const auto& held = held_[at];
    const auto& lower = lower_[at];
    if (lower == previous_ && isStutterable(lower))
        return;
    writePause(held.pause, out);
    const auto spelled = wish_.noContractions ? spelledOut(lower) : std::string_view();
    const auto proper = properForm(lower);
    const auto written = !spelled.empty() ? std::string(spelled)
                         : proper.empty() ? held.word
                                          : std::string(proper);
    writeWord(wish_.lowerCase ? lowered(written) : written, lower, out);
}

void CleanUp::writeWord(const std::string& written, std::string_view lower, std::string& out) {
    if (blankDue_)
        out += ' ';
    out += sentenceStart_ && !wish_.lowerCase ? capitalised(written) : written;
    ++words_;
    ++wordsSinceMark_;
    empty_ = false;
    blankDue_ = true;
    closed_ = endsSentence(written);
    sentenceStart_ = closed_;
    previous_ = closed_ ? std::string() : std::string(lower);
}

void CleanUp::writeMark(std::string_view mark, std::string& out) {
    const bool lineEnd = mark.starts_with('\n');
    // A mark with nothing before it would stand alone; a take begins with a word.
    if (empty_)
        return;
    if (lineEnd || !wish_.noMarks)
        out += mark;
    blankDue_ = !lineEnd;
    closed_ = true;
    if (lineEnd || endsSentence(mark))
        sentenceStart_ = true;
    previous_.clear();
    wordsSinceMark_ = 0;
}

// Nobody ends a sentence, or a part of it, in a word that leans on the next.
void CleanUp::writePause(milliseconds pause, std::string& out) {
    if (closed_ || previous_.empty() || leansOnNext(previous_))
        return;
    if (pause >= pauseOfSentence && wordsSinceMark_ >= wordsThatMakeASentence)
        writeMark(".", out);
    else if (pause >= pauseOfPart && wordsSinceMark_ >= wordsThatMakeAPart)
        writeMark(",", out);
}

} // namespace lorvane::backend

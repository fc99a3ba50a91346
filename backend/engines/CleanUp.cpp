// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/CleanUp.h"

#include "engines/SpokenMarks.h"

#include <span>

namespace lorvane::backend {

namespace {

constexpr std::size_t wordsThatMakeASentence = 3;

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

std::string CleanUp::add(std::string_view raw) {
    for (auto& word : wordsOf(raw))
        if (!isFiller(lowered(word)))
            held_.push_back(std::move(word));
    return settle(false);
}

std::string CleanUp::finish() {
    auto out = settle(true);
    if (!empty_ && !closed_ && words_ >= wordsThatMakeASentence)
        writeMark(".", out);
    return out;
}

std::string CleanUp::settle(bool final) {
    std::string out;
    std::size_t at = 0;
    while (at < held_.size()) {
        const bool last = at + 1 == held_.size();
        if (last && !final && mayBeginMark(lowered(held_[at])))
            break;
        at += take(at, out);
    }
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(at));
    return out;
}

// Writes what begins at that word and says how many words it was.
std::size_t CleanUp::take(std::size_t at, std::string& out) {
    std::vector<std::string> ahead{lowered(held_[at])};
    if (at + 1 < held_.size())
        ahead.push_back(lowered(held_[at + 1]));
    const SpokenMark* mark = namesWhatFollows(previous_) ? nullptr : spokenMark(ahead);
    if (!mark) {
        if (ahead[0] != previous_ || !isStutterable(ahead[0]))
            writeWord(held_[at], out);
        return 1;
    }
    writeMark(mark->written, out);
    return mark->second.empty() ? 1 : 2;
}

void CleanUp::writeWord(const std::string& word, std::string& out) {
    const auto lower = lowered(word);
    const auto proper = properForm(lower);
    std::string written = proper.empty() ? word : std::string(proper);
    if (sentenceStart_)
        written = capitalised(written);
    if (blankDue_)
        out += ' ';
    out += written;
    ++words_;
    empty_ = false;
    blankDue_ = true;
    closed_ = endsSentence(word);
    sentenceStart_ = closed_;
    previous_ = closed_ ? std::string() : lower;
}

void CleanUp::writeMark(std::string_view mark, std::string& out) {
    const bool lineEnd = mark.starts_with('\n');
    // A mark with nothing before it would stand alone; a take begins with a word.
    if (empty_)
        return;
    out += mark;
    blankDue_ = !lineEnd;
    closed_ = true;
    if (lineEnd || endsSentence(mark))
        sentenceStart_ = true;
    previous_.clear();
}

} // namespace lorvane::backend

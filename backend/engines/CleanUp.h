// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/StyleWish.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// Raw words to written English by rules, as they come: fillers and stutters out, spoken punctuation and line
// ends in, numbers in figures, marks where the speaker pauses, sentence case, a full stop at the end of
// anything longer than two words. What add() and finish() return, in order, concatenates to the whole text:
// nothing is taken back, so a word whose writing hangs on what follows ("question" of "question mark",
// "twenty" of "twenty five") is held until that is known. A fragment carries its own leading blank.
class CleanUp {
 public:
    // `before` stands before the text: after anything but the end of a sentence it goes on in small letters.
    // `style`: see readStyle().
    explicit CleanUp(std::string_view before = {}, std::string_view style = {});

    // `pause`: the silence before it.
    std::string add(std::string_view raw, std::chrono::milliseconds pause = {});
    std::string finish();

 private:
    struct Held {
        std::string word;
        std::chrono::milliseconds pause{0}; // before it
    };

    std::string settle(bool final);
    std::size_t take(std::size_t at, bool final, std::string& out);
    std::size_t takeNumber(std::size_t at, bool final, std::string& out);
    void takeWord(std::size_t at, std::string& out);
    void writeWord(const std::string& written, std::string_view lower, std::string& out);
    void writeMark(std::string_view mark, std::string& out);
    void writePause(std::chrono::milliseconds pause, std::string& out);

    const StyleWish wish_;
    std::vector<Held> held_;
    std::vector<std::string> lower_;     // the same words in small letters
    std::chrono::milliseconds pause_{0}; // before the next word that is kept
    std::string previous_;               // the word before, in lower case; empty after a mark
    std::size_t words_ = 0;
    std::size_t wordsSinceMark_ = 0;
    bool empty_ = true;
    bool sentenceStart_ = true;
    bool blankDue_ = false;
    bool closed_ = false; // ends in a mark that needs no full stop
};

} // namespace lorvane::backend

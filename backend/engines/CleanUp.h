// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// Raw words to written English by rules, as they come: fillers and stutters out, spoken punctuation and line
// ends in, sentence case, a full stop at the end of anything longer than two words. What add() and finish()
// return, in order, concatenates to the whole text: nothing is taken back, so a word that could still begin a
// spoken mark
// ("question" of "question mark") is held until the next one is known. A fragment carries its own leading
// blank.
class CleanUp {
 public:
    std::string add(std::string_view raw);
    std::string finish();

 private:
    std::string settle(bool final);
    std::size_t take(std::size_t at, std::string& out);
    void writeWord(const std::string& word, std::string& out);
    void writeMark(std::string_view mark, std::string& out);

    std::vector<std::string> held_;
    std::string previous_; // the word before, in lower case; empty after a mark
    std::size_t words_ = 0;
    bool empty_ = true;
    bool sentenceStart_ = true;
    bool blankDue_ = false;
    bool closed_ = false; // ends in a mark that needs no full stop
};

} // namespace lorvane::backend

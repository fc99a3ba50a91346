// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace lorvane::backend {

// Watches whether what a model writes is still the text that it was given: most of its words come from there,
// and there are neither many more nor far fewer. Numbers count neither way, since figures stand for words.
// One thread.
class FaithGuard {
 public:
    struct Bounds {
        double shared = 0.6;       // of the words written, at least; less for very short texts
        double growth = 1.3;       // words written for one given, at most
        double shrinkage = 0.3;    // at least, in texts of some length
        std::size_t allowance = 5; // words more than that
        std::size_t firstLook = 8; // words written before anything is said about them
    };
    static Bounds forCleanUp(bool styled);
    static Bounds forTranslation();

    FaithGuard(std::string_view given, Bounds bounds);

    void add(std::string_view piece); // whole words
    // Enough was seen, and it looks right so far.
    bool plausible() const { return written_ >= bounds_.firstLook && faithful(); }
    // Enough was seen to say no, whatever follows.
    bool implausible() const;
    // All of it was seen.
    bool complete() const;

 private:
    bool faithful() const;

    const Bounds bounds_;
    std::map<std::string, std::size_t> given_; // not written yet
    std::size_t givenWords_ = 0;
    std::size_t written_ = 0;
    std::size_t shared_ = 0;
    std::size_t strange_ = 0;
};

} // namespace lorvane::backend

// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Sentences.h"

#include <memory>
#include <set>
#include <stdexcept>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>

namespace lorvane::backend {

namespace {

constexpr UChar32 firstIdeograph = 0x2E80;

using Breaks = std::unique_ptr<icu::BreakIterator>;

Breaks breaks(icu::BreakIterator* (*make)(const icu::Locale&, UErrorCode&)) {
    UErrorCode error = U_ZERO_ERROR;
    Breaks made(make(icu::Locale::getRoot(), error));
    if (U_FAILURE(error) || !made)
        throw std::runtime_error(std::string("no break rules: ") + u_errorName(error));
    return made;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::vector<std::string> wordsOf(icu::BreakIterator& iterator, const icu::UnicodeString& text) {
    std::vector<std::string> words;
    iterator.setText(text);
    for (auto start = iterator.first(), end = iterator.next(); end != icu::BreakIterator::DONE;
         start = end, end = iterator.next()) {
        if (iterator.getRuleStatus() == UBRK_WORD_NONE)
            continue;
        auto word = text.tempSubStringBetween(start, end).toLower(icu::Locale::getRoot());
        words.push_back(utf8(word.findAndReplace(u"\u2019", u"'")));
    }
    return words;
}

} // namespace

std::vector<Sentence> sentencesOf(std::string_view text) {
    const auto sentenceBreaks = breaks(&icu::BreakIterator::createSentenceInstance);
    const auto wordBreaks = breaks(&icu::BreakIterator::createWordInstance);
    const auto all = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    std::vector<Sentence> sentences;
    sentenceBreaks->setText(all);
    for (auto start = sentenceBreaks->first(), end = sentenceBreaks->next(); end != icu::BreakIterator::DONE;
         start = end, end = sentenceBreaks->next()) {
        icu::UnicodeString sentence(all, start, end - start);
        sentence.trim();
        auto words = wordsOf(*wordBreaks, sentence);
        if (!words.empty())
            sentences.push_back({utf8(sentence), std::move(words)});
    }
    return sentences;
}

std::vector<std::string> wordsIn(std::string_view text) {
    const auto wordBreaks = breaks(&icu::BreakIterator::createWordInstance);
    const auto all = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    std::vector<std::string> words;
    for (auto& word : wordsOf(*wordBreaks, all)) {
        const auto letters = icu::UnicodeString::fromUTF8(word);
        if (letters.isEmpty() || letters.char32At(0) < firstIdeograph) {
            words.push_back(std::move(word));
            continue;
        }
        for (std::int32_t at = 0; at < letters.length(); at = letters.moveIndex32(at, 1))
            words.push_back(utf8(icu::UnicodeString(letters.char32At(at))));
    }
    return words;
}

std::size_t wordCount(std::string_view text) {
    std::size_t count = 0;
    for (const auto& sentence : sentencesOf(text))
        count += sentence.words.size();
    return count;
}

bool isSmallWord(std::string_view word) {
    static const std::set<std::string_view> words{
        "a",     "about", "after", "all",  "also",  "am",    "an",    "and",   "any",  "are",  "as",
        "at",    "be",    "been",  "but",  "by",    "can",   "could", "did",   "do",   "does", "for",
        "from",  "get",   "go",    "got",  "had",   "has",   "have",  "he",    "her",  "here", "him",
        "his",   "how",   "i",     "i'll", "i'm",   "if",    "in",    "into",  "is",   "it",   "it's",
        "its",   "just",  "let",   "me",   "more",  "my",    "no",    "not",   "now",  "of",   "on",
        "one",   "or",    "our",   "out",  "over",  "she",   "so",    "some",  "than", "that", "that's",
        "the",   "their", "them",  "then", "there", "these", "they",  "this",  "to",   "too",  "up",
        "us",    "very",  "was",   "we",   "were",  "what",  "when",  "which", "who",  "will", "with",
        "would", "you",   "your",  "а",    "без",   "бы",    "был",   "была",  "было", "быть", "в",
        "вам",   "вас",   "во",    "вот",  "все",   "всё",   "вы",    "да",    "для",  "до",   "его",
        "ее",    "её",    "если",  "есть", "еще",   "ещё",   "же",    "за",    "и",    "из",   "или",
        "им",    "их",    "к",     "как",  "ко",    "когда", "кто",   "ли",    "мне",  "мы",   "на",
        "надо",  "нам",   "нас",   "не",   "нет",   "но",    "ну",    "о",     "об",   "он",   "она",
        "они",   "от",    "по",    "при",  "про",   "с",     "со",    "так",   "там",  "то",   "только",
        "тут",   "ты",    "у",     "уже",  "чем",   "что",   "чтобы", "это",   "этот", "я"};
    return words.contains(word);
}

} // namespace lorvane::backend

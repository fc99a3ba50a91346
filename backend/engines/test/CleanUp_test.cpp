// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/CleanUp.h"

#include <ctime>
#include <gtest/gtest.h>
#include <random>

using namespace lorvane::backend;

namespace {

std::string cleaned(const std::vector<std::string>& segments) {
    CleanUp cleanUp;
    std::string text;
    for (const auto& segment : segments)
        text += cleanUp.add(segment);
    return text + cleanUp.finish();
}

std::string cleaned(const std::string& segment) { return cleaned(std::vector<std::string>{segment}); }

} // namespace

// A prefix may have so many words at once: what grows with their square would hold a worker for minutes.
TEST(CleanUp, TenTimesTheWordsTakeAboutTenTimesTheTime) {
    const auto secondsFor = [](const std::string& word, int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += word + ' ';
        timespec before{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
        CleanUp cleanUp;
        cleanUp.add(text);
        cleanUp.finish();
        timespec after{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
        return static_cast<double>(after.tv_sec - before.tv_sec) +
               static_cast<double>(after.tv_nsec - before.tv_nsec) * 1e-9;
    };
    for (const char* word : {"a", "word", "one", "twenty", "twenty one", "one hundred", "point", "question",
                             "comma", "um", "new", "two thousand and", "first", "o'clock", "half past"})
        EXPECT_LT(secondsFor(word, 30'000), 40 * secondsFor(word, 3'000) + 0.1) << word;
}

TEST(CleanUp, ASentenceBeginsWithACapitalAndEndsWithAFullStop) {
    EXPECT_EQ(cleaned("go forward and stop"), "Go forward and stop.");
}

TEST(CleanUp, OneOrTwoWordsGetNoFullStop) {
    EXPECT_EQ(cleaned("hello"), "Hello");
    EXPECT_EQ(cleaned("hello there"), "Hello there");
}

TEST(CleanUp, SpokenMarksAreWritten) {
    EXPECT_EQ(cleaned("hello comma how are you question mark"), "Hello, how are you?");
    EXPECT_EQ(cleaned("stop exclamation mark it is late period"), "Stop! It is late.");
    EXPECT_EQ(cleaned("one full stop two exclamation point three colon four semicolon five semi colon six"),
              "One. Two! Three: four; five; six.");
}

TEST(CleanUp, SpokenLineEndsAreWrittenWithoutBlanksAround) {
    EXPECT_EQ(cleaned("dear anna comma new line thank you for the book period new paragraph see you soon"),
              "Dear anna,\nThank you for the book.\n\nSee you soon.");
}

TEST(CleanUp, AMarkCutInTwoByAPauseIsStillAMark) {
    EXPECT_EQ(cleaned(std::vector<std::string>{"are you there question", "mark yes"}), "Are you there? Yes.");
    EXPECT_EQ(cleaned(std::vector<std::string>{"first new", "", "paragraph second"}), "First\n\nSecond");
}

TEST(CleanUp, AWordThatOnlyCouldBeginAMarkIsWrittenInTheEnd) {
    EXPECT_EQ(cleaned(std::vector<std::string>{"that is a good question"}), "That is a good question.");
    EXPECT_EQ(cleaned(std::vector<std::string>{"it is new", "to me"}), "It is new to me.");
}

TEST(CleanUp, AMarksNameAfterADeterminerIsAWord) {
    EXPECT_EQ(cleaned("it was a period of peace"), "It was a period of peace.");
    EXPECT_EQ(cleaned("put the comma there"), "Put the comma there.");
    EXPECT_EQ(cleaned("begin a new line here"), "Begin a new line here.");
}

TEST(CleanUp, AMarkBeforeAnyWordIsNotWritten) {
    EXPECT_EQ(cleaned("comma hello there you"), "Hello there you.");
    EXPECT_EQ(cleaned("new line"), "");
}

TEST(CleanUp, FillersGo) { EXPECT_EQ(cleaned("um i uh think er so hmm"), "I think so."); }

TEST(CleanUp, SmallWordsSaidTwiceStandOnce) {
    EXPECT_EQ(cleaned("i i i want the the book"), "I want the book.");
    EXPECT_EQ(cleaned(std::vector<std::string>{"we went to", "to the sea"}), "We went to the sea.");
}

TEST(CleanUp, WordsThatMayBeSaidTwiceStay) {
    EXPECT_EQ(cleaned("it was very very good"), "It was very very good.");
    EXPECT_EQ(cleaned("five five one"), "Five five one.");
    EXPECT_EQ(cleaned("he had had that that day"), "He had had that that day.");
}

TEST(CleanUp, TheFirstPersonAndDaysAreCapitals) {
    EXPECT_EQ(cleaned("on monday i'm sure i'll come in december"),
              "On Monday I'm sure I'll come in December.");
}

TEST(CleanUp, ANewSentenceBeginsAfterAnEndAndNotAfterAComma) {
    EXPECT_EQ(cleaned("yes period no comma maybe"), "Yes. No, maybe.");
}

TEST(CleanUp, AFragmentCarriesItsOwnLeadingBlank) {
    CleanUp cleanUp;
    EXPECT_EQ(cleanUp.add("hello world"), "Hello world");
    EXPECT_EQ(cleanUp.add("comma"), ",");
    EXPECT_EQ(cleanUp.add("good day"), " good day");
    EXPECT_EQ(cleanUp.add(""), "");
    EXPECT_EQ(cleanUp.finish(), ".");
}

TEST(CleanUp, TextThatIsAlreadyWrittenKeepsItsCapitalsAndMarks) {
    EXPECT_EQ(cleaned(std::vector<std::string>{"I met Anna in Rome. She", "was happy"}),
              "I met Anna in Rome. She was happy.");
}

TEST(CleanUp, NothingGivesNothing) {
    EXPECT_EQ(cleaned(""), "");
    EXPECT_EQ(cleaned(" \n\t"), "");
    EXPECT_EQ(cleaned("um uh"), "");
}

TEST(CleanUp, APauseIsACommaOrAFullStopByItsLength) {
    using namespace std::chrono_literals;
    const auto spoken = [](std::vector<std::pair<const char*, std::chrono::milliseconds>> segments) {
        CleanUp cleanUp;
        std::string text;
        for (const auto& [words, pause] : segments)
            text += cleanUp.add(words, pause);
        return text + cleanUp.finish();
    };
    EXPECT_EQ(spoken({{"it was late", 0ms}, {"we went home", 2000ms}}), "It was late. We went home.");
    EXPECT_EQ(spoken({{"it was late", 0ms}, {"we went home", 900ms}}), "It was late, we went home.");
    EXPECT_EQ(spoken({{"it was late", 0ms}, {"we went home", 500ms}}), "It was late we went home.");
    EXPECT_EQ(spoken({{"we went to", 0ms}, {"to the sea", 2000ms}}), "We went to the sea.")
        << "nobody ends there";
    EXPECT_EQ(spoken({{"yes", 0ms}, {"that is it", 2000ms}}), "Yes that is it.") << "one word is no part";
    EXPECT_EQ(spoken({{"it was late", 0ms}, {"comma", 2000ms}, {"we left", 2000ms}}),
              "It was late, we left.");
    EXPECT_EQ(spoken({{"it was late", 0ms}, {"um", 2000ms}, {"we left", 600ms}}), "It was late. We left.");
    EXPECT_EQ(spoken({{"there were many", 0ms}, {"twenty five", 900ms}}), "There were many, 25.");
}

TEST(CleanUp, ATextGoesOnWhereAnotherOneStopped) {
    const auto after = [](const char* before) {
        CleanUp cleanUp(before);
        const auto text = cleanUp.add("and then on monday we left");
        return text + cleanUp.finish();
    };
    EXPECT_EQ(after("I came late,"), "and then on Monday we left.");
    EXPECT_EQ(after("I came late"), "and then on Monday we left.");
    EXPECT_EQ(after("I came late."), "And then on Monday we left.");
    EXPECT_EQ(after("\"I came late!\" "), "And then on Monday we left.");
    EXPECT_EQ(after("A list:\n"), "And then on Monday we left.");
    EXPECT_EQ(after("  "), "And then on Monday we left.");
}

TEST(CleanUp, AStyleIsFollowedAsFarAsRulesCan) {
    const auto styled = [](const char* style) {
        CleanUp cleanUp({}, style);
        const auto text = cleanUp.add("i can't come on monday comma don't wait for twenty people");
        return text + cleanUp.finish();
    };
    EXPECT_EQ(styled("warm and friendly"), "I can't come on Monday, don't wait for 20 people.");
    EXPECT_EQ(styled("All LOWERCASE please"), "i can't come on monday, don't wait for 20 people.");
    EXPECT_EQ(styled("no punctuation"), "I can't come on Monday don't wait for 20 people");
    EXPECT_EQ(styled("casual"), "I can't come on Monday, don't wait for 20 people");
    EXPECT_EQ(styled("Formal English"), "I cannot come on Monday, do not wait for 20 people.");
    EXPECT_EQ(styled("informal"), "I can't come on Monday, don't wait for 20 people.");
    EXPECT_EQ(styled("numbers in words"), "I can't come on Monday, don't wait for twenty people.");
}

// However the words are cut into segments, the text is the same: what was given out is never taken back.
TEST(CleanUp, TheCutsDoNotChangeTheText) {
    const std::vector<std::string> words = {"i",    "new",     "line", "paragraph", "question",    "mark",
                                            "the",  "comma",   "full", "stop",      "period",      "um",
                                            "semi", "colon",   "a",    "very",      "exclamation", "point",
                                            "sea",  "twenty",  "five", "hundred",   "and",         "first",
                                            "oh",   "percent", "at",   "am"};
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string whole;
        std::vector<std::string> cut(1);
        const auto count = random() % 12;
        for (std::size_t i = 0; i < count; ++i) {
            const auto& word = words[random() % words.size()];
            whole += word + ' ';
            cut.back() += word + ' ';
            if (random() % 3 == 0)
                cut.emplace_back();
        }
        EXPECT_EQ(cleaned(cut), cleaned(whole)) << whole;
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SpokenNumbers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace lorvane::backend {

namespace {

using Kind = SpokenNumber::Kind;

constexpr auto units = std::to_array<std::string_view>(
    {"zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine"});
constexpr auto teens =
    std::to_array<std::string_view>({"ten", "eleven", "twelve", "thirteen", "fourteen", "fifteen", "sixteen",
                                     "seventeen", "eighteen", "nineteen"});
constexpr auto tens = std::to_array<std::string_view>(
    {"twenty", "thirty", "forty", "fifty", "sixty", "seventy", "eighty", "ninety"});
constexpr auto unitOrdinals = std::to_array<std::string_view>(
    {"", "first", "second", "third", "fourth", "fifth", "sixth", "seventh", "eighth", "ninth"});
constexpr auto teenOrdinals =
    std::to_array<std::string_view>({"tenth", "eleventh", "twelfth", "thirteenth", "fourteenth", "fifteenth",
                                     "sixteenth", "seventeenth", "eighteenth", "nineteenth"});
constexpr auto tensOrdinals = std::to_array<std::string_view>(
    {"twentieth", "thirtieth", "fortieth", "fiftieth", "sixtieth", "seventieth", "eightieth", "ninetieth"});
constexpr auto months =
    std::to_array<std::string_view>({"january", "february", "march", "april", "may", "june", "july", "august",
                                     "september", "october", "november", "december"});
constexpr auto vague = std::to_array<std::string_view>({"hundreds", "thousands", "millions", "something"});
constexpr auto beforeTimes = std::to_array<std::string_view>(
    {"at", "by", "until", "till", "around", "before", "after", "from", "since"});
constexpr auto beforeYears = std::to_array<std::string_view>({"in", "since", "year", "of", "until", "by"});

template <class List>
std::optional<std::int64_t> placeIn(const List& list, std::string_view word) {
    const auto found = std::find(list.begin(), list.end(), word);
    if (word.empty() || found == list.end())
        return std::nullopt;
    return found - list.begin();
}

template <class List>
bool in(const List& list, std::string_view word) {
    return placeIn(list, word).has_value();
}

bool beginsNumber(std::string_view word) { return in(units, word) || in(teens, word) || in(tens, word); }

std::int64_t scaleOf(std::string_view word) {
    if (word == "thousand")
        return 1000;
    if (word == "million")
        return 1'000'000;
    return word == "billion" ? 1'000'000'000 : 0;
}

std::string grouped(std::int64_t value) {
    auto digits = std::to_string(value);
    for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3)
        digits.insert(static_cast<std::size_t>(at), 1, ',');
    return digits;
}

std::string twoDigits(std::int64_t value) {
    auto digits = std::to_string(value);
    return value < 10 ? '0' + digits : digits;
}

std::string ordinal(std::int64_t value) {
    const auto unit = value % 10;
    const bool teen = value % 100 >= 11 && value % 100 <= 13;
    const char* end = teen ? "th" : unit == 1 ? "st" : unit == 2 ? "nd" : unit == 3 ? "rd" : "th";
    return std::to_string(value) + end;
}

struct Value {
    std::int64_t value = 0;
    std::size_t words = 0; // 0: none
};

// Whoever looks beyond the last word cannot know yet.
class Reader {
 public:
    Reader(std::span<const std::string> words, std::string_view before, bool last)
        : words_(words), before_(before), last_(last) {}

    SpokenNumber read() {
        auto number = readOrdinal();
        if (number.kind == Kind::none)
            number = readCardinal();
        return starved_ ? SpokenNumber{Kind::unclear, 0, {}} : number;
    }

 private:
    std::string_view word(std::size_t at) {
        if (at < words_.size())
            return words_[at];
        starved_ = starved_ || !last_;
        return {};
    }

    // Below a hundred.
    Value small(std::size_t at) {
        if (const auto unit = placeIn(units, word(at)))
            return {*unit, 1};
        if (const auto teen = placeIn(teens, word(at)))
            return {10 + *teen, 1};
        const auto ten = placeIn(tens, word(at));
        if (!ten)
            return {};
        const auto unit = placeIn(units, word(at + 1));
        return unit && *unit > 0 ? Value{20 + 10 * *ten + *unit, 2} : Value{20 + 10 * *ten, 1};
    }

    // What may follow "hundred" or "thousand": "and five", "five".
    Value rest(std::size_t at) {
        const std::size_t joint = word(at) == "and" ? 1 : 0;
        auto value = small(at + joint);
        if (value.words == 0 || value.value == 0)
            return {};
        value.words += joint;
        return value;
    }

    Value belowThousand(std::size_t at) {
        auto value = small(at);
        if (value.words == 0 || value.value == 0 || word(at + value.words) != "hundred")
            return value;
        value = {value.value * 100, value.words + 1};
        const auto more = rest(at + value.words);
        return {value.value + more.value, value.words + more.words};
    }

    Value cardinal(std::size_t at) {
        Value total;
        std::int64_t lastScale = 1'000'000'000'000;
        for (;;) {
            const std::size_t joint = total.words > 0 && word(at + total.words) == "and" ? 1 : 0;
            const auto group = belowThousand(at + total.words + joint);
            if (group.words == 0 || (total.words > 0 && group.value == 0))
                return total;
            const auto scale = scaleOf(word(at + total.words + joint + group.words));
            if (scale >= lastScale)
                return total;
            total = {total.value + group.value * std::max<std::int64_t>(scale, 1),
                     total.words + joint + group.words + (scale > 0 ? 1 : 0)};
            if (scale == 0)
                return total;
            lastScale = scale;
        }
    }

    // "am", "a m", "p.m."
    Value meridiem(std::size_t at, std::string& written) {
        std::string letters;
        std::size_t count = 0;
        for (; count < 2 && letters.size() < 2; ++count)
            for (const char c : word(at + count))
                if (c != '.')
                    letters += c;
        if (letters != "am" && letters != "pm")
            return {};
        written = letters;
        return {0, count};
    }

    // "oh five", "thirty", "forty five"
    Value minutes(std::size_t at) {
        if (word(at) == "oh" || word(at) == "o") {
            const auto unit = placeIn(units, word(at + 1));
            return unit && *unit > 0 ? Value{*unit, 2} : Value{};
        }
        const auto value = small(at);
        return value.value >= 10 && value.value < 60 ? value : Value{};
    }

    std::optional<SpokenNumber> readTime(const Value& hour) {
        if (hour.value < 1 || hour.value > 12 || hour.words != 1)
            return std::nullopt;
        const auto h = std::to_string(hour.value);
        if (word(1) == "o'clock" || word(1) == "oclock")
            return SpokenNumber{Kind::figures, 2, h + " o'clock"};
        std::string half;
        if (const auto end = meridiem(1, half); end.words > 0)
            return SpokenNumber{Kind::figures, 1 + end.words, h + ' ' + half};
        const auto past = minutes(1);
        if (past.words == 0)
            return std::nullopt;
        const auto time = h + ':' + twoDigits(past.value);
        const auto after = 1 + past.words;
        if (const auto end = meridiem(after, half); end.words > 0)
            return SpokenNumber{Kind::figures, after + end.words, time + ' ' + half};
        if (in(beforeTimes, before_) && !continues(after))
            return SpokenNumber{Kind::figures, after, time};
        return std::nullopt;
    }

    // Whether the number goes on there in some way.
    bool continues(std::size_t at) {
        const auto next = word(at);
        return beginsNumber(next) || scaleOf(next) > 0 || next == "hundred" || next == "percent" ||
               next == "point" || next == "dollars" || next == "euros";
    }

    std::optional<SpokenNumber> readYear(const Value& century) {
        if (century.words != 1 || century.value < 10 || century.value > 20)
            return std::nullopt;
        if (century.value < 17 && !in(beforeYears, before_))
            return std::nullopt; // "thirteen fourteen people"
        Value year = word(1) == "oh" || word(1) == "o" ? minutes(1) : small(1);
        if (year.words == 0 || (year.value < 10 && year.words != 2) || continues(1 + year.words))
            return std::nullopt;
        return SpokenNumber{Kind::figures, 1 + year.words,
                            std::to_string(century.value) + twoDigits(year.value)};
    }

    std::optional<SpokenNumber> readDecimals(const Value& whole) {
        if (word(whole.words) != "point")
            return std::nullopt;
        std::string digits;
        std::size_t at = whole.words + 1;
        for (; in(units, word(at)) || (!digits.empty() && word(at) == "oh"); ++at)
            digits += std::to_string(placeIn(units, word(at)).value_or(0));
        if (digits.empty())
            return std::nullopt;
        auto written = grouped(whole.value) + '.' + digits;
        if (scaleOf(word(at)) > 1000)
            written += ' ' + std::string(word(at++));
        return withPercent(at, std::move(written));
    }

    std::size_t percentWords(std::size_t at) {
        if (word(at) == "percent")
            return 1;
        return word(at) == "per" && word(at + 1) == "cent" ? 2 : 0;
    }

    SpokenNumber withPercent(std::size_t at, std::string written) {
        const auto words = percentWords(at);
        return {Kind::figures, at + words, words > 0 ? written + '%' : written};
    }

    // Numbers side by side: four and more single digits are one number, the rest is for the reader to tell.
    SpokenNumber readRun() {
        std::string digits;
        bool single = true;
        std::size_t at = 0;
        for (; continuesRun(at); ++at) {
            const auto unit = word(at) == "oh" ? std::optional<std::int64_t>(0) : placeIn(units, word(at));
            single = single && unit;
            digits += std::to_string(unit.value_or(0));
        }
        return single && at >= 4 ? SpokenNumber{Kind::figures, at, digits}
                                 : SpokenNumber{Kind::words, at, {}};
    }

    bool continuesRun(std::size_t at) {
        const auto next = word(at);
        return beginsNumber(next) || next == "hundred" || scaleOf(next) > 0 || (at > 0 && next == "oh");
    }

    SpokenNumber readCardinal() {
        const auto value = cardinal(0);
        if (value.words == 0)
            return {};
        for (auto read : {&Reader::readTime, &Reader::readDecimals, &Reader::readYear})
            if (auto number = (this->*read)(value))
                return *number;
        if (percentWords(value.words) > 0)
            return withPercent(value.words, grouped(value.value));
        const auto next = word(value.words);
        if (beginsNumber(next))
            return readRun();
        if ((next == "to" || next == "past") && value.value < 30 && beginsNumber(word(value.words + 1)))
            return {Kind::words, value.words + 2, {}}; // "ten to five"
        if (next.ends_with("ties") || in(vague, next))
            return {Kind::words, value.words + 1, {}}; // "nineteen eighties"
        if (value.value < 10)
            return {Kind::words, value.words, {}};
        return {Kind::figures, value.words, written(value)};
    }

    std::string written(const Value& value) {
        constexpr std::int64_t million = 1'000'000;
        if (value.value >= million && value.value % million == 0 && value.value < 1000 * million)
            return std::to_string(value.value / million) + " million";
        const bool hundreds = value.words < 4 && value.value >= 1100 && value.value < 2100 &&
                              value.value % 100 == 0 && word(value.words - 1) == "hundred";
        const bool year = in(beforeYears, before_) && value.value >= 1900 && value.value < 2100;
        return hundreds || year ? std::to_string(value.value) : grouped(value.value);
    }

    SpokenNumber readOrdinal() {
        if (const auto teen = placeIn(teenOrdinals, word(0)))
            return isFraction() ? SpokenNumber{} : SpokenNumber{Kind::figures, 1, ordinal(10 + *teen)};
        if (const auto ten = placeIn(tensOrdinals, word(0)))
            return isFraction() ? SpokenNumber{} : SpokenNumber{Kind::figures, 1, ordinal(20 + 10 * *ten)};
        if (const auto unit = placeIn(unitOrdinals, word(0)))
            return isDay(1) ? SpokenNumber{Kind::figures, 1, ordinal(*unit)} : SpokenNumber{};
        const auto ten = placeIn(tens, word(0));
        const auto unit = ten ? placeIn(unitOrdinals, word(1)) : std::nullopt;
        if (!unit)
            return {};
        if (*unit == 2 && before_ != "the" && !isDay(2))
            return {Kind::words, 2, {}}; // "a twenty second break"
        return {Kind::figures, 2, ordinal(20 + 10 * *ten + *unit)};
    }

    bool isFraction() const { return before_ == "a" || before_ == "one"; }

    // "june first", "the third of june"; "may first" is as likely "you may first".
    bool isDay(std::size_t words) {
        if (in(months, before_) && before_ != "may" && before_ != "march")
            return true;
        return word(words) == "of" && in(months, word(words + 1));
    }

    const std::span<const std::string> words_;
    const std::string_view before_;
    const bool last_;
    bool starved_ = false;
};

} // namespace

SpokenNumber spokenNumber(std::span<const std::string> words, std::string_view before, bool last) {
    if (words.empty())
        return {};
    const std::string_view first = words.front();
    if (!beginsNumber(first) && !in(unitOrdinals, first) && !in(teenOrdinals, first) &&
        !in(tensOrdinals, first))
        return {};
    return Reader(words, before, last).read();
}

} // namespace lorvane::backend

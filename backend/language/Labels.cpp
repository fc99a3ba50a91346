// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Labels.h"

#include "language/Sentences.h"

#include <algorithm>
#include <array>
#include <vector>

namespace lorvane::backend {

namespace {

constexpr auto names =
    std::to_array<std::string_view>({"work", "personal", "inspiration", "family", "ideas", "tasks"});

// Words, or several words with blanks between; one that ends in "*" stands for all that begin so. Weights: 3
// says it nearly alone, 1 only adds up.
struct Keyword {
    std::string_view text;
    int weight;
};

constexpr auto work = std::to_array<Keyword>({
    {"meeting*", 2},  {"client*", 3},    {"customer*", 3},       {"project*", 2},    {"deadline*", 3},
    {"report*", 2},   {"colleague*", 3}, {"coworker*", 3},       {"boss", 3},        {"manager*", 3},
    {"office", 2},    {"team", 2},       {"invoice*", 3},        {"contract*", 3},   {"budget*", 2},
    {"quarter*", 2},  {"quarterly", 2},  {"presentation*", 2},   {"slides", 2},      {"stakeholder*", 3},
    {"sprint", 3},    {"deploy*", 3},    {"release", 2},         {"server*", 2},     {"ticket*", 1},
    {"bug*", 2},      {"code", 1},       {"sales", 3},           {"marketing", 3},   {"revenue", 3},
    {"hiring", 3},    {"interview*", 2}, {"candidate*", 2},      {"company", 2},     {"business", 2},
    {"proposal*", 2}, {"agenda", 2},     {"conference call", 3}, {"department*", 2}, {"spreadsheet*", 2},
    {"employee*", 3}, {"salary", 2},     {"feedback", 1},        {"launch*", 1},     {"product", 1},
    {"review", 1},    {"email*", 1},     {"schedule", 1},        {"supplier*", 3},   {"встреч*", 1},
    {"совещани*", 3}, {"клиент*", 3},    {"заказчик*", 3},       {"проект*", 2},     {"отчет*", 2},
    {"отчёт*", 2},    {"начальник*", 3}, {"коллег*", 3},         {"договор*", 2},    {"офис*", 2},
    {"бюджет*", 2},   {"команд*", 2},    {"презентаци*", 2},     {"срок*", 1},       {"релиз*", 3},
    {"работ*", 1},    {"компани*", 2},   {"сотрудник*", 3},
});

constexpr auto personal = std::to_array<Keyword>({
    {"i feel", 3},     {"i felt", 3},      {"feeling", 2},   {"diary", 3},     {"journal", 3},
    {"myself", 2},     {"friend*", 2},     {"my life", 3},   {"tired", 2},     {"happy", 2},
    {"sad", 2},        {"lonely", 3},      {"anxious", 3},   {"nervous", 2},   {"doctor*", 2},
    {"dentist", 2},    {"therapist", 3},   {"gym", 3},       {"workout*", 3},  {"sleep", 2},
    {"slept", 3},      {"holiday*", 2},    {"vacation*", 2}, {"trip", 1},      {"movie*", 2},
    {"dinner", 1},     {"restaurant*", 2}, {"date", 1},      {"weekend", 1},   {"party", 2},
    {"hobby", 3},      {"guitar", 2},      {"running", 1},   {"headache", 3},  {"health", 2},
    {"diet", 3},       {"my day", 2},      {"dream*", 1},    {"love", 1},      {"birthday", 1},
    {"weight", 2},     {"apartment", 2},   {"друг", 2},      {"друзья*", 2},   {"подруг*", 3},
    {"я чувствую", 3}, {"устал*", 3},      {"груст*", 3},    {"счастлив*", 2}, {"врач*", 2},
    {"отпуск*", 2},    {"спортзал*", 3},   {"дневник*", 3},  {"выходны*", 1},  {"здоровь*", 2},
    {"спал*", 2},
});

constexpr auto inspiration = std::to_array<Keyword>({
    {"quote*", 3},     {"inspir*", 4},         {"motivat*", 3},      {"wisdom", 3},    {"courage", 3},
    {"believe in", 3}, {"gratitude", 3},       {"grateful", 3},      {"beautiful", 2}, {"poem*", 3},
    {"poetry", 3},     {"never give up", 4},   {"follow your", 3},   {"greatness", 3}, {"mindset", 3},
    {"lesson*", 1},    {"reminds me that", 3}, {"the secret of", 3}, {"journey", 2},   {"moved me", 3},
    {"amazing", 1},    {"sunrise", 2},         {"stars", 1},         {"passion*", 2},  {"meaning of", 2},
    {"hope", 1},       {"вдохнов*", 4},        {"цитат*", 3},        {"мудрост*", 3},  {"мотив*", 3},
    {"благодар*", 2},  {"стих*", 2},           {"верь*", 3},
});

constexpr auto family = std::to_array<Keyword>({
    {"mom", 3},          {"mum", 3},          {"mother*", 3},   {"dad", 3},      {"father*", 3},
    {"parents", 3},      {"son", 3},          {"daughter*", 3}, {"kid", 3},      {"kids", 3},
    {"child", 2},        {"children", 2},     {"baby", 3},      {"wife", 3},     {"husband", 3},
    {"brother*", 3},     {"sister*", 3},      {"grandma", 3},   {"grandpa", 3},  {"grandmother*", 3},
    {"grandfather*", 3}, {"grandparents", 3}, {"uncle", 3},     {"aunt", 3},     {"cousin*", 3},
    {"nephew*", 3},      {"niece*", 3},       {"family", 4},    {"school", 1},   {"kindergarten", 3},
    {"daycare", 3},      {"homework", 2},     {"in laws", 3},   {"bedtime", 2},  {"мам*", 3},
    {"пап*", 2},         {"сын*", 3},         {"доч*", 3},      {"дет*", 2},     {"ребен*", 3},
    {"ребён*", 3},       {"жен*", 1},         {"муж*", 2},      {"брат*", 3},    {"сестр*", 3},
    {"бабушк*", 3},      {"дедушк*", 3},      {"семь*", 3},     {"родител*", 3}, {"школ*", 1},
});

constexpr auto ideas = std::to_array<Keyword>({
    {"idea*", 4},          {"what if", 4},        {"imagine", 3},          {"concept*", 3},
    {"brainstorm*", 4},    {"prototype*", 3},     {"invent*", 3},          {"we could build", 4},
    {"we could make", 3},  {"how about", 2},      {"startup*", 2},         {"experiment*", 2},
    {"could be used", 2},  {"an app that", 4},    {"a device that", 4},    {"a service that", 4},
    {"a website that", 4}, {"maybe we could", 2}, {"it would be cool", 4}, {"it would be great if", 2},
    {"hypothesis", 3},     {"novel", 1},          {"story about", 3},      {"a book about", 3},
    {"a game where", 4},   {"plot", 2},           {"feature", 1},          {"design*", 1},
    {"иде*", 3},           {"а что если", 4},     {"что если", 3},         {"придум*", 3},
    {"концепци*", 3},      {"представь*", 3},     {"прототип*", 3},        {"приложение которое", 4},
    {"можно сделать", 2},
});

constexpr auto tasks = std::to_array<Keyword>({
    {"to do", 1},      {"todo", 4},         {"remember to", 4},   {"remind me", 4},
    {"reminder*", 3},  {"don't forget", 4}, {"do not forget", 4}, {"need to", 2},
    {"have to", 1},    {"has to", 1},       {"must", 1},          {"buy", 3},
    {"pick up", 3},    {"groceries", 3},    {"shopping list", 4}, {"milk", 2},
    {"pay", 2},        {"bill*", 2},        {"book a", 2},        {"make an appointment", 4},
    {"call the", 2},   {"task*", 3},        {"checklist", 4},     {"errand*", 4},
    {"fix the", 2},    {"clean the", 3},    {"return the", 2},    {"by tomorrow", 2},
    {"drop off", 3},   {"renew*", 3},       {"cancel the", 3},    {"laundry", 3},
    {"wash the", 3},   {"order", 1},        {"send", 1},          {"tomorrow", 1},
    {"pharmacy", 2},   {"water the", 3},    {"купить", 3},        {"не забыть", 4},
    {"не забудь", 4},  {"напомни*", 4},     {"надо", 2},          {"нужно", 2},
    {"задач*", 3},     {"позвонить", 2},    {"оплатить", 3},      {"забрать", 2},
    {"записаться", 3}, {"список", 2},       {"заказать", 2},
});

struct Topic {
    std::string_view name;
    std::span<const Keyword> keywords;
};

constexpr auto topics = std::to_array<Topic>({{"work", work},
                                              {"personal", personal},
                                              {"inspiration", inspiration},
                                              {"family", family},
                                              {"ideas", ideas},
                                              {"tasks", tasks}});

constexpr int leastScore = 2;

bool matches(std::string_view keyword, std::string_view word) {
    if (!keyword.ends_with('*'))
        return keyword == word;
    keyword.remove_suffix(1);
    return word.starts_with(keyword);
}

// Whether the keyword's words stand there.
bool standsAt(std::string_view keyword, std::span<const std::string> words) {
    while (!words.empty()) {
        const auto blank = keyword.find(' ');
        if (!matches(keyword.substr(0, blank), words.front()))
            return false;
        if (blank == std::string_view::npos)
            return true;
        keyword.remove_prefix(blank + 1);
        words = words.subspan(1);
    }
    return false;
}

// A keyword counts once, however often it is said.
int scoreOf(const Topic& topic, std::span<const std::string> words) {
    int score = 0;
    for (const auto& keyword : topic.keywords)
        for (std::size_t at = 0; at < words.size(); ++at)
            if (standsAt(keyword.text, words.subspan(at))) {
                score += keyword.weight;
                break;
            }
    return score;
}

} // namespace

std::span<const std::string_view> labels() { return names; }

std::string_view labelByKeywords(std::string_view text) {
    const auto words = wordsIn(text);
    std::string_view best;
    int highest = leastScore - 1;
    for (const auto& topic : topics) {
        const int score = scoreOf(topic, words);
        if (score == highest)
            best = {};
        if (score <= highest)
            continue;
        highest = score;
        best = topic.name;
    }
    return best;
}

} // namespace lorvane::backend

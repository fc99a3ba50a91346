// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Apertium.h"

#include "language/FilterProcess.h"
#include "language/Sentences.h"
#include "util/Log.h"

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>

namespace lorvane::backend {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr double mostUnknown = 0.34; // of the words; more is another language

// Apertium names languages by two letters or three. The sentence has words that any dictionary holds.
struct Language {
    std::string_view code; // the client's
    std::string_view shortName;
    std::string_view longName;
    std::string_view sentence; // empty: never translated from
};

constexpr auto languages = std::to_array<Language>({
    {"af", "af", "afr", "Die huis is groot en die water is koud."},
    {"ast", "ast", "ast", "La casa ye grande."},
    {"be", "be", "bel", "Дом вялікі, а вада халодная."},
    {"bg", "bg", "bul", "Къщата е голяма и водата е студена."},
    {"ca", "ca", "cat", "La casa és gran i l'aigua és freda."},
    {"da", "da", "dan", "Huset er stort og vandet er koldt."},
    {"en", "en", "eng", "The house is big and the water is cold."},
    {"es", "es", "spa", "La casa es grande y el agua está fría."},
    {"fr", "fr", "fra", "La maison est grande et l'eau est froide."},
    {"gl", "gl", "glg", "A casa é grande e a auga está fría."},
    {"hi", "hi", "hin", "घर बड़ा है।"},
    {"hr", "hr", "hbs", "Kuća je velika i voda je hladna."},
    {"id", "id", "ind", "Rumah itu besar dan airnya dingin."},
    {"is", "is", "isl", "Húsið er stórt og vatnið er kalt."},
    {"it", "it", "ita", "La casa è grande e l'acqua è fredda."},
    {"mk", "mk", "mkd", "Куќата е голема и водата е студена."},
    {"ms", "ms", "zlm", "Rumah itu besar dan air itu sejuk."},
    {"nl", "nl", "nld", "Het huis is groot en het water is koud."},
    {"no", "nb", "nob", "Huset er stort og vannet er kaldt."},
    {"oc", "oc", "oci", "L'ostal es grand e l'aiga es freja."},
    {"pl", "pl", "pol", "Dom jest duży, a woda jest zimna."},
    {"pt", "pt", "por", "A casa é grande e a água está fria."},
    {"ro", "ro", "ron", "Casa este mare și apa este rece."},
    {"ru", "ru", "rus", "Дом большой, а вода холодная."},
    {"sl", "sl", "slv", "Hiša je velika in voda je hladna."},
    {"sr", "sr", "srp", ""},
    {"sv", "sv", "swe", "Huset är stort och vattnet är kallt."},
    {"uk", "uk", "ukr", "Будинок великий, а вода холодна."},
    {"ur", "ur", "urd", "گھر بڑا ہے۔"},
});

const Language* byName(std::string_view name) {
    const auto* found = std::find_if(languages.begin(), languages.end(), [&](const Language& language) {
        return language.shortName == name || language.longName == name;
    });
    return found == languages.end() ? nullptr : found;
}

// "pt-BR" is "pt".
std::string_view plain(std::string_view code) { return code.substr(0, code.find_first_of("-_")); }

// Unknown words are marked by a star before them.
std::size_t unknownIn(std::string_view marked) {
    return static_cast<std::size_t>(std::count(marked.begin(), marked.end(), '*'));
}

void trimEnd(std::string& text) {
    while (text.ends_with('\n') || text.ends_with(' '))
        text.pop_back();
}

} // namespace

void Apertium::findPairs(const std::stop_token& stop) {
    std::vector<Pair> good;
    const auto listed = filter({program_.string(), "-l"}, {}, {seconds(5), 65'536}, stop);
    std::istringstream modes(listed.value_or(""));
    for (std::string mode; modes >> mode && !stop.stop_requested();) {
        const auto dash = mode.find('-');
        if (dash == std::string::npos)
            continue;
        const auto* source = byName(std::string_view(mode).substr(0, dash));
        const auto* target = byName(std::string_view(mode).substr(dash + 1));
        if (!source || !target || source->sentence.empty())
            continue;
        const Pair pair{mode, source->code, target->code};
        if (passes(pair, source->sentence, stop))
            good.push_back(pair);
        else if (!stop.stop_requested())
            logLine("apertium: " + mode + " does not work here and is left out");
    }
    const std::lock_guard lock(mutex_);
    pairs_ = std::move(good);
    looked_ = true;
}

bool Apertium::passes(const Pair& pair, std::string_view sentence, const std::stop_token& stop) const {
    const auto translated = run(pair.mode, sentence, true, seconds(5), stop);
    const auto words = wordsIn(translated).size();
    return words > 0 && translated != sentence && unknownIn(translated) * 2 < words &&
           translated.find_first_of("@#") == std::string::npos;
}

std::vector<Apertium::Pair> Apertium::pairsTo(std::string_view source, std::string_view target) const {
    const std::lock_guard lock(mutex_);
    std::vector<Pair> fitting;
    for (const auto& pair : pairs_)
        if (pair.target == plain(target) && (source.empty() || pair.source == plain(source)))
            fitting.push_back(pair);
    return fitting;
}

bool Apertium::speaks(std::string_view source, std::string_view target) const {
    return !pairsTo(source, target).empty();
}

Translation Apertium::translate(std::string_view text, std::string_view source, std::string_view target,
                                const std::stop_token& stop) const {
    {
        const std::lock_guard lock(mutex_);
        if (!looked_)
            return {{}, "the translator is being started"};
    }
    const auto pairs = pairsTo(source, target);
    if (pairs.empty())
        return {{}, "no pair for this language is installed here"};
    const auto* pair = source.empty() ? likeliest(pairs, text, stop) : &pairs.front();
    if (!pair)
        return {{}, "the language of the text is none that can be translated here"};
    auto translated = run(pair->mode, text, false, seconds(20), stop);
    return translated.empty() ? Translation{{}, "the translator failed"}
                              : Translation{std::move(translated), {}};
}

// The pair that knows the most of the words.
const Apertium::Pair* Apertium::likeliest(const std::vector<Pair>& pairs, std::string_view text,
                                          const std::stop_token& stop) const {
    const auto words = static_cast<double>(std::max<std::size_t>(wordsIn(text).size(), 1));
    const auto own = unknownIn(text);
    const Pair* best = nullptr;
    double least = mostUnknown;
    const auto latest = std::chrono::steady_clock::now() + seconds(8);
    for (const auto& pair : pairs) {
        const auto left = latest - std::chrono::steady_clock::now();
        if (left <= seconds(0))
            break;
        const auto marked = run(pair.mode, text, true, std::chrono::ceil<milliseconds>(left), stop);
        const auto stars = unknownIn(marked);
        const double unknown = static_cast<double>(stars - std::min(own, stars)) / words;
        if (marked.empty() || unknown >= least)
            continue;
        best = &pair;
        least = unknown;
    }
    return best;
}

// Empty when it failed: a pipeline of which a part crashed still ends well, and says nothing.
std::string Apertium::run(const std::string& mode, std::string_view text, bool mark, milliseconds time,
                          const std::stop_token& stop) const {
    std::vector<std::string> command{program_.string()};
    if (!mark)
        command.emplace_back("-u");
    command.push_back(mode);
    auto output = filter(command, std::string(text) + '\n', {time, std::size_t(1) << 20}, stop).value_or("");
    trimEnd(output);
    return output;
}

} // namespace lorvane::backend

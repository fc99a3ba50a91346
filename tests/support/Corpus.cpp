// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Corpus.h"

#include <algorithm>
#include <random>
#include <vector>

namespace lorvane::corpus {

namespace {

// The generator's own numbers are the same everywhere; what the standard's distributions make of them is not.
class Dice {
 public:
    explicit Dice(unsigned seed) : generator_(seed) {}
    int below(qsizetype bound) { return static_cast<int>(generator_() % static_cast<std::uint32_t>(bound)); }

 private:
    std::mt19937 generator_;
};

const QStringList sentences{
    QStringLiteral("The meeting has been moved to half past three, so please don't wait for me."),
    QStringLiteral("I'll send the \"final\" figures (about 1,250.75) by e-mail: anna@example.org."),
    QStringLiteral("Is 100% of it done & paid for? Not yet -- call +49 30 1234567 before 18:00!"),
    QStringLiteral("i think it works; try #42 again, then C:\\temp\\new_file~1 or [a|b]{c} = <d>^2."),
    QStringLiteral("Grüße aus München: die Straße ist über Nacht schön weiß geworden."),
    QStringLiteral("Le café où l’élève naïf dîne près de la forêt coûte 7 €, ça va très bien."),
    QStringLiteral("Mañana por la mañana, ¿quién tendrá más corazón? ¡Nadie, señor Núñez!"),
    QStringLiteral("Zażółć gęślą jaźń, příliš žluťoučký kůň, İstanbul'da ığdır, Þórður ætlar."),
    QStringLiteral("Decomposed: cafe\u0301, n\u0303, u\u0308ber."),
    QStringLiteral("Привет, мир! Встреча переносится на пятницу, объезд через Щёлково."),
    QStringLiteral("Їжак і ґанок: п’ятеро дітей з’їли єдине яблуко."),
    QStringLiteral("Η γρήγορη αλεπού πηδάει πάνω από το τεμπέλικο σκυλί· ναι;"),
    QStringLiteral("今天下午三点开会，请把报告发给我。天气很好，我们去公园吧！"),
    QStringLiteral("これは日本語の文章です。カタカナとひらがな、漢字が「混ざって」います。"),
    QStringLiteral(
        "Thumbs up 👍🏽 and a family 👩‍👩‍👧‍👦, flags 🇩🇪🇯🇵 🏳️‍🌈, "
        "a coder 👨‍💻 with ❤️ and 😀😀."),
    QStringLiteral("Math 𝒳 ≤ ∞, notes 𝄞, arrows → ⇐, quotes “so” ‘so’ «so», dash – — …"),
};

} // namespace

QString mixed(int characters, unsigned seed) {
    Dice dice(seed);
    QList<uint> all;
    while (all.size() < characters)
        all += (sentences[dice.below(sentences.size())] + QChar(u' ')).toUcs4();
    all.resize(characters);
    all.last() = '.'; // no text of a take ends in a blank
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(all.constData()), all.size());
}

QStringList fragments(const QString& text, unsigned seed) {
    constexpr int longest = 20;
    Dice dice(seed);
    QStringList pieces;
    for (qsizetype at = 0; at < text.size();) {
        qsizetype end = std::min(text.size(), at + 1 + dice.below(longest));
        if (end < text.size() && text[end].isLowSurrogate())
            ++end;
        pieces.append(text.mid(at, end - at));
        at = end;
    }
    return pieces;
}

int wrongCharacters(const QString& have, const QString& want) {
    const auto from = have.toUcs4();
    const auto to = want.toUcs4();
    std::vector<int> row(static_cast<std::size_t>(to.size()) + 1);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = static_cast<int>(i);
    for (const uint character : from) {
        int diagonal = row[0]++;
        for (std::size_t i = 1; i < row.size(); ++i) {
            const int kept = diagonal + (to[static_cast<qsizetype>(i) - 1] == character ? 0 : 1);
            diagonal = row[i];
            row[i] = std::min({kept, row[i] + 1, row[i - 1] + 1});
        }
    }
    return row.back();
}

} // namespace lorvane::corpus

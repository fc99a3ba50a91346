// SPDX-License-Identifier: GPL-3.0-or-later
// Live typing, measured from outside the program in a virtual desktop, beside `xdotool type` with the same
// text in the same application: how many characters a second stand there and are right, how many are wrong;
// then how long a user waits after the stream's last line for a take that was typed while it streamed, and
// what typing costs.
#include "TypingTrial.h"

#include "support/Corpus.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace {

using namespace lorvane;
using std::chrono::milliseconds;

constexpr int rateRounds = 3;
constexpr int rateCharacters = 1000;
constexpr int waitRounds = 7;
constexpr int waitCharacters = 200;
constexpr milliseconds betweenPieces{70}; // some 150 characters a second

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Rate {
    double perSecond = 0;
    int wrong = 0;
};

/// By the reference; its time ends with its process, though the application may still be busy then.
Rate byXdotool(DesktopApp& application, const QString& text) {
    application.empty();
    const auto before = std::chrono::steady_clock::now();
    const auto result =
        runTool(QStringLiteral("xdotool"),
                {QStringLiteral("type"), QStringLiteral("--clearmodifiers"), QStringLiteral("--"), text},
                std::chrono::minutes(3));
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - before;
    if (result.status != 0) {
        throw std::runtime_error("xdotool: " + result.errors.toStdString());
    }
    const int wrong = corpus::wrongCharacters(application.waitForText(text, std::chrono::seconds(3)), text);
    const auto characters = static_cast<int>(text.toUcs4().size());
    return {std::max(0, characters - wrong) / time.count(), wrong};
}

struct Ours {
    std::vector<double> rates;
    std::vector<double> processor;
    int wrong = 0;
};

/// Each text in one piece, or in the pieces of a stream, which end posts before they are full.
Ours byProgram(TypingTrial& trial, bool streamed) {
    Ours ours;
    for (int round = 1; round <= rateRounds; ++round) {
        const QString text = corpus::mixed(rateCharacters, static_cast<unsigned>(round));
        const TypingResult result = trial.type(text, streamed ? corpus::fragments(text) : QStringList{text});
        ours.rates.push_back((result.characters - result.wrong) / result.typing);
        ours.processor.push_back(result.processor);
        ours.wrong += result.wrong;
    }
    return ours;
}

void measure(const TypingTarget& target) {
    TypingTrial trial(target);
    const Ours whole = byProgram(trial, false);
    const Ours streamed = byProgram(trial, true);
    std::vector<double> waits;
    for (int round = 1; round <= waitRounds; ++round) {
        const QString text = corpus::mixed(waitCharacters, static_cast<unsigned>(round));
        waits.push_back(trial.type(text, corpus::fragments(text), betweenPieces).afterDone * 1000);
    }
    const Rate reference = byXdotool(trial.application(), corpus::mixed(rateCharacters));
    const QString way = trial.way().isEmpty() ? QStringLiteral("paste") : trial.way();
    std::printf(
        "%-26s %-10s %6.0f /s in one piece, %6.0f /s streamed, %d wrong of %d | xdotool %4.0f /s, "
        "%d wrong of %d | ratio %.1f, %.1f | last line to done %.1f ms, worst %.1f | processor %.2f s\n",
        qPrintable(target.toolkit), qPrintable(way), median(whole.rates), median(streamed.rates),
        whole.wrong + streamed.wrong, 2 * rateRounds * rateCharacters, reference.perSecond, reference.wrong,
        rateCharacters, median(whole.rates) / reference.perSecond,
        median(streamed.rates) / reference.perSecond, median(waits),
        *std::max_element(waits.begin(), waits.end()), median(streamed.processor));
    std::fflush(stdout);
}

} // namespace

/// typing_bench [NAME...]: the applications of that name, else all.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList only = QCoreApplication::arguments().mid(1);
    try {
        for (const TypingTarget& target : typingTargets()) {
            if (only.isEmpty() || only.contains(target.name)) {
                measure(target);
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "typing_bench: %s\n", error.what());
        return 1;
    }
    return 0;
}

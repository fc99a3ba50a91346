// SPDX-License-Identifier: GPL-3.0-or-later
// Takes of many scripts through the real program into real applications, with what stands there compared to
// what should: a line for each application, and with --results its figures as JSON. Runs in a virtual
// desktop. Fails when a character is wrong or an application is not typed into that can be.
#include "TypingTrial.h"

#include "support/Corpus.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace {

using namespace lorvane;

constexpr int waitCharacters = 200;
constexpr std::chrono::milliseconds betweenPieces{70}; // some 150 characters a second

struct Options {
    int runs;
    int characters;
    int waits;
    bool verbose;
};

struct Summary {
    QString way;
    std::vector<TypingResult> takes;
    /// Shorter ones that stream more slowly than any application types, for the wait at their end.
    std::vector<TypingResult> waits;

    [[nodiscard]] int wrong() const {
        int sum = 0;
        for (const auto* const list : {&takes, &waits}) {
            for (const TypingResult& take : *list) {
                sum += take.wrong;
            }
        }
        return sum;
    }
};

void say(const QString& line) {
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

bool isGood(const TypingTarget& target, const Summary& summary) {
    const bool isTypedInto = target.isTerminal ? summary.way.isEmpty() : !summary.way.isEmpty();
    return summary.wrong() == 0 && isTypedInto;
}

void report(const TypingTarget& target, const TypingResult& result, const QString& text,
            const Options& options) {
    if (options.verbose || result.wrong != 0) {
        say(QStringLiteral("%1: %2 characters, %3 wrong, %4 s, %5 ms after the last line, %6")
                .arg(target.name)
                .arg(result.characters)
                .arg(result.wrong)
                .arg(result.typing, 0, 'f', 2)
                .arg(result.afterDone * 1000, 0, 'f', 1)
                .arg(result.settled));
    }
    if (result.wrong != 0) {
        say(QStringLiteral("it holds\n%1\ninstead of\n%2").arg(result.seen, text));
    }
}

Summary run(const TypingTarget& target, const Options& options) {
    TypingTrial trial(target);
    Summary summary;
    for (int number = 1; number <= options.runs + options.waits; ++number) {
        const bool isWait = number > options.runs;
        const auto seed = static_cast<unsigned>(number);
        const QString text = corpus::mixed(isWait ? waitCharacters : options.characters, seed);
        const TypingResult result = trial.type(text, corpus::fragments(text, seed),
                                               isWait ? betweenPieces : std::chrono::milliseconds(0));
        (isWait ? summary.waits : summary.takes).push_back(result);
        report(target, result, text, options);
    }
    summary.way = trial.way();
    if (!isGood(target, summary)) {
        say(trial.log());
    }
    return summary;
}

QJsonArray toJson(const std::vector<TypingResult>& results) {
    QJsonArray array;
    for (const TypingResult& result : results) {
        array.append(QJsonObject{{QStringLiteral("characters"), result.characters},
                                 {QStringLiteral("wrong"), result.wrong},
                                 {QStringLiteral("seconds"), result.typing},
                                 {QStringLiteral("afterDone"), result.afterDone},
                                 {QStringLiteral("settled"), result.settled}});
    }
    return array;
}

QJsonObject toJson(const TypingTarget& target, const Summary& summary) {
    return {{QStringLiteral("application"), target.toolkit},
            {QStringLiteral("way"), summary.way.isEmpty() ? QStringLiteral("paste") : summary.way},
            {QStringLiteral("takes"), toJson(summary.takes)},
            {QStringLiteral("waits"), toJson(summary.waits)}};
}

/// One application that does not come up leaves the others to be tried.
std::optional<Summary> tryToRun(const TypingTarget& target, const Options& options) {
    try {
        return run(target, options);
    } catch (const std::exception& error) {
        say(QStringLiteral("%1 FAILED: %2").arg(target.name, QString::fromUtf8(error.what())));
        return std::nullopt;
    }
}

void keep(const QString& path, const QJsonArray& results) {
    QFile file(path);
    if (path.isEmpty()) {
        return;
    }
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(results).toJson()) < 0) {
        throw std::runtime_error("the results cannot be written");
    }
}

int runAll(const QCommandLineParser& arguments) {
    const auto number = [&](const char* name) { return arguments.value(QLatin1String(name)).toInt(); };
    const Options options{number("runs"), number("characters"), number("waits"),
                          arguments.isSet(QStringLiteral("verbose"))};
    const QString only = arguments.value(QStringLiteral("app"));
    QJsonArray results;
    bool isKnown = false;
    bool good = true;
    for (const TypingTarget& target : typingTargets()) {
        if (!only.isEmpty() && target.name != only) {
            continue;
        }
        isKnown = true;
        const auto summary = tryToRun(target, options);
        good = good && summary && isGood(target, *summary);
        if (summary) {
            results.append(toJson(target, *summary));
            say(QStringLiteral("%1, by %2: %3 wrong%4")
                    .arg(target.toolkit, results.last()[QStringLiteral("way")].toString())
                    .arg(summary->wrong())
                    .arg(isGood(target, *summary) ? QString() : QStringLiteral("  FAILED")));
        }
    }
    if (!isKnown) {
        throw std::runtime_error("no application is called " + only.toStdString());
    }
    keep(arguments.value(QStringLiteral("results")), results);
    return good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser arguments;
    arguments.addHelpOption();
    arguments.addOption({QStringLiteral("runs"), QStringLiteral("takes into each"), QStringLiteral("n"),
                         QStringLiteral("10")});
    arguments.addOption({QStringLiteral("characters"), QStringLiteral("in each take"), QStringLiteral("n"),
                         QStringLiteral("2000")});
    arguments.addOption({QStringLiteral("waits"),
                         QStringLiteral("takes of 200 characters that stream at 150 a second"),
                         QStringLiteral("n"), QStringLiteral("0")});
    arguments.addOption({QStringLiteral("app"), QStringLiteral("this one only"), QStringLiteral("name")});
    arguments.addOption(
        {QStringLiteral("results"), QStringLiteral("writes the figures there"), QStringLiteral("file")});
    arguments.addOption({QStringLiteral("verbose"), QStringLiteral("a line for each take")});
    arguments.process(application);
    try {
        return runAll(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "typing_matrix: %s\n", error.what());
        return 2;
    }
}

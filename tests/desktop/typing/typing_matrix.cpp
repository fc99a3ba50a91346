// SPDX-License-Identifier: GPL-3.0-or-later
// Takes of many scripts through the real program into real applications, with what stands there compared to
// what should: a line for each application, and with --markdown the rows of a table. Runs in a virtual
// desktop. Fails when a character is wrong or an application is not typed into that can be.
#include "TypingTrial.h"

#include "support/Corpus.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstdio>

namespace {

using namespace lorvane;

struct Summary {
    QString way;
    int runs = 0;
    int characters = 0;
    int wrong = 0;
    int typed = 0; // runs that needed no paste
    std::vector<double> rates;
    QStringList settled;

    [[nodiscard]] double rate() const {
        auto sorted = rates;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[sorted.size() / 2];
    }
};

struct Options {
    int runs;
    int characters;
    bool verbose;
};

QString howSettled(const QStringList& settled) {
    QStringList kinds = settled;
    kinds.removeDuplicates();
    QStringList counted;
    for (const QString& kind : kinds) {
        counted.append(kinds.size() == 1 ? kind
                                         : QStringLiteral("%1 × %2").arg(settled.count(kind)).arg(kind));
    }
    return counted.join(QStringLiteral(", "));
}

void say(const QString& line) {
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

bool isGood(const TypingTarget& target, const Summary& summary) {
    const bool isTypedInto = target.isTerminal ? summary.way.isEmpty() : !summary.way.isEmpty();
    return summary.wrong == 0 && isTypedInto;
}

Summary run(const TypingTarget& target, const Options& options) {
    TypingTrial trial(target);
    Summary summary;
    for (int number = 1; number <= options.runs; ++number) {
        const auto seed = static_cast<unsigned>(number);
        const QString text = corpus::mixed(options.characters, seed);
        const TypingResult result = trial.type(text, corpus::fragments(text, seed));
        summary.runs++;
        summary.characters += result.characters;
        summary.wrong += result.wrong;
        summary.typed += result.settled == QLatin1String("typed") ? 1 : 0;
        summary.rates.push_back((result.characters - result.wrong) / result.typing);
        summary.settled.append(result.settled);
        if (options.verbose || result.wrong != 0) {
            say(QStringLiteral("%1 run %2: %3 wrong, %4 s, %5")
                    .arg(target.name)
                    .arg(number)
                    .arg(result.wrong)
                    .arg(result.typing, 0, 'f', 2)
                    .arg(result.settled));
        }
        if (result.wrong != 0) {
            say(QStringLiteral("it holds\n%1\ninstead of\n%2").arg(result.seen, text));
        }
    }
    summary.way = trial.way();
    if (!isGood(target, summary)) {
        say(trial.log());
    }
    return summary;
}

QString row(const TypingTarget& target, const Summary& summary) {
    const QStringList cells{target.toolkit,
                            summary.way.isEmpty() ? QStringLiteral("paste") : summary.way,
                            QString::number(summary.runs),
                            QString::number(summary.characters),
                            QString::number(summary.wrong),
                            QString::number(summary.rate(), 'f', 0),
                            howSettled(summary.settled)};
    return QStringLiteral("| %1 |").arg(cells.join(QStringLiteral(" | ")));
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

int runAll(const QCommandLineParser& arguments) {
    const Options options{arguments.value(QStringLiteral("runs")).toInt(),
                          arguments.value(QStringLiteral("characters")).toInt(),
                          arguments.isSet(QStringLiteral("verbose"))};
    const QString only = arguments.value(QStringLiteral("app"));
    QStringList rows;
    bool good = true;
    for (const TypingTarget& target : typingTargets()) {
        if (!only.isEmpty() && target.name != only) {
            continue;
        }
        const auto summary = tryToRun(target, options);
        good = good && summary && isGood(target, *summary);
        if (!summary) {
            continue;
        }
        rows.append(row(target, *summary));
        say(rows.back() + (isGood(target, *summary) ? QString() : QStringLiteral("  FAILED")));
    }
    if (rows.isEmpty() && good) {
        throw std::runtime_error("no application is called " + only.toStdString());
    }
    if (QFile file(arguments.value(QStringLiteral("markdown"))); !file.fileName().isEmpty()) {
        if (!file.open(QIODevice::WriteOnly)) {
            throw std::runtime_error("the rows cannot be written");
        }
        file.write(rows.join(QChar(u'\n')).toUtf8() + '\n');
    }
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
    arguments.addOption({QStringLiteral("app"), QStringLiteral("this one only"), QStringLiteral("name")});
    arguments.addOption(
        {QStringLiteral("markdown"), QStringLiteral("writes the rows there"), QStringLiteral("file")});
    arguments.addOption({QStringLiteral("verbose"), QStringLiteral("a line for each take")});
    arguments.process(application);
    try {
        return runAll(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "typing_matrix: %s\n", error.what());
        return 2;
    }
}

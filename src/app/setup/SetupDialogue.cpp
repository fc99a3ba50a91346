// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupDialogue.h"

namespace lorvane {

namespace {

constexpr int done = 0;
constexpr int notDone = 1;

/// Yes in the languages that the program speaks.
bool isYes(const QString& line) {
    static const QStringList words{QStringLiteral("y"),  QStringLiteral("yes"), QStringLiteral("j"),
                                   QStringLiteral("ja"), QStringLiteral("o"),   QStringLiteral("oui"),
                                   QStringLiteral("s"),  QStringLiteral("si"),  QStringLiteral("sí"),
                                   QStringLiteral("д"),  QStringLiteral("да")};
    return words.contains(line.trimmed().toLower());
}

void printProblems(const QStringList& problems, const SetupTerminal& terminal, const Localisation& words) {
    for (const QString& problem : problems) {
        terminal.print(words.text(QStringLiteral("Could not be done: %1")).arg(problem));
    }
}

int undo(SetupRunner& runner, const SetupTerminal& terminal, const Localisation& words) {
    if (!runner.hasAnythingToUndo()) {
        terminal.print(words.text(QStringLiteral("There is nothing to undo.")));
        return done;
    }
    const QStringList problems = runner.undo();
    printProblems(problems, terminal, words);
    if (!problems.isEmpty()) {
        return notDone;
    }
    terminal.print(words.text(QStringLiteral("Everything is as it was before.")));
    return done;
}

} // namespace

int runSetupDialogue(const SetupRequest& request, const SetupFacts& facts, SetupRunner& runner,
                     const SetupTerminal& terminal, const Localisation& words) {
    if (request.undo) {
        return undo(runner, terminal, words);
    }
    const SetupPlan plan = planSetup(request.topic, facts, words);
    for (const QString& sentence : plan.told) {
        terminal.print(sentence);
    }
    if (request.topic == SetupTopic::hold && facts.desktop != SetupDesktop::x11) {
        terminal.print(words.text(QStringLiteral("Commands can be bound as well:")));
        terminal.print(bindingLines(facts.desktop));
    }
    if (!plan.changesAnything()) {
        return done;
    }
    for (const SetupFile& file : plan.files) {
        terminal.print(words.text(QStringLiteral("Writes %1")).arg(file.path));
    }
    for (const SetupKey& key : plan.keys) {
        terminal.print(words.text(QStringLiteral("Sets %1 in %2")).arg(QString::fromUtf8(key.key), key.path));
    }
    if (!request.yes && !isYes(terminal.ask(words.text(QStringLiteral("Do this? [y/N] "))))) {
        terminal.print(words.text(QStringLiteral("Nothing was changed.")));
        return notDone;
    }
    const QStringList problems = runner.apply(plan);
    printProblems(problems, terminal, words);
    if (!problems.isEmpty()) {
        return notDone;
    }
    terminal.print(words.text(QStringLiteral("Done. \"--undo\" takes it back.")));
    for (const QString& sentence : plan.afterwards) {
        terminal.print(sentence);
    }
    return done;
}

} // namespace lorvane

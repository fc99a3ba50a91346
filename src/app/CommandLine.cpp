// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include <array>
#include <utility>

namespace lorvane {

namespace {

using Verb = Command::Verb;

constexpr std::array<std::pair<const char*, Verb>, 13> verbs{{
    {"start", Verb::start},
    {"stop", Verb::stop},
    {"toggle", Verb::toggle},
    {"cancel", Verb::cancel},
    {"status", Verb::status},
    {"open", Verb::open},
    {"quit", Verb::quit},
    {"doctor", Verb::doctor},
    {"help", Verb::help},
    {"--help", Verb::help},
    {"-h", Verb::help},
    {"--version", Verb::version},
    {"version", Verb::version},
}};

std::optional<Verb> verbNamed(const QString& name) {
    for (const auto& [known, verb] : verbs) {
        if (name == QLatin1String(known)) {
            return verb;
        }
    }
    return std::nullopt;
}

bool takesJson(Verb verb) { return verb == Verb::status || verb == Verb::doctor; }

} // namespace

QStringList argumentsOf(int argc, const char* const* argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

std::optional<Command> parseCommand(const QStringList& arguments, QString& problem) {
    Command command;
    if (arguments.isEmpty()) {
        return command;
    }
    const auto verb = verbNamed(arguments.first());
    if (!verb) {
        problem = QStringLiteral("unknown command \"%1\"").arg(arguments.first());
        return std::nullopt;
    }
    command.verb = *verb;
    for (const QString& option : arguments.mid(1)) {
        if (option == QLatin1String("--json") && takesJson(*verb)) {
            command.json = true;
        } else {
            problem = QStringLiteral("\"%1\" takes no \"%2\"").arg(arguments.first(), option);
            return std::nullopt;
        }
    }
    return command;
}

QString usageText() {
    return QStringLiteral(
        "Usage: lorvane [COMMAND]\n"
        "\n"
        "Dictation at the cursor. Without a command the program starts and stays in the background; when it\n"
        "runs already, its window is opened instead.\n"
        "\n"
        "Commands, sent to the running program:\n"
        "  start            begin a hands-free dictation\n"
        "  stop             end it and have the text delivered\n"
        "  toggle           start or stop\n"
        "  cancel           throw the running take away\n"
        "  status [--json]  what the program does now\n"
        "  open             open its window\n"
        "  quit             end it\n"
        "\n"
        "Commands of their own:\n"
        "  doctor [--json]  what of this desktop works, and how to mend what does not\n"
        "  help, --help     this text\n"
        "  --version        the version\n"
        "\n"
        "Exit status: 0 done, 1 the program does not run or dictation cannot work, 2 a wrong call.\n"
        "\n"
        "Environment: LORVANE_BACKEND_URL, the address of a backend to use instead of the one that comes\n"
        "with the program.\n");
}

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include <array>
#include <utility>

namespace lorvane {

namespace {

using Verb = Command::Verb;

constexpr std::array<std::pair<const char*, Verb>, 14> verbs{{
    {"start", Verb::start},
    {"stop", Verb::stop},
    {"toggle", Verb::toggle},
    {"cancel", Verb::cancel},
    {"status", Verb::status},
    {"open", Verb::open},
    {"quit", Verb::quit},
    {"doctor", Verb::doctor},
    {"setup", Verb::setup},
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

std::optional<SetupTopic> topicNamed(const QString& name) {
    if (name == QLatin1String("hold")) {
        return SetupTopic::hold;
    }
    return name == QLatin1String("typing") ? std::optional(SetupTopic::typing) : std::nullopt;
}

bool takeSetupOption(const QString& option, Command& command) {
    if (option == QLatin1String("--undo")) {
        command.setup.undo = true;
    } else if (option == QLatin1String("--yes")) {
        command.setup.yes = true;
    } else if (option == QLatin1String("--key-devices") && command.setup.topic == SetupTopic::hold) {
        command.keyDevices = true;
    } else {
        return false;
    }
    return true;
}

std::optional<Command> parseSetup(const QStringList& arguments, QString& problem) {
    const auto topic = topicNamed(arguments.value(1));
    if (!topic) {
        problem = QStringLiteral("\"setup\" needs \"hold\" or \"typing\"");
        return std::nullopt;
    }
    Command command;
    command.verb = Verb::setup;
    command.setup.topic = *topic;
    for (const QString& option : arguments.mid(2)) {
        if (!takeSetupOption(option, command)) {
            problem = QStringLiteral("\"setup %1\" takes no \"%2\"").arg(arguments[1], option);
            return std::nullopt;
        }
    }
    return command;
}

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
    if (*verb == Verb::setup) {
        return parseSetup(arguments, problem);
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
        "  setup hold       let a key be held on a desktop that does not show it at once; tells what it "
        "would\n"
        "                   do and asks. --undo: take it back; --yes: do not ask; --key-devices: read the\n"
        "                   keyboards themselves\n"
        "  setup typing     let text be typed and pasted everywhere; --undo and --yes as above\n"
        "  help, --help     this text\n"
        "  --version        the version\n"
        "\n"
        "Exit status: 0 done, 1 the program does not run or dictation cannot work, 2 a wrong call.\n"
        "\n"
        "Environment: LORVANE_BACKEND_URL, the address of a backend to use instead of the one that comes\n"
        "with the program.\n");
}

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Verb = Command::Verb;

std::optional<Command> parse(const QStringList& arguments) {
    QString problem;
    const auto command = parseCommand(arguments, problem);
    EXPECT_EQ(command.has_value(), problem.isEmpty()) << problem.toStdString();
    return command;
}

QString problemWith(const QStringList& arguments) {
    QString problem;
    EXPECT_FALSE(parseCommand(arguments, problem));
    return problem;
}

TEST(CommandLine, WithoutACommandTheProgramRuns) {
    const auto command = parse({});
    ASSERT_TRUE(command);
    EXPECT_EQ(command->verb, Verb::run);
    EXPECT_FALSE(command->json);
}

TEST(CommandLine, EachCommandIsKnownByItsName) {
    const std::vector<std::pair<QString, Verb>> all{
        {QStringLiteral("start"), Verb::start},      {QStringLiteral("stop"), Verb::stop},
        {QStringLiteral("toggle"), Verb::toggle},    {QStringLiteral("cancel"), Verb::cancel},
        {QStringLiteral("status"), Verb::status},    {QStringLiteral("open"), Verb::open},
        {QStringLiteral("quit"), Verb::quit},        {QStringLiteral("doctor"), Verb::doctor},
        {QStringLiteral("help"), Verb::help},        {QStringLiteral("--help"), Verb::help},
        {QStringLiteral("-h"), Verb::help},          {QStringLiteral("version"), Verb::version},
        {QStringLiteral("--version"), Verb::version}};
    for (const auto& [name, verb] : all) {
        const auto command = parse({name});
        ASSERT_TRUE(command) << name.toStdString();
        EXPECT_EQ(command->verb, verb) << name.toStdString();
        EXPECT_FALSE(command->json);
    }
}

TEST(CommandLine, SetupTakesATopicAndItsOptions) {
    const auto hold = parse({QStringLiteral("setup"), QStringLiteral("hold"), QStringLiteral("--yes"),
                             QStringLiteral("--key-devices")});
    ASSERT_TRUE(hold);
    EXPECT_EQ(hold->verb, Verb::setup);
    EXPECT_EQ(hold->setup.topic, SetupTopic::hold);
    EXPECT_TRUE(hold->setup.yes);
    EXPECT_TRUE(hold->keyDevices);
    EXPECT_FALSE(hold->setup.undo);
    const auto typing = parse({QStringLiteral("setup"), QStringLiteral("typing"), QStringLiteral("--undo")});
    ASSERT_TRUE(typing);
    EXPECT_EQ(typing->setup.topic, SetupTopic::typing);
    EXPECT_TRUE(typing->setup.undo);
    EXPECT_FALSE(typing->setup.yes);
}

TEST(CommandLine, SetupWithoutATopicOrWithOtherOptionsIsRefused) {
    EXPECT_FALSE(problemWith({QStringLiteral("setup")}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("setup"), QStringLiteral("--yes")}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("setup"), QStringLiteral("everything")}).isEmpty());
    EXPECT_FALSE(
        problemWith({QStringLiteral("setup"), QStringLiteral("hold"), QStringLiteral("--json")}).isEmpty());
    EXPECT_FALSE(
        problemWith({QStringLiteral("setup"), QStringLiteral("typing"), QStringLiteral("--key-devices")})
            .isEmpty());
}

TEST(CommandLine, StatusAndDoctorTakeJson) {
    for (const QString& name : {QStringLiteral("status"), QStringLiteral("doctor")}) {
        const auto command = parse({name, QStringLiteral("--json")});
        ASSERT_TRUE(command) << name.toStdString();
        EXPECT_TRUE(command->json);
    }
}

TEST(CommandLine, OthersTakeNoJson) {
    for (const QString& name : {QStringLiteral("start"), QStringLiteral("quit"), QStringLiteral("help")}) {
        EXPECT_EQ(problemWith({name, QStringLiteral("--json")}),
                  QStringLiteral("\"%1\" takes no \"--json\"").arg(name));
    }
}

TEST(CommandLine, AnUnknownCommandIsNamed) {
    EXPECT_EQ(problemWith({QStringLiteral("begin")}), QStringLiteral("unknown command \"begin\""));
    EXPECT_EQ(problemWith({QStringLiteral("Start")}), QStringLiteral("unknown command \"Start\""));
    EXPECT_EQ(problemWith({QString()}), QStringLiteral("unknown command \"\""));
    EXPECT_EQ(problemWith({QStringLiteral("--json")}), QStringLiteral("unknown command \"--json\""));
}

TEST(CommandLine, ASecondWordIsRefused) {
    EXPECT_EQ(problemWith({QStringLiteral("start"), QStringLiteral("stop")}),
              QStringLiteral("\"start\" takes no \"stop\""));
    EXPECT_EQ(problemWith({QStringLiteral("status"), QStringLiteral("--json"), QStringLiteral("now")}),
              QStringLiteral("\"status\" takes no \"now\""));
}

TEST(CommandLine, TheHelpNamesEachCommand) {
    for (const char* const name : {"start", "stop", "toggle", "cancel", "status", "open", "quit", "doctor",
                                   "--help", "--version", "LORVANE_BACKEND_URL"}) {
        EXPECT_TRUE(usageText().contains(QLatin1String(name))) << name;
    }
}

} // namespace

} // namespace lorvane

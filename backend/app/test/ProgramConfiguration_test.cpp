// SPDX-License-Identifier: GPL-3.0-or-later
// What the program is told, and from where.
#include "BackendProgram.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>

using namespace lorvane::backend::testing;

namespace {

struct Ended {
    int status;
    std::string out;
    std::string log;
};

// Runs to its end with these variables set.
Ended ran(const TemporaryFolder& folder, const std::vector<std::string>& arguments,
          const std::map<std::string, std::string>& variables = {}) {
    BackendProgram program(folder, arguments, "ran", [&] {
        for (const auto& [name, value] : variables)
            ::setenv(name.c_str(), value.c_str(), 1);
    });
    const int status = program.wait();
    return {status, program.out(), program.log()};
}

// The source and the value of a key in what --print-config prints.
std::pair<std::string, std::string> printed(const std::string& config, const std::string& key) {
    const auto at = config.find('\n' + key + " = ");
    if (at == std::string::npos)
        return {"none", ""};
    const auto source = config.rfind("# ", at);
    const auto value = at + key.size() + 4;
    return {config.substr(source + 2, at - source - 2),
            config.substr(value, config.find('\n', value) - value)};
}

std::set<std::string> longOptions(const std::string& text) {
    static const std::regex form("--[a-z][a-z-]*");
    return {std::sregex_token_iterator(text.begin(), text.end(), form), {}};
}

class ProgramConfiguration : public ::testing::Test {
 protected:
    TemporaryFolder folder_;
};

} // namespace

TEST_F(ProgramConfiguration, TheCommandLineGoesBeforeTheEnvironmentAndThatBeforeTheFile) {
    const auto file = (folder_ / "backend.conf").string();
    put(file, "# bounds\n\n workers = 2\nqueue=\"7\"\r\naudio-limit = 1.5\nmodels = \"/a \\\"b\\\" # c\"\n");
    const auto all = ran(folder_, {"--config", file, "--workers", "4", "--print-config"},
                         {{"LORVANE_BACKEND_WORKERS", "3"}, {"LORVANE_BACKEND_QUEUE", "9"}});
    ASSERT_EQ(all.status, 0) << all.log;
    using Printed = std::pair<std::string, std::string>;
    EXPECT_EQ(printed(all.out, "workers"), Printed("command line", "\"4\""));
    EXPECT_EQ(printed(all.out, "queue"), Printed("LORVANE_BACKEND_QUEUE", "\"9\""));
    EXPECT_EQ(printed(all.out, "audio-limit"), Printed(file, "\"1.5\""));
    EXPECT_EQ(printed(all.out, "models"), Printed(file, "\"/a \\\"b\\\" # c\""));
    EXPECT_EQ(printed(all.out, "drain"), Printed("default", "\"5\""));
    EXPECT_EQ(ran(folder_, {"--print-config"}, {{"LORVANE_BACKEND_CONFIG", file}}).out.find("command line"),
              std::string::npos);
}

TEST_F(ProgramConfiguration, WhatIsPrintedIsAFileThatMeansTheSame) {
    const std::vector<std::string> options{"--listen",   "[::1]:0",   "--phone-goal",  "33",
                                           "--database", "/x/\"y.db", "--print-config"};
    const auto first = ran(folder_, options).out;
    put(folder_ / "printed.conf", first);
    const auto second = ran(folder_, {"--config", (folder_ / "printed.conf").string(), "--print-config"}).out;
    for (const char* key : {"listen", "phone-goal", "database", "workers", "smtp-tls"})
        EXPECT_EQ(printed(first, key).second, printed(second, key).second) << key;
    EXPECT_EQ(printed(second, "database").second, "\"/x/\\\"y.db\"");
}

TEST_F(ProgramConfiguration, AnErrorNamesTheKeyAndWhereItStands) {
    const auto file = (folder_ / "backend.conf").string();
    const std::pair<std::string, std::string> files[] = {
        {"wrokers = 2\n", file + ": wrokers: there is no such key"},
        {"help = 1\n", file + ": help: there is no such key"},
        {"config = x\n", file + ": config: there is no such key"},
        {"workers = many\n", file + ": workers: "},
        {"workers = 300\n", file + ": workers: "},
        {"\nworkers = 1\nworkers = 2\n", file + ":3: workers stands there a second time"},
        {"queue 5\n", file + ":1: no \"key = value\""},
        {"models = \"x\n", file + ":1: models: the quotes"},
        {"smtp-url = smtp://localhost\n", "mail-from: wanted with smtp-url"},
        {"smtp-user = me\n", "smtp-url: wanted"},
        {"mail-from = nobody\n", "mail-from: no mail address"},
        {"public-url = ftp://x\n", "public-url: "},
        {"releases = /tmp\n", "releases-url: wanted"},
        {"releases = /tmp\nreleases-url = https://x\nrelease-key = abc\n", "release-key: "},
        {"listen = 127.0.0.1:99999\n", "listen: "},
        {"port = 1x\n", "port: "},
        {"trusted-proxies = 10.0.0.0/33\n", "trusted-proxies: no list"},
        {"written-at-once = 0\n", "written-at-once: "},
        {"database = postgresql://me:hunter2@db/x\n", "database: no password in the address"},
        {"database = postgresql://db/x?nonsense=1\n", "database: no address"},
        {"database-password-file = /etc/hostname\n", "database-password-file: wanted for postgresql"},
        {"database = postgresql://db/x\ndatabase-password-file = /absent\n", "database-password-file: "},
        {"speech = sphinx http://x\n", "speech: \"sphinx\" is no kind"},
        {"speech = generic x\n", "speech: after generic"},
        {"speech = openai https://x\n", "speech: openai wants a model"},
        {"speech = generic http://x lang=en\n", "speech: \"lang\" is neither"},
        {"speech = generic http://me:hunter2@x\n", "speech: no user and password"},
        {"language = generic https://me:hunter2@x/y\n", "language: no user and password"},
        {"speech = generic http://x key-file=/absent\n", "speech: /absent cannot be read"},
        {"language = whispercpp http://x\n", "language: \"whispercpp\" is no kind"},
        {"language = vllm http://x\n", "language: vllm wants a model"},
        {"take-memory = 50\n", "take-memory: too little for one take of audio-limit"},
        {"audio-limit = 600\n", "take-memory: too little for one take of audio-limit"},
    };
    for (const auto& [text, expected] : files) {
        put(file, text);
        const auto ended = ran(folder_, {"--config", file, "--print-config"});
        EXPECT_GT(ended.status, 100) << text;
        EXPECT_NE(ended.log.find(expected), std::string::npos) << text << ended.log;
        EXPECT_EQ(ended.out, "") << text;
        EXPECT_EQ(ended.log.find("hunter2"), std::string::npos) << text << ended.log;
    }
    EXPECT_NE(ran(folder_, {}, {{"LORVANE_BACKEND_IO_THREADS", "900"}})
                  .log.find("LORVANE_BACKEND_IO_THREADS: io-threads: "),
              std::string::npos);
    EXPECT_NE(ran(folder_, {"--config", "/absent/file"}).log.find("/absent/file: cannot be read"),
              std::string::npos);
}

TEST_F(ProgramConfiguration, ThePasswordOfTheMailServerIsNotPrinted) {
    put(folder_ / "password", "hunter2\n");
    const auto ended = ran(folder_, {"--print-config", "--smtp-url", "smtp://localhost:25", "--smtp-user",
                                     "me", "--smtp-password-file", (folder_ / "password").string(),
                                     "--mail-from", "a@example.org", "--feedback-to", "b@example.org"});
    EXPECT_EQ(ended.status, 0) << ended.log;
    EXPECT_EQ((ended.out + ended.log).find("hunter2"), std::string::npos);
    EXPECT_NE(ended.out.find("smtp-password-file"), std::string::npos);
    EXPECT_GT(ran(folder_, {"--smtp-url", "smtp://localhost:25", "--smtp-user", "me", "--smtp-password-file",
                            (folder_ / "password").string(), "--mail-from", "a@example.org", "--feedback-to",
                            "b@example.org", "--smtp-tls", "off"})
                  .status,
              100)
        << "a password in the clear";
}

TEST_F(ProgramConfiguration, TheManualPageHasEveryOptionAndNoOther) {
    auto page = readFile(LORVANE_BACKEND_MANUAL);
    page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
    auto documented = longOptions(page);
    auto offered = longOptions(ran(folder_, {"--help"}).out);
    EXPECT_GT(offered.size(), 30U);
    EXPECT_EQ(documented, offered);
}

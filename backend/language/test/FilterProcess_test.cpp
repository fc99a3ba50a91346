// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/FilterProcess.h"
#include "testing/ServerUnderTest.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

std::optional<std::string> shell(const std::string& script, const std::string& input = {},
                                 FilterBounds bounds = {}, const std::stop_token& stop = {}) {
    return filter({"/bin/sh", "-c", script}, input, bounds, stop);
}

// Not there any more, or dead and not yet asked for by its new parent.
bool gone(const std::string& pid) {
    std::ifstream stat("/proc/" + std::to_string(std::stoi(pid)) + "/stat");
    std::string line;
    return !std::getline(stat, line) || line.find(") Z") != std::string::npos;
}

} // namespace

TEST(FilterProcess, TheInputComesOutAsTheProgramWritesIt) {
    const std::string big(300'000, 'a');
    EXPECT_EQ(shell("cat", big), big);
    EXPECT_EQ(shell("tr a-z A-Z", "hello"), "HELLO");
    EXPECT_EQ(shell("true"), "");
}

// A listening socket, above all: its port would stay taken after the end of the server.
TEST(FilterProcess, TheProgramGetsNothingThatIsOpenHere) {
    constexpr int number = 57;
    ASSERT_EQ(::dup2(STDIN_FILENO, number), number);
    EXPECT_EQ(shell("[ -e /proc/$$/fd/1 ] && [ ! -e /proc/$$/fd/57 ] && echo closed"), "closed\n");
    ::close(number);
}

TEST(FilterProcess, AFailureIsNoOutput) {
    EXPECT_FALSE(shell("echo partly; exit 3"));
    EXPECT_FALSE(shell("kill -SEGV $$"));
    EXPECT_FALSE(filter({"/nowhere/program"}, "x", {}, {}));
    EXPECT_FALSE(filter({}, "x", {}, {}));
}

TEST(FilterProcess, TooMuchAndTooLateAreCutOff) {
    EXPECT_FALSE(shell("yes", {}, {10s, 100'000}));
    const auto began = Clock::now();
    EXPECT_FALSE(shell("sleep 30", {}, {200ms, 1000}));
    EXPECT_FALSE(shell("exec >&-; sleep 30", {}, {200ms, 1000})) << "it may close its output and stay";
    EXPECT_LT(Clock::now() - began, 20s);
}

TEST(FilterProcess, NothingThatItStartedStays) {
    const auto pid = shell("sleep 300 >/dev/null & echo $!");
    ASSERT_TRUE(pid);
    EXPECT_TRUE(eventually([&] { return gone(*pid); }));
}

TEST(FilterProcess, AStopEndsItAtOnce) {
    std::stop_source stop;
    std::thread stops([&] { stop.request_stop(); });
    const auto began = Clock::now();
    EXPECT_FALSE(shell("sleep 30", {}, {}, stop.get_token()));
    stops.join();
    EXPECT_LT(Clock::now() - began, 20s);
}

TEST(FilterProcess, ItKnowsNothingOfOurs) {
    ::setenv("LORVANE_TEST_SECRET", "x", 1);
    ::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(shell("echo ${LORVANE_TEST_SECRET:-none}"), "none\n");
    EXPECT_EQ(shell("(yes; echo $? >&2) 2>&1 | head -n 1"), "y\n")
        << "a broken pipe ends what writes into it";
    ::signal(SIGPIPE, SIG_DFL);
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The program itself, as a process.
#include "testing/BackendUnderTest.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

// Runs the program with its standard streams in files. The destructor ends what still runs.
class Program {
 public:
    Program(const TemporaryFolder& folder, const std::vector<std::string>& arguments,
            const std::string& name = "run")
        : out_(folder / (name + ".out")), log_(folder / (name + ".log")), pid_(::fork()) {
        if (pid_ != 0)
            return;
        exec(arguments);
    }
    ~Program() {
        if (pid_ > 0 && !status_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t pid() const { return pid_; }
    std::string out() const { return std::filesystem::exists(out_) ? readFile(out_) : ""; }
    std::string log() const { return std::filesystem::exists(log_) ? readFile(log_) : ""; }

    // The exit status, or -1 for an end by a signal, -2 for none within the time.
    int wait(std::chrono::milliseconds bound = 20s) {
        const bool ended = eventually(
            [this] {
                int status = 0;
                if (::waitpid(pid_, &status, WNOHANG) == pid_)
                    status_ = status;
                return status_.has_value();
            },
            bound);
        if (!ended)
            return -2;
        return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : -1;
    }

 private:
    [[noreturn]] void exec(const std::vector<std::string>& arguments) {
        ::dup2(::open(out_.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
        ::dup2(::open(log_.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDERR_FILENO);
        std::vector<char*> argv{const_cast<char*>(LORVANE_BACKEND_PROGRAM)};
        for (const auto& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(LORVANE_BACKEND_PROGRAM, argv.data());
        ::_exit(127);
    }

    const std::filesystem::path out_;
    const std::filesystem::path log_;
    const pid_t pid_;
    std::optional<int> status_;
};

bool alive(pid_t pid) { return ::kill(pid, 0) == 0; }

} // namespace

class ProgramTest : public ::testing::Test {
 protected:
    std::vector<std::string> usual(std::vector<std::string> more = {}) {
        std::vector<std::string> all{"--listen",    "127.0.0.1:0",
                                     "--port-file", (folder_ / "port").string(),
                                     "--database",  (folder_ / "data/backend.sqlite").string()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    // 0 when it did not come up.
    std::uint16_t port() {
        const bool up = eventually([this] { return std::filesystem::exists(folder_ / "port"); });
        return up ? static_cast<std::uint16_t>(std::stoi(readFile(folder_ / "port"))) : 0;
    }
    TemporaryFolder folder_;
};

TEST_F(ProgramTest, ItSaysWhereItListensAndAnswersThere) {
    Program program(folder_, usual());
    const auto at = port();
    ASSERT_NE(at, 0) << program.log();
    EXPECT_EQ(request(at, {"GET", "/healthz", "", "", "", "", ""}).status, 200);
    EXPECT_EQ(program.out(), "listening on http://127.0.0.1:" + std::to_string(at) + "\n");
    EXPECT_TRUE(std::filesystem::exists(folder_ / "data/backend.sqlite"));
    ::kill(program.pid(), SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.log();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "port"));
}

TEST_F(ProgramTest, ItListensBeforeTheModelIsLoaded) {
    const auto began = std::chrono::steady_clock::now();
    Program program(folder_, usual());
    ASSERT_NE(port(), 0);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    std::printf("listening after %.0f ms\n", took.count());
    EXPECT_LT(took.count(), 2000) << "a generous bound; the figure is what counts";
}

TEST_F(ProgramTest, ATokenOutlivesTheProcessAndIsInNoLog) {
    std::string token;
    std::string logs;
    const auto audio = readFile("/usr/share/pocketsphinx/test/data/goforward.raw");
    std::vector<std::int16_t> samples(audio.size() / 2);
    std::memcpy(samples.data(), audio.data(), samples.size() * 2);
    for (int run = 0; run < 2; ++run) {
        Program program(folder_, usual(), "run" + std::to_string(run));
        const auto at = port();
        ASSERT_NE(at, 0) << program.log();
        if (run == 0)
            token = member(request(at, {"POST", "/api/register", "", "application/json", "", "",
                                        R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
                               .body,
                           "token");
        const Call call{"POST",
                        "/api/dictate",
                        token,
                        "application/vnd.tirra.take",
                        "the-take-id",
                        "",
                        framedTake(R"({"ext":"wav","prefix":"confidential words"})", wavFile(samples))};
        const auto reply = request(at, call);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(member(reply.body, "text"), "Confidential words go forward ten meters.");
        request(at, {"GET", "/" + token, "", "", "", "", ""});
        request(at, {"GET", "/api/dictate?token=" + token, "", "", "", "", ""});
        ::kill(program.pid(), SIGTERM);
        EXPECT_EQ(program.wait(), 0);
        logs += program.log() + program.out();
    }
    EXPECT_NE(logs.find("POST /api/dictate 200"), std::string::npos) << logs;
    for (const std::string& secret : {token, token.substr(0, 8), std::string("onfidential"),
                                      std::string("forward"), std::string("the-take-id")})
        EXPECT_EQ(logs.find(secret), std::string::npos) << logs;
}

TEST_F(ProgramTest, ItEndsWithAParentThatIsKilled) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        Program child(folder_, usual({"--parent-watch"}));
        const pid_t pid = child.pid();
        if (::write(ends[1], &pid, sizeof pid) != sizeof pid)
            ::_exit(1);
        for (;;)
            ::pause();
    }
    // The orphan comes to this process, so that its end can be seen.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    pid_t child = 0;
    ASSERT_EQ(::read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
    ASSERT_NE(port(), 0);
    ASSERT_TRUE(alive(child));
    const auto began = std::chrono::steady_clock::now();
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    int status = -1;
    EXPECT_TRUE(eventually([&] { return ::waitpid(child, &status, WNOHANG) == child; }));
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    std::printf("ended %.0f ms after its parent\n", took.count());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(ProgramTest, ItEndsWhenTheParentWasGoneBeforeItStarted) {
    Program program(folder_, usual({"--parent-watch", "1"}));
    EXPECT_EQ(program.wait(), 0) << program.log();
}

TEST_F(ProgramTest, WithoutTheWatchItStays) {
    Program program(folder_, usual());
    ASSERT_NE(port(), 0);
    EXPECT_EQ(program.wait(1500ms), -2) << program.log();
}

TEST_F(ProgramTest, AnEndInTheMiddleOfATakeIsClean) {
    Program program(folder_, usual({"--drain", "0"}));
    const auto at = port();
    ASSERT_NE(at, 0);
    const auto token = member(request(at, {"POST", "/api/register", "", "application/json", "", "",
                                           R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
                                  .body,
                              "token");
    std::string audio;
    for (int i = 0; i < 20; ++i)
        audio += readFile("/usr/share/pocketsphinx/test/data/goforward.raw");
    std::vector<std::int16_t> samples(audio.size() / 2);
    std::memcpy(samples.data(), audio.data(), samples.size() * 2);
    Connection connection(at);
    connection.send(requestText({"POST", "/api/dictate-stream", token, "application/vnd.tirra.take", "", "",
                                 framedTake(R"({"ext":"wav"})", wavFile(samples))}));
    ASSERT_EQ(connection.readHead().status, 200);
    ::kill(program.pid(), SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.log();
}

TEST_F(ProgramTest, WrongOptionsAndAPortInUseAreSaid) {
    Program help(folder_, {"--help"}, "help");
    EXPECT_EQ(help.wait(), 0);
    EXPECT_NE(help.out().find("--parent-watch"), std::string::npos);
    Program unknown(folder_, {"--nonsense"}, "unknown");
    EXPECT_GT(unknown.wait(), 0);
    Program badPort(folder_, {"--listen", "127.0.0.1:99999"}, "badport");
    EXPECT_GT(badPort.wait(), 0);
    Program first(folder_, usual());
    const auto at = port();
    ASSERT_NE(at, 0);
    Program second(
        folder_,
        {"--listen", "127.0.0.1:" + std::to_string(at), "--database", (folder_ / "b.sqlite").string()},
        "second");
    EXPECT_EQ(second.wait(), 1);
    EXPECT_NE(second.log().find("cannot listen"), std::string::npos) << second.log();
}

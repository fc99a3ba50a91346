// SPDX-License-Identifier: GPL-3.0-or-later
// The program itself, as a process.
#include "BackendProgram.h"
#include "testing/BackendUnderTest.h"
#include "testing/ScriptedChat.h"
#include "testing/ScriptedUpstream.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"
#include "testing/TemporaryFolder.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

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
    BackendProgram program(folder_, usual());
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
    BackendProgram program(folder_, usual());
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
        BackendProgram program(folder_, usual(), "run" + std::to_string(run));
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
        EXPECT_EQ(member(reply.body, "text"), "Confidential words go forward 10 meters.");
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
        BackendProgram child(folder_, usual({"--parent-watch"}));
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
    BackendProgram program(folder_, usual({"--parent-watch", "1"}));
    EXPECT_EQ(program.wait(), 0) << program.log();
}

TEST_F(ProgramTest, WithoutTheWatchItStays) {
    BackendProgram program(folder_, usual());
    ASSERT_NE(port(), 0);
    EXPECT_EQ(program.wait(1500ms), -2) << program.log();
}

TEST_F(ProgramTest, AnEndInTheMiddleOfATakeIsClean) {
    BackendProgram program(folder_, usual({"--drain", "0"}));
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
    BackendProgram help(folder_, {"--help"}, "help");
    EXPECT_EQ(help.wait(), 0);
    EXPECT_NE(help.out().find("--parent-watch"), std::string::npos);
    BackendProgram unknown(folder_, {"--nonsense"}, "unknown");
    EXPECT_GT(unknown.wait(), 0);
    BackendProgram badPort(folder_, {"--listen", "127.0.0.1:99999"}, "badport");
    EXPECT_GT(badPort.wait(), 0);
    BackendProgram first(folder_, usual());
    const auto at = port();
    ASSERT_NE(at, 0);
    BackendProgram second(
        folder_,
        {"--listen", "127.0.0.1:" + std::to_string(at), "--database", (folder_ / "b.sqlite").string()},
        "second");
    EXPECT_EQ(second.wait(), 1);
    EXPECT_NE(second.log().find("cannot listen"), std::string::npos) << second.log();
}

TEST_F(ProgramTest, ASocketThatAServiceManagerHandsOverIsServed) {
    const int listening = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(listening, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(listening, 100), 0);
    ::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    const auto at = ntohs(address.sin_port);
    const auto hand = [&](const char* count) {
        return [listening, count] {
            ::dup2(listening, 3);
            ::setenv("LISTEN_FDS", count, 1);
            ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
        };
    };
    // The second begins while the first ends: whoever comes between them waits in the socket.
    for (const char* name : {"first", "second"}) {
        Connection early(at);
        early.send(requestText({"GET", "/healthz", "", "", "", "", ""}));
        BackendProgram program(folder_, usual(), name, hand("1"));
        EXPECT_EQ(early.readReply().status, 200) << program.log();
        EXPECT_EQ(port(), at);
        ::kill(program.pid(), SIGTERM);
        EXPECT_EQ(program.wait(), 0) << program.log();
    }
    BackendProgram two(folder_, usual(), "two", hand("2"));
    EXPECT_EQ(two.wait(), 1);
    EXPECT_NE(two.log().find("LISTEN_FDS is 2"), std::string::npos) << two.log();
    ::close(listening);
}

// One after the other, as a service manager does, and also side by side.
TEST_F(ProgramTest, ARestartWithAHandedOverSocketLosesNobody) {
    const int listening = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(listening, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(listening, 1000), 0);
    ::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    const auto at = ntohs(address.sin_port);
    const auto hand = [listening] {
        ::dup2(listening, 3);
        ::setenv("LISTEN_FDS", "1", 1);
        ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    };
    std::atomic<bool> ending = false;
    std::atomic<int> good = 0;
    std::atomic<int> lost = 0;
    std::vector<std::thread> clients;
    clients.reserve(4);
    for (int i = 0; i < 4; ++i)
        clients.emplace_back([&] {
            while (!ending)
                ++(request(at, {"GET", "/healthz", "", "", "", "", ""}).status == 200 ? good : lost);
        });
    auto running = std::make_unique<BackendProgram>(folder_, usual(), "run0", hand);
    for (int restart = 1; restart <= 6; ++restart) {
        const int before = good;
        EXPECT_TRUE(eventually([&] { return good > before + 50; })) << running->log();
        std::unique_ptr<BackendProgram> next;
        const auto start = [&] {
            next = std::make_unique<BackendProgram>(folder_, usual(), "run" + std::to_string(restart), hand);
        };
        if (restart % 2 == 0)
            start();
        ::kill(running->pid(), SIGTERM);
        EXPECT_EQ(running->wait(), 0) << running->log();
        if (restart % 2 == 1)
            start();
        running = std::move(next);
    }
    const int before = good;
    EXPECT_TRUE(eventually([&] { return good > before + 50; })) << running->log();
    ending = true;
    for (auto& client : clients)
        client.join();
    std::printf("%d answered, %d lost over six restarts\n", good.load(), lost.load());
    EXPECT_EQ(lost, 0);
    ::close(listening);
}

TEST_F(ProgramTest, AfterTheSignalItSaysUnreadyAndServesOnForTheDelay) {
    BackendProgram program(folder_, usual({"--drain-delay", "60"}));
    const auto at = port();
    ASSERT_NE(at, 0);
    const auto status = [&](const char* path) {
        return request(at, {"GET", path, "", "", "", "", ""}).status;
    };
    EXPECT_TRUE(eventually([&] { return status("/readyz") == 200; }));
    ::kill(program.pid(), SIGTERM);
    EXPECT_TRUE(eventually([&] { return status("/readyz") == 503; }));
    EXPECT_EQ(status("/healthz"), 200);
    ::kill(program.pid(), SIGTERM);
    EXPECT_EQ(program.wait(), 0) << "a second signal cuts the delay short";
}

TEST_F(ProgramTest, ATakeIsWrittenByTheFirstSpeechServerThatAnswers) {
    const ScriptedUpstream down([](const std::string&) { return std::optional(jsonAnswer(503, "")); });
    const ScriptedUpstream up([](const std::string&) {
        return std::optional(jsonAnswer(200, R"({"text":" Ich komme am Montag, ähm, vielleicht. "})"));
    });
    put(folder_ / "key", "the-secret-key\n");
    BackendProgram program(folder_,
                           usual({"--speech", "whispercpp " + down.url() + "; openai " + up.url() +
                                                  "/ model=large key-file=" + (folder_ / "key").string()}));
    const auto at = port();
    ASSERT_NE(at, 0) << program.log();
    const auto token = member(request(at, {"POST", "/api/register", "", "application/json", "", "",
                                           R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
                                  .body,
                              "token");
    const Call call{"POST",
                    "/api/dictate-stream",
                    token,
                    "application/vnd.tirra.take",
                    "",
                    "",
                    framedTake(R"({"ext":"wav","lang":"de","prefix":"Hallo Anna."})", wavFile(tone(1, 0.3)))};
    const auto stream = readStream(request(at, call).body);
    EXPECT_EQ(stream.deltas,
              (std::vector<std::string>{"Hallo Anna.", " Ich komme am Montag, ähm, vielleicht."}));
    EXPECT_EQ(stream.done, "Hallo Anna. Ich komme am Montag, ähm, vielleicht.");
    EXPECT_EQ(stream.raw, stream.done);
    EXPECT_NE(up.requests().at(0).find("Authorization: Bearer the-secret-key\r\n"), std::string::npos);
    EXPECT_EQ((program.log() + program.out()).find("the-secret-key"), std::string::npos);
    EXPECT_EQ(program.log().find("Montag"), std::string::npos);
}

TEST_F(ProgramTest, ATakeIsCleanedByTheLanguageServerThatIsNamed) {
    const ScriptedUpstream hears([](const std::string&) {
        return std::optional(jsonAnswer(200, R"({"text":"ähm ich komme am Montag"})"));
    });
    const ScriptedUpstream writes([](const std::string& request) {
        const bool label = readChatCall(request).system.find("\"label\"") != std::string::npos;
        return std::optional(chatAnswer({label ? R"({"label":"work"})" : "Ich komme am Montag."}));
    });
    put(folder_ / "key", "the-secret-key\n");
    BackendProgram program(
        folder_, usual({"--speech", "generic " + hears.url(), "--language",
                        "openai " + writes.url() + "/ model=small key-file=" + (folder_ / "key").string()}));
    const auto at = port();
    ASSERT_NE(at, 0) << program.log();
    const auto token = member(request(at, {"POST", "/api/register", "", "application/json", "", "",
                                           R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"})
                                  .body,
                              "token");
    const auto fields = framedTake(R"({"ext":"wav","lang":"de"})", wavFile(tone(1, 0.3)));
    const auto reply =
        request(at, {"POST", "/api/dictate", token, "application/vnd.tirra.take", "", "", fields});
    EXPECT_EQ(reply.body,
              R"({"text":"Ich komme am Montag.","raw":"ähm ich komme am Montag","category":"work"})");
    EXPECT_EQ(readChatCall(writes.requests().at(0)).model, "small");
    EXPECT_NE(writes.requests().at(0).find("Authorization: Bearer the-secret-key\r\n"), std::string::npos);
    EXPECT_EQ((program.log() + program.out()).find("the-secret-key"), std::string::npos);
    EXPECT_EQ(program.log().find("Montag"), std::string::npos);
}

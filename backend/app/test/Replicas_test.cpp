// SPDX-License-Identifier: GPL-3.0-or-later
// Three backends over one PostgreSQL behind nginx with the configuration that we ship, while backends come
// and go.
#include "testing/BackendUnderTest.h"
#include "testing/PostgresServer.h"
#include "testing/Program.h"
#include "testing/ScriptedUpstream.h"
#include "testing/Sound.h"

#include <array>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <regex>
#include <thread>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

constexpr int takes = 200;
constexpr int clients = 30;
constexpr const char* nginxProgram = "/usr/sbin/nginx";

// Lets requests through, or holds them.
class Gate {
 public:
    void pass() {
        std::unique_lock lock(mutex_);
        ++held_;
        changed_.wait(lock, [this] { return open_; });
        --held_;
    }
    void set(bool open) {
        {
            const std::lock_guard lock(mutex_);
            open_ = open;
        }
        changed_.notify_all();
    }
    int held() {
        const std::lock_guard lock(mutex_);
        return held_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = true;
    int held_ = 0;
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    if (at == std::string::npos)
        throw std::runtime_error("the sample has no " + from);
    return text.replace(at, from.size(), to);
}

} // namespace

class ReplicasTest : public ::testing::Test {
 protected:
    // Longer than any busy machine takes.
    explicit ReplicasTest(std::string databaseSeconds = "20")
        : databaseSeconds_(std::move(databaseSeconds)) {}

    void SetUp() override {
        for (std::size_t i = 0; i < ports_.size(); ++i) {
            ports_.at(i) = freePort();
            start(i);
        }
        startNginx();
        for (const auto port : ports_)
            ASSERT_TRUE(answers(port)) << "no replica at " << port;
        ASSERT_TRUE(answers(nginxPort_)) << nginx_->log();
        const auto reply = request(nginxPort_, {"POST", "/api/register", "", "application/json", "", "",
                                                R"({"device":"6F9619FF-8B86-D011-B42D-00C04FC964FF"})"});
        token_ = member(reply.body, "token");
        ASSERT_NE(token_, "") << reply.status << nginx_->log();
    }
    void TearDown() override {
        gate_.set(true);
        if (nginx_)
            ::kill(nginx_->pid(), SIGTERM); // or its workers would outlive it
        if (nginx_)
            nginx_->wait();
    }

    void start(std::size_t index) {
        const auto name = "replica" + std::to_string(index) + '-' + std::to_string(++started_);
        replicas_.at(index) = std::make_unique<Program>(
            folder_, LORVANE_BACKEND_PROGRAM,
            std::vector<std::string>{
                "--listen", "127.0.0.1:" + std::to_string(ports_.at(index)), "--database", database_,
                "--database-password-file", postgres_.passwordFile(), "--database-time", databaseSeconds_,
                "--speech", "vllm " + upstream_.url() + " model=any", "--workers", "16", "--drain-delay", "1",
                "--drain", "60",
                // No more than there are: a take that counts twice keeps another one out.
                "--takes-per-hour", std::to_string(takes), "--mail-spool", (folder_ / "mail").string()},
            name);
    }

    void startNginx() {
        auto site = readFile(LORVANE_NGINX_SAMPLE);
        site = replaced(site, "10.0.0.11:8790", "127.0.0.1:" + std::to_string(ports_[0]));
        site = replaced(site, "10.0.0.12:8790", "127.0.0.1:" + std::to_string(ports_[1]));
        site = replaced(site, "10.0.0.13:8790", "127.0.0.1:" + std::to_string(ports_[2]));
        site =
            replaced(site, "listen 443 ssl http2;", "listen 127.0.0.1:" + std::to_string(nginxPort_) + ';');
        site = std::regex_replace(site, std::regex(R"(\n *(ssl_|listen \[)[^\n]*)"), "");
        std::ofstream(folder_ / "site.conf") << site;
        std::string whole = "daemon off;\npid " + (folder_ / "nginx.pid").string() +
                            ";\nworker_processes 1;\nevents { worker_connections 1024; }\nhttp {\n";
        for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
            whole += std::string(kind) + "_temp_path " + (folder_ / kind).string() + ";\n";
        std::ofstream(folder_ / "nginx.conf")
            << whole + "include " + (folder_ / "site.conf").string() + ";\n}\n";
        nginx_ =
            std::make_unique<Program>(folder_, nginxProgram,
                                      std::vector<std::string>{"-c", folder_ / "nginx.conf", "-e",
                                                               folder_ / "nginx-errors", "-g", "user root;"},
                                      "nginx");
    }

    static bool answers(std::uint16_t port) {
        return eventually(
            [port] {
                try {
                    return request(port, {"GET", "/healthz", "", "", "", "", ""}).status == 200;
                } catch (const std::exception&) {
                    return false;
                }
            },
            60s);
    }

    // Takes that are worked on there.
    int running(std::size_t index) const {
        const auto text = request(ports_.at(index), {"GET", "/metrics", "", "", "", "", ""}).body;
        const std::string name = "\nlorvane_takes_running ";
        const auto at = text.find(name);
        return at == std::string::npos ? 0 : std::stoi(text.substr(at + name.size()));
    }

    Call take(int number, const char* endpoint) const {
        return {"POST",
                std::string("/api/") + endpoint,
                token_,
                "application/vnd.tirra.take",
                "take-" + std::to_string(number),
                "X-Tirra-Platform: ios\r\n",
                framedTake(R"({"ext":"wav"})", audio_)};
    }

    // As the client of the desktop does: a stream, and if that breaks the whole take once more.
    void dictate(int number) {
        try {
            const auto stream = request(nginxPort_, take(number, "dictate-stream"));
            if (stream.status == 200 && readStream(stream.body).done == text_) {
                ++streamed_;
                return;
            }
            const auto again = request(nginxPort_, take(number, "dictate"));
            if (again.status == 200 && member(again.body, "text") == text_)
                ++rescued_;
            else
                ADD_FAILURE() << "take " << number << " is lost: " << again.status << ' ' << again.body;
        } catch (const std::exception& error) {
            ADD_FAILURE() << "take " << number << " is lost: " << error.what();
        }
    }

    void dictateAll() {
        for (int number = next_++; number < takes; number = next_++) {
            dictate(number);
            ++done_;
        }
    }

    std::string fromDatabase(const std::string& sql) { return postgres_.run(sql, schema_); }

    const std::string databaseSeconds_;
    const std::string schema_ = "replicas";
    const std::string text_ = "Three short words.";
    const std::string audio_ = wavFile(tone(1, 0.3));
    TemporaryFolder folder_;
    PostgresServer postgres_;
    const std::string database_ = postgres_.address(schema_);
    Gate gate_;
    ScriptedUpstream upstream_{[this](const std::string&) {
        gate_.pass();
        return std::optional(jsonAnswer(200, R"({"text":"Three short words."})"));
    }};
    std::array<std::uint16_t, 3> ports_{};
    std::array<std::unique_ptr<Program>, 3> replicas_;
    const std::uint16_t nginxPort_ = freePort();
    std::unique_ptr<Program> nginx_;
    int started_ = 0;
    std::string token_;
    std::atomic<int> next_ = 0;
    std::atomic<int> done_ = 0;
    std::atomic<int> streamed_ = 0;
    std::atomic<int> rescued_ = 0;
};

TEST_F(ReplicasTest, NoTakeIsLostAndNoneCountedTwiceWhileReplicasComeAndGo) {
    std::vector<std::thread> threads;
    threads.reserve(clients);
    for (int i = 0; i < clients; ++i)
        threads.emplace_back([this] { dictateAll(); });
    EXPECT_TRUE(eventually([this] { return done_ >= takes / 4; }, 60s));

    // Everybody is in the middle of a take when one replica dies and another is asked to end.
    gate_.set(false);
    EXPECT_TRUE(
        eventually([this] { return running(0) > 2 && running(1) > 2 && gate_.held() > clients / 2; }, 60s))
        << gate_.held();
    const int struck = running(0);
    const int drained = running(1);
    std::printf("%d takes at the replica that is killed, %d at the one that is asked to end\n", struck,
                drained);
    EXPECT_GT(struck, 0);
    EXPECT_GT(drained, 0);
    replicas_[0]->kill();
    ::kill(replicas_[1]->pid(), SIGTERM);
    gate_.set(true);
    EXPECT_EQ(replicas_[1]->wait(60s), 0) << replicas_[1]->log();
    EXPECT_EQ(replicas_[1]->log().find(" gone "), std::string::npos) << replicas_[1]->log();
    start(1);
    for (auto& thread : threads)
        thread.join();

    std::printf("%d streamed, %d by the upload after a broken stream\n", streamed_.load(), rescued_.load());
    EXPECT_EQ(streamed_ + rescued_, takes);
    EXPECT_GE(rescued_, struck);
    EXPECT_EQ(fromDatabase("SELECT count(*) FROM seen_take WHERE purpose = 'take'"), std::to_string(takes));
    EXPECT_EQ(fromDatabase("SELECT sum(words) FROM phone_words"), std::to_string(3 * takes));
    EXPECT_TRUE(answers(ports_[1]));
}

// An upload that was under way at a replica that dies: sent on when it has an id to be known by, and only
// then.
TEST_F(ReplicasTest, AnUploadIsSentOnToTheNextReplicaOnlyWithAnId) {
    for (const bool named : {true, false}) {
        gate_.set(false);
        auto upload = take(named ? 1 : 2, "dictate");
        if (!named)
            upload.takeId.clear();
        auto answer = std::async(std::launch::async, [&] { return request(nginxPort_, upload).status; });
        std::size_t where = replicas_.size();
        EXPECT_TRUE(eventually(
            [&] {
                for (where = 0; where < replicas_.size() && running(where) == 0;)
                    ++where;
                return where < replicas_.size() && gate_.held() > 0;
            },
            60s));
        ASSERT_LT(where, replicas_.size());
        replicas_.at(where)->kill();
        gate_.set(true);
        EXPECT_EQ(answer.get(), named ? 200 : 502) << named;
        start(where);
        ASSERT_TRUE(answers(ports_.at(where))) << replicas_.at(where)->log();
    }
    EXPECT_EQ(fromDatabase("SELECT sum(words) FROM phone_words"), "3") << "of the take with an id alone";
}

// What the database's absence does to a running service, and its return.
class DatabaseOutage : public ReplicasTest, public ::testing::WithParamInterface<const char*> {
 protected:
    DatabaseOutage() : ReplicasTest("5") {}
    bool frozen() const { return std::string(GetParam()) == "Frozen"; }
};

TEST_P(DatabaseOutage, KnownPeopleDictateAndNobodyRegisters) {
    const auto status = [this](const char* path) {
        return request(ports_[0], {"GET", path, "", "", "", "", ""}).status;
    };
    const auto registering = [](std::uint16_t port) {
        return request(port, {"POST", "/api/register", "", "application/json", "", "",
                              R"({"device":"00000000-0000-4000-8000-000000000002"})"})
            .status;
    };
    ASSERT_TRUE(eventually([&] { return status("/readyz") == 200; }, 60s));
    ASSERT_EQ(request(ports_[0], take(1, "dictate")).status, 200);
    frozen() ? postgres_.freeze() : postgres_.kill();
    EXPECT_EQ(status("/readyz"), 503);
    EXPECT_EQ(status("/healthz"), 200);
    EXPECT_EQ(registering(ports_[0]), 503);
    const auto reply = request(ports_[0], take(2, "dictate"));
    EXPECT_EQ(reply.status, 200) << replicas_[0]->log();
    EXPECT_EQ(member(reply.body, "text"), text_);
    EXPECT_EQ(request(ports_[1], take(3, "dictate")).status, 503) << "it has not seen the token";
    frozen() ? postgres_.thaw() : postgres_.start();
    EXPECT_TRUE(eventually([&] { return status("/readyz") == 200; }, 60s));
    EXPECT_EQ(registering(ports_[0]), 200);
    EXPECT_TRUE(eventually([&] { return request(ports_[1], take(3, "dictate")).status == 200; }, 60s));
    for (const auto& replica : replicas_)
        EXPECT_EQ(replica->log().find(PostgresServer::password), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DatabaseOutage, ::testing::Values("Killed", "Frozen"),
                         [](const auto& kind) { return std::string(kind.param); });

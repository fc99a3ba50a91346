// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/PostgresServer.h"

#include "testing/ServerUnderTest.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <libpq-fe.h>
#include <netinet/in.h>
#include <pwd.h>
#include <set>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lorvane::backend::testing {

namespace {

// The newest server that is installed; its programs are in no PATH.
std::filesystem::path programs() {
    std::set<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/lib/postgresql"))
        if (std::filesystem::exists(entry.path() / "bin/initdb"))
            found.insert(entry.path() / "bin");
    if (found.empty())
        throw std::runtime_error("no PostgreSQL server below /usr/lib/postgresql");
    return *found.rbegin();
}

std::set<pid_t> childrenOf(pid_t pid) {
    std::set<pid_t> children;
    std::ifstream in("/proc/" + std::to_string(pid) + "/task/" + std::to_string(pid) + "/children");
    for (pid_t child = 0; in >> child;)
        children.insert(child);
    return children;
}

// Dead children that nobody waits for do not count.
bool runs(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string number;
    std::string name;
    char state = 'Z';
    in >> number >> name >> state;
    return state != 'Z';
}

std::string quoted(const std::filesystem::path& path) { return '\'' + path.string() + '\''; }

} // namespace

std::uint16_t freePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const bool bound = ::bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    ::close(socket);
    if (!bound)
        throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

PostgresServer::PostgresServer() : uid_(::geteuid()), gid_(::getegid()) {
    if (uid_ == 0) {
        const passwd* ordinary = ::getpwnam("nobody");
        if (!ordinary)
            throw std::runtime_error("there is no user to run the database as");
        uid_ = ordinary->pw_uid;
        gid_ = ordinary->pw_gid;
    }
    makeCluster();
    start();
}

PostgresServer::~PostgresServer() { kill(); }

void PostgresServer::makeCluster() {
    std::ofstream(passwordFile()) << password << '\n';
    std::filesystem::permissions(passwordFile(), std::filesystem::perms(0644));
    if (::chown((folder_ / "").c_str(), uid_, gid_) != 0)
        throw std::runtime_error("cannot give the folder away");
    const pid_t made =
        spawn(quoted(programs() / "initdb") + " --no-sync --no-locale -E UTF8 -A scram-sha-256 -U " + user +
              " --pwfile " + quoted(passwordFile()) + " -D " + quoted(folder_ / "data"));
    int status = 0;
    if (::waitpid(made, &status, 0) != made || status != 0)
        throw std::runtime_error("initdb failed: " + log());
}

pid_t PostgresServer::spawn(const std::string& command) const {
    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    const int out = ::open((folder_ / "log").c_str(), O_CREAT | O_WRONLY | O_APPEND, 0666);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(gid_) != 0 || ::setuid(uid_) != 0))
        ::_exit(126);
    if (::chdir((folder_ / "").c_str()) != 0)
        ::_exit(126);
    ::execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    ::_exit(127);
}

void PostgresServer::start() {
    // Somebody else may take a free port before we do.
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (port_ == 0)
            port_ = freePort();
        pid_ = spawn(quoted(programs() / "postgres") + " -D " + quoted(folder_ / "data") + " -k " +
                     quoted(folder_ / "") +
                     " -c listen_addresses=127.0.0.1 -c fsync=off -c max_connections=60"
                     " -c shared_buffers=16MB -p " +
                     std::to_string(port_));
        bool gone = false;
        if (eventually([&] { return answers() || (gone = ::waitpid(pid_, nullptr, WNOHANG) == pid_); },
                       std::chrono::seconds(60)) &&
            !gone)
            return;
        pid_ = 0;
        port_ = 0;
    }
    throw std::runtime_error("PostgreSQL does not start: " + log());
}

bool PostgresServer::answers() const {
    return PQping(("postgresql://127.0.0.1:" + std::to_string(port_) + "/postgres").c_str()) == PQPING_OK;
}

void PostgresServer::signalAll(int signal) const {
    const auto children = childrenOf(pid_);
    ::kill(pid_, signal);
    for (const pid_t child : children)
        ::kill(child, signal);
}

void PostgresServer::kill() {
    if (pid_ == 0)
        return;
    const auto children = childrenOf(pid_);
    signalAll(SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
    // Who holds the shared memory still would keep the next one from starting.
    eventually([&] { return std::none_of(children.begin(), children.end(), &runs); });
}

void PostgresServer::freeze() { signalAll(SIGSTOP); }
void PostgresServer::thaw() { signalAll(SIGCONT); }

std::string PostgresServer::run(const std::string& sql, const std::string& schema) {
    const auto port = std::to_string(port_);
    const std::string options = "-csearch_path=" + schema + ",pg_catalog -cclient_min_messages=warning";
    const std::array keys{
        "host", "port", "user", "password", "dbname", "options", static_cast<const char*>(nullptr)};
    const std::array values{"127.0.0.1",
                            port.c_str(),
                            user,
                            password,
                            "postgres",
                            options.c_str(),
                            static_cast<const char*>(nullptr)};
    const std::unique_ptr<PGconn, void (*)(PGconn*)> connection(
        PQconnectdbParams(keys.data(), values.data(), 0), &PQfinish);
    const std::unique_ptr<PGresult, void (*)(PGresult*)> result(PQexec(connection.get(), sql.c_str()),
                                                                &PQclear);
    const auto status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK)
        throw std::runtime_error(PQerrorMessage(connection.get()));
    return PQntuples(result.get()) > 0 ? PQgetvalue(result.get(), 0, 0) : "";
}

// The schema goes before the catalogue, so that its clock is the one that statements mean.
std::string PostgresServer::address(const std::string& schema) {
    run("CREATE SCHEMA IF NOT EXISTS " + schema + "; CREATE TABLE IF NOT EXISTS " + schema +
        ".shift (ms bigint); CREATE OR REPLACE FUNCTION " + schema +
        ".clock_timestamp() RETURNS timestamptz LANGUAGE sql AS $$ SELECT pg_catalog.clock_timestamp() + "
        "coalesce((SELECT sum(ms) FROM " +
        schema + ".shift), 0) * interval '1 millisecond' $$");
    return std::string("postgresql://") + user + "@127.0.0.1:" + std::to_string(port_) +
           "/postgres?options=-csearch_path%3D" + schema + "%2Cpg_catalog";
}

void PostgresServer::advance(const std::string& schema, long milliseconds) {
    run("INSERT INTO " + schema + ".shift VALUES (" + std::to_string(milliseconds) + ")");
}

PostgresServer& sharedPostgres() {
    static PostgresServer server;
    return server;
}

} // namespace lorvane::backend::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testing/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace lorvane::backend::testing {

// Of 127.0.0.1, for somebody who cannot be asked which one it took.
std::uint16_t freePort();

// A real PostgreSQL server with a cluster of its own in a temporary folder, on a free port of 127.0.0.1.
// Started by root it runs as an ordinary user, since it refuses to be root.
class PostgresServer {
 public:
    PostgresServer();
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    void start();  // and waits until it answers
    void kill();   // all of it at once, as a crash of the machine would
    void freeze(); // it keeps its connections and answers nobody
    void thaw();

    std::uint16_t port() const { return port_; }
    // Of a schema of that name, made when missing, in which the time may be moved.
    std::string address(const std::string& schema);
    // `clock_timestamp()` of the schema is from now on that much later.
    void advance(const std::string& schema, long milliseconds);
    // Statements as the cluster's owner; what the last of them returns first, as text.
    std::string run(const std::string& sql, const std::string& schema = "public");
    std::string log() const { return readFile(folder_ / "log"); }

    static constexpr const char* user = "lorvane";
    static constexpr const char* password = "pass-word in the file";
    std::filesystem::path passwordFile() const { return folder_ / "password"; }

 private:
    void makeCluster();
    pid_t spawn(const std::string& command) const;
    void signalAll(int signal) const;
    bool answers() const;

    TemporaryFolder folder_;
    uid_t uid_ = 0;
    gid_t gid_ = 0;
    std::uint16_t port_ = 0;
    pid_t pid_ = 0;
};

// One for the whole test program, started with the first use.
PostgresServer& sharedPostgres();

} // namespace lorvane::backend::testing

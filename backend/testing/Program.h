// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testing/ServerUnderTest.h"
#include "testing/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace lorvane::backend::testing {

// A program as a process, with its standard streams in files. The destructor ends what still runs.
class Program {
 public:
    // `prepare` runs in the new process before the program.
    Program(const TemporaryFolder& folder, const std::string& program,
            const std::vector<std::string>& arguments, const std::string& name = "run",
            const std::function<void()>& prepare = {})
        : out_(folder / (name + ".out")), log_(folder / (name + ".log")), pid_(::fork()) {
        if (pid_ != 0)
            return;
        if (prepare)
            prepare();
        exec(program, arguments);
    }
    ~Program() { kill(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t pid() const { return pid_; }
    std::string out() const { return std::filesystem::exists(out_) ? readFile(out_) : ""; }
    std::string log() const { return std::filesystem::exists(log_) ? readFile(log_) : ""; }

    // The exit status, or -1 for an end by a signal, -2 for none within the time.
    int wait(std::chrono::milliseconds bound = std::chrono::seconds(20)) {
        const bool ended = eventually(
            [this] {
                int status = 0;
                if (!status_ && ::waitpid(pid_, &status, WNOHANG) == pid_)
                    status_ = status;
                return status_.has_value();
            },
            bound);
        if (!ended)
            return -2;
        return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : -1;
    }
    // At once, and waits for it.
    void kill() {
        if (pid_ <= 0 || status_)
            return;
        ::kill(pid_, SIGKILL);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        status_ = status;
    }

 private:
    [[noreturn]] void exec(const std::string& program, const std::vector<std::string>& arguments) {
        ::dup2(::open(out_.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
        ::dup2(::open(log_.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDERR_FILENO);
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const auto& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }

    const std::filesystem::path out_;
    const std::filesystem::path log_;
    const pid_t pid_;
    std::optional<int> status_;
};

} // namespace lorvane::backend::testing

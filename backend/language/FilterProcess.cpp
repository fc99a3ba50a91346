// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/FilterProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lorvane::backend {

namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
 public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    void reset(int number = -1) {
        if (number_ >= 0)
            ::close(number_);
        number_ = number;
    }

 private:
    int number_;
};

// A file in memory, so that nobody need write while the program reads.
bool fill(const Descriptor& file, std::string_view input) {
    while (!input.empty()) {
        const auto written = ::write(file.get(), input.data(), input.size());
        if (written <= 0)
            return false;
        input.remove_prefix(static_cast<std::size_t>(written));
    }
    return ::lseek(file.get(), 0, SEEK_SET) == 0;
}

// A group of its own, and signals as a program expects them: a server ignores and blocks some.
pid_t start(const std::vector<std::string>& command, int in, int out) {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&files, in, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, out, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // The sockets of the server are not the program's: it would keep a port, and clients, after our end.
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::string path = "PATH=/usr/local/bin:/usr/bin:/bin";
    std::string locale = "LC_ALL=C.UTF-8";
    const std::array<char*, 3> environment{path.data(), locale.data(), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, arguments[0], &files, &attributes, arguments.data(), environment.data()) != 0)
        pid = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return pid;
}

// All that comes until the end. Nothing: too much, too late or stopped.
std::optional<std::string> readAll(int from, int stopped, Clock::time_point latest, std::size_t most) {
    std::string output;
    std::array<char, 16384> bytes{};
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(latest - Clock::now()).count();
        std::array<pollfd, 2> entries{{{from, POLLIN, 0}, {stopped, POLLIN, 0}}};
        const int ready = ::poll(entries.data(), entries.size(), static_cast<int>(std::max<long>(left, 0)));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0 || entries[1].revents != 0)
            return std::nullopt;
        const auto got = ::read(from, bytes.data(), bytes.size());
        if (got < 0)
            return std::nullopt;
        if (got == 0)
            return output;
        if (output.size() + static_cast<std::size_t>(got) > most)
            return std::nullopt;
        output.append(bytes.data(), static_cast<std::size_t>(got));
    }
}

// A program that has closed its output is about to end; who does not is helped.
int statusOf(pid_t pid, Clock::time_point latest, const std::stop_token& stop) {
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == 0 && Clock::now() < latest && !stop.stop_requested())
        ::poll(nullptr, 0, 1);
    ::kill(-pid, SIGKILL); // before it is reaped, so that the number is still its own
    int status = -1;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

} // namespace

std::optional<std::string> filter(const std::vector<std::string>& command, std::string_view input,
                                  const FilterBounds& bounds, const std::stop_token& stop) {
    const Descriptor in(::memfd_create("input", MFD_CLOEXEC));
    const Descriptor stopped(::eventfd(0, EFD_CLOEXEC));
    std::array<int, 2> ends{-1, -1};
    if (command.empty() || !in || !stopped || !fill(in, input) || ::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    const Descriptor from(ends[0]);
    Descriptor out(ends[1]);
    const auto latest = Clock::now() + bounds.time;
    const pid_t pid = start(command, in.get(), out.get());
    out.reset();
    if (pid < 0)
        return std::nullopt;
    const std::stop_callback wake(stop, [&] { eventfd_write(stopped.get(), 1); });
    auto output = readAll(from.get(), stopped.get(), latest, bounds.bytes);
    const int status = statusOf(pid, output ? latest : Clock::now(), stop);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return output;
}

} // namespace lorvane::backend

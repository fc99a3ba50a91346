// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/SmtpSink.h"

#include "testing/ServerUnderTest.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lorvane::backend::testing {

SmtpSink::SmtpSink(const std::string& mode) : pid_(::fork()) {
    if (pid_ == 0) {
        // However a test ends, its mail server ends with it.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        ::execl(LORVANE_SMTP_SINK, LORVANE_SMTP_SINK, (folder_ / "").c_str(), mode.c_str(), nullptr);
        ::_exit(127);
    }
    if (!eventually([this] { return std::filesystem::exists(folder_ / "port"); }))
        throw std::runtime_error("the mail server for tests did not come up; is python3-aiosmtpd there?");
}

SmtpSink::~SmtpSink() {
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

std::optional<std::string> SmtpSink::letter(int index) const {
    const auto file = folder_ / ("letter-" + std::to_string(index));
    return std::filesystem::exists(file) ? std::optional(readFile(file)) : std::nullopt;
}

} // namespace lorvane::backend::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testing/TemporaryFolder.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace lorvane::backend::testing {

// A real mail server (aiosmtpd) as a process of its own; see smtp_sink.py for its modes.
class SmtpSink {
 public:
    explicit SmtpSink(const std::string& mode);
    ~SmtpSink();
    SmtpSink(const SmtpSink&) = delete;
    SmtpSink& operator=(const SmtpSink&) = delete;

    std::string url() const { return "smtp://127.0.0.1:" + readFile(folder_ / "port"); }
    std::filesystem::path certificate() const { return folder_ / "cert.pem"; }
    // The envelope as "from=… to=… tls=… user=…" in the first line, then the message.
    std::optional<std::string> letter(int index) const;

 private:
    TemporaryFolder folder_;
    pid_t pid_ = 0;
};

} // namespace lorvane::backend::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mail/Letter.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace lorvane::backend {

// The reason never holds an address nor a word of the letter.
class MailError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Any thread, several calls at once. send() blocks until the letter is taken, or throws MailError.
class Mailer {
 public:
    virtual ~Mailer() = default;
    virtual void send(const Letter& letter) = 0;
};

// Writes each letter as an .eml file, readable by the owner alone, whole or not at all.
class SpoolMailer : public Mailer {
 public:
    // The folder is made when it is missing. More than `most` letters are refused: nobody seems to fetch
    // them.
    explicit SpoolMailer(std::filesystem::path folder, std::size_t most = 10'000);
    void send(const Letter& letter) override;

 private:
    const std::filesystem::path folder_;
    const std::size_t most_;
};

struct SmtpOptions {
    std::string url; // smtp://HOST:PORT, or smtps:// for a port that speaks TLS from the start
    std::string user;
    std::string password;
    bool tls = true; // over smtp://: nothing is said before STARTTLS; false never asks for it
    std::filesystem::path authorities; // certificates to trust; empty: those of the system
    std::chrono::seconds time{15};     // for a whole letter
};

// Hands each letter to a mail server, a connection each.
class SmtpMailer : public Mailer {
 public:
    explicit SmtpMailer(SmtpOptions options);
    void send(const Letter& letter) override;

 private:
    const SmtpOptions options_;
};

} // namespace lorvane::backend

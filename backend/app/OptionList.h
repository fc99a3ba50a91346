// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"

#include <string>

namespace CLI {
class App;
}

namespace lorvane::backend {

// What is written down for each option, before it means something together with the others.
struct RawOptions {
    std::string config;
    bool printConfig = false;
    std::string listen = "127.0.0.1:0";
    std::string port;
    std::string portFile;
    std::string trustedProxies = "127.0.0.1, ::1";
    std::string parent;
    std::string database;
    std::string databasePasswordFile;
    std::size_t databaseConnections = 8;
    std::size_t databaseSeconds = 3;
    std::size_t tokenSeconds = 60;
    std::string models = "/usr/share/pocketsphinx/model/en-us";
    std::string speech;
    std::string language;
    std::string apertium = "/usr/bin/apertium";
    std::size_t workers = 0;
    std::size_t writtenAtOnce = 32;
    std::size_t queue = 64;
    std::size_t ioThreads = 1;
    std::size_t connections = 4096;
    std::size_t bodyMiB = 64;
    double audioMinutes = 30;
    std::size_t takeMiB = 512;
    std::size_t writeSeconds = 20;
    std::size_t pingSeconds = 15;
    std::size_t drainDelaySeconds = 0;
    std::size_t drainSeconds = 5;
    int takesPerHour = 0;
    int registrationsPerHour = 3600;
    int registrationsPerAddress = 120;
    int invitesPerHour = 20;
    int feedbackPerHour = 20;
    int textsPerHour = 240;
    std::int64_t phoneGoal = 200;
    std::string publicUrl;
    std::string downloadUrl;
    std::string releases;
    std::string releasesUrl;
    std::string releaseKey;
    std::string mailFrom;
    std::string feedbackTo;
    std::string mailSpool;
    std::string smtpUrl;
    std::string smtpTls = "required";
    std::string smtpAuthorities;
    std::string smtpUser;
    std::string smtpPasswordFile;
};

void addOptions(CLI::App& app, RawOptions& raw);

} // namespace lorvane::backend

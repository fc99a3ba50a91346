// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionList.h"

#include <CLI/CLI.hpp>

namespace lorvane::backend {

namespace {

template <class Value>
CLI::Option* add(CLI::App& app, const char* name, const char* type, Value& value, const char* help) {
    return app.add_option(name, value, help)->type_name(type)->capture_default_str();
}

void addProgram(CLI::App& app, RawOptions& raw) {
    app.add_option("--config", raw.config, "Read keys from this file: an option without its dashes = value")
        ->type_name("FILE")
        ->configurable(false);
    app.add_flag("--print-config", raw.printConfig, "Print all keys with their sources, and end")
        ->configurable(false);
    add(app, "--listen", "ADDRESS:PORT", raw.listen, "Address and port; port 0 takes a free one");
    add(app, "--port", "PORT", raw.port, "Port alone, over that of --listen");
    add(app, "--trusted-proxies", "LIST", raw.trustedProxies,
        "Addresses and networks between commas whose X-Forwarded-For says where a request comes from");
    add(app, "--port-file", "FILE", raw.portFile, "Write the port there once listening");
    add(app, "--database", "FILE|ADDRESS", raw.database,
        "SQLite file, made when missing; or postgresql://[USER@]HOST[:PORT]/NAME for several backends");
    add(app, "--models", "DIR", raw.models, "Folder of en-us/, en-us.lm.bin and cmudict-en-us.dict");
    add(app, "--speech", "SERVERS", raw.speech,
        "Speech servers, \"KIND URL [model=NAME] [key-file=FILE]; ...\", the first that answers; without "
        "any, pocketsphinx");
    add(app, "--language", "SERVERS", raw.language,
        "Language servers for clean-up, translation, labels, insights and summaries, written like --speech; "
        "without any, rules");
    add(app, "--apertium", "PROGRAM", raw.apertium,
        "Translates where no language server does, with the pairs installed; empty: nothing does");
    app.add_option("--parent-watch", raw.parent,
                   "End when the process that started this one is gone; PID guards against one gone already")
        ->type_name("[PID]")
        ->expected(0, 1)
        ->configurable(false);
}

void addDatabase(CLI::App& app, RawOptions& raw) {
    add(app, "--database-password-file", "FILE", raw.databasePasswordFile,
        "Its first line is the password at PostgreSQL, read for each connection")
        ->check(CLI::ExistingFile);
    add(app, "--database-connections", "N", raw.databaseConnections, "Connections to PostgreSQL at once")
        ->check(CLI::Range(1, 1000));
    add(app, "--database-time", "SECONDS", raw.databaseSeconds,
        "Longest wait for PostgreSQL: to connect, for a statement, for a free connection")
        ->check(CLI::Range(1, 60));
    add(app, "--token-time", "SECONDS", raw.tokenSeconds,
        "How long a token that was good stays so while the database is away")
        ->check(CLI::Range(0, 3600));
}

void addBounds(CLI::App& app, RawOptions& raw) {
    add(app, "--workers", "N", raw.workers,
        "Takes worked on at once; 0: one a core, about 90 MB each, or 32 with speech servers")
        ->check(CLI::Range(0, 256));
    add(app, "--written-at-once", "N", raw.writtenAtOnce,
        "Takes that language servers write at once, beside those at work")
        ->check(CLI::Range(1, 1024));
    add(app, "--queue", "N", raw.queue, "Takes that wait; more are answered 503");
    add(app, "--io-threads", "N", raw.ioThreads, "Threads that serve connections")->check(CLI::Range(1, 64));
    add(app, "--connections", "N", raw.connections, "Connections at once")->check(CLI::Range(1, 1'000'000));
    add(app, "--body-limit", "MIB", raw.bodyMiB, "Largest take; more is answered 413")
        ->check(CLI::Range(1, 1024));
    add(app, "--audio-limit", "MINUTES", raw.audioMinutes, "Longest take; more is answered 413")
        ->check(CLI::Range(0.1, 600.0));
    add(app, "--take-memory", "MIB", raw.takeMiB, "Sound of all takes in work together; more is answered 503")
        ->check(CLI::Range(4, 1'048'576));
    add(app, "--write-time", "SECONDS", raw.writeSeconds, "How long a client may take to accept one line")
        ->check(CLI::Range(1, 600));
    add(app, "--ping-time", "SECONDS", raw.pingSeconds,
        "Silence of a stream before a line that says it lives")
        ->check(CLI::Range(1, 240));
    add(app, "--drain-delay", "SECONDS", raw.drainDelaySeconds,
        "After SIGTERM: how long /readyz says 503 while new requests are still served")
        ->check(CLI::Range(0, 600));
    add(app, "--drain", "SECONDS", raw.drainSeconds, "Then: how long running requests get")
        ->check(CLI::Range(0, 3600));
}

void addLimits(CLI::App& app, RawOptions& raw) {
    const auto rate = CLI::Range(0, 1'000'000);
    add(app, "--takes-per-hour", "N", raw.takesPerHour, "Takes of a person; 0: any number")->check(rate);
    add(app, "--registrations-per-hour", "N", raw.registrationsPerHour,
        "Registrations of all devices together; more are answered 503; 0: any number")
        ->check(rate);
    add(app, "--registrations-per-address", "N", raw.registrationsPerAddress,
        "Registrations an hour from one address, or one /64 of IPv6; more are answered 503; 0: any number")
        ->check(rate);
    add(app, "--invites-per-hour", "N", raw.invitesPerHour, "Invitations of a person; 0: any number")
        ->check(rate);
    add(app, "--feedback-per-hour", "N", raw.feedbackPerHour, "Feedback of a person; 0: any number")
        ->check(rate);
    add(app, "--texts-per-hour", "N", raw.textsPerHour, "Insights and summaries of a person; 0: any number")
        ->check(rate);
    add(app, "--phone-goal", "WORDS", raw.phoneGoal,
        "Words on a telephone that make a day count; 0: no such record")
        ->check(CLI::Range(0, 1'000'000));
}

void addSite(CLI::App& app, RawOptions& raw) {
    add(app, "--public-url", "URL", raw.publicUrl, "Where people reach this service; for links in letters");
    add(app, "--download-url", "URL", raw.downloadUrl, "Where /get leads to");
    add(app, "--releases", "DIR", raw.releases, "Folder of signed releases; makes /appcast.xml");
    add(app, "--releases-url", "URL", raw.releasesUrl, "Where that folder is downloaded from");
    add(app, "--release-key", "BASE64", raw.releaseKey, "Ed25519 public key of the releases");
}

void addMail(CLI::App& app, RawOptions& raw) {
    add(app, "--mail-from", "ADDRESS", raw.mailFrom, "Sender of letters");
    add(app, "--feedback-to", "ADDRESS", raw.feedbackTo, "Who gets the feedback");
    add(app, "--mail-spool", "DIR", raw.mailSpool,
        "Without a mail server letters are written there; \"mail\" beside the database when not given");
    add(app, "--smtp-url", "URL", raw.smtpUrl, "Mail server: smtp://HOST:PORT, or smtps://HOST:PORT");
    add(app, "--smtp-tls", "required|off", raw.smtpTls, "Whether smtp:// wants STARTTLS before anything else")
        ->check(CLI::IsMember({"required", "off"}));
    add(app, "--smtp-ca", "FILE", raw.smtpAuthorities, "Certificates to trust instead of the system's");
    add(app, "--smtp-user", "NAME", raw.smtpUser, "Name at the mail server");
    add(app, "--smtp-password-file", "FILE", raw.smtpPasswordFile, "Its first line is the password");
}

} // namespace

void addOptions(CLI::App& app, RawOptions& raw) {
    addProgram(app, raw);
    addDatabase(app, raw);
    addBounds(app, raw);
    addLimits(app, raw);
    addSite(app, raw);
    addMail(app, raw);
}

} // namespace lorvane::backend

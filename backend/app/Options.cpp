// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "app/ConfigLayers.h"
#include "app/OptionList.h"
#include "app/ServerOption.h"
#include "mail/Address.h"
#include "util/Base64.h"
#include "util/Signature.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace lorvane::backend {

namespace {

constexpr const char* description =
    "Turns dictated takes into clean text over HTTP: the service behind lorvane.\n"
    "On its own it needs nothing else: tokens in SQLite, speech by pocketsphinx. That is an offline "
    "fall-back for\n"
    "English, with about one word in three wrong, and no more; name speech servers for anything better.";

std::filesystem::path defaultDatabase() {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    const std::filesystem::path base = data && *data
                                           ? std::filesystem::path(data)
                                           : std::filesystem::path(home ? home : ".") / ".local/share";
    return base / "lorvane-backend" / "backend.sqlite";
}

[[noreturn]] void fail(const char* key, const std::string& reason) {
    throw ConfigError(std::string(key) + ": " + reason);
}

std::uint16_t readPort(const char* key, std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size())
        fail(key, "the port is no number to 65535");
    return port;
}

// "127.0.0.1:8080", "[::1]:8080"; the address alone leaves the port at 0.
void readListen(const RawOptions& raw, ServerOptions& server) {
    std::string_view rest = raw.listen;
    if (rest.starts_with('[')) {
        const auto end = rest.find(']');
        if (end == std::string_view::npos)
            fail("listen", "no ] after the address");
        server.address = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
    } else {
        const auto colon = std::min(rest.find(':'), rest.size());
        server.address = rest.substr(0, colon);
        rest.remove_prefix(colon);
    }
    if (!rest.empty() && !rest.starts_with(':'))
        fail("listen", "after the address comes :PORT");
    if (!rest.empty())
        server.port = readPort("listen", rest.substr(1));
    if (!raw.port.empty())
        server.port = readPort("port", raw.port);
}

std::string readUrl(const char* key, std::string url) {
    if (!url.empty() && !url.starts_with("https://") && !url.starts_with("http://"))
        fail(key, "no http:// or https:// at its start");
    while (url.ends_with('/'))
        url.pop_back();
    return url;
}

std::string readAddress(const char* key, const std::string& address, const std::string& otherwise) {
    if (address.empty())
        return otherwise;
    if (!isMailAddress(address))
        fail(key, "no mail address");
    return address;
}

SmtpOptions readSmtp(const RawOptions& raw) {
    if (!raw.smtpUrl.starts_with("smtp://") && !raw.smtpUrl.starts_with("smtps://"))
        fail("smtp-url", "no smtp:// or smtps:// at its start");
    for (const auto& [key, value] : {std::pair("mail-from", raw.mailFrom), {"feedback-to", raw.feedbackTo}})
        if (value.empty())
            fail(key, "wanted with smtp-url");
    SmtpOptions smtp;
    smtp.url = raw.smtpUrl;
    smtp.tls = raw.smtpTls == "required";
    smtp.authorities = raw.smtpAuthorities;
    smtp.user = raw.smtpUser;
    if (raw.smtpUser.empty() != raw.smtpPasswordFile.empty())
        fail("smtp-user", "wanted together with smtp-password-file");
    if (!raw.smtpUser.empty() && !smtp.tls && !raw.smtpUrl.starts_with("smtps://"))
        fail("smtp-tls", "off would show the password to everybody on the way");
    if (!raw.smtpPasswordFile.empty())
        smtp.password = firstLineOf(raw.smtpPasswordFile, "smtp-password-file");
    return smtp;
}

MailOptions readMail(const RawOptions& raw, const std::filesystem::path& database) {
    MailOptions mail;
    mail.spool =
        raw.mailSpool.empty() ? database.parent_path() / "mail" : std::filesystem::path(raw.mailSpool);
    if (!raw.smtpUrl.empty())
        mail.smtp = readSmtp(raw);
    else if (!raw.smtpUser.empty() || !raw.smtpPasswordFile.empty())
        fail("smtp-url", "wanted with smtp-user");
    return mail;
}

ReleaseOptions readReleases(const RawOptions& raw) {
    ReleaseOptions releases{raw.releases, readUrl("releases-url", raw.releasesUrl), {}};
    if (raw.releases.empty())
        return releases;
    if (raw.releasesUrl.empty())
        fail("releases-url", "wanted with releases");
    releases.publicKey = decodeBase64(raw.releaseKey).value_or("");
    if (releases.publicKey.size() != ed25519KeySize)
        fail("release-key", "not 32 bytes in base64; wanted with releases");
    return releases;
}

ServiceOptions readService(const RawOptions& raw) {
    ServiceOptions service;
    service.takeLimit = raw.bodyMiB << 20;
    service.limits = {Rate::perHour(raw.registrationsPerHour), Rate::perHour(raw.registrationsPerAddress),
                      Rate::perHour(raw.invitesPerHour),       Rate::perHour(raw.feedbackPerHour),
                      Rate::perHour(raw.textsPerHour),         Rate::perHour(raw.takesPerHour)};
    service.phoneGoal = raw.phoneGoal;
    service.publicUrl = readUrl("public-url", raw.publicUrl);
    service.downloadUrl = readUrl("download-url", raw.downloadUrl);
    service.mailFrom = readAddress("mail-from", raw.mailFrom, service.mailFrom);
    service.feedbackTo = readAddress("feedback-to", raw.feedbackTo, service.feedbackTo);
    return service;
}

bool isPostgres(const std::string& database) {
    return database.starts_with("postgresql://") || database.starts_with("postgres://");
}

std::optional<PostgresOptions> readPostgres(const RawOptions& raw) {
    if (!isPostgres(raw.database)) {
        if (!raw.databasePasswordFile.empty())
            fail("database-password-file", "wanted for postgresql:// alone");
        return std::nullopt;
    }
    if (const auto flaw = flawOfPostgresAddress(raw.database); !flaw.empty())
        fail("database", flaw);
    return PostgresOptions{raw.database, raw.databasePasswordFile, raw.databaseConnections,
                           std::chrono::seconds(raw.databaseSeconds)};
}

ServerOptions readServer(const RawOptions& raw) {
    ServerOptions server;
    readListen(raw, server);
    auto proxies = TrustedProxies::parse(raw.trustedProxies);
    if (!proxies)
        fail("trusted-proxies", "no list of addresses and networks such as 10.0.0.0/8");
    server.proxies = std::move(*proxies);
    server.threads = raw.ioThreads;
    server.connections = raw.connections;
    server.writeTime = std::chrono::seconds(raw.writeSeconds);
    server.silence = std::chrono::seconds(raw.pingSeconds);
    return server;
}

// Who only waits for a server takes no processor.
std::size_t workersFor(const RawOptions& raw, bool servers) {
    if (raw.workers > 0)
        return raw.workers;
    return servers ? 32 : std::max(1U, std::thread::hardware_concurrency());
}

// One take must always fit, or it would be refused for ever.
std::size_t readTakeMemory(const RawOptions& raw) {
    const auto bytes = raw.takeMiB << 20;
    if (static_cast<double>(bytes) < raw.audioMinutes * 60 * sampleRate * 2 + (2 << 20))
        fail("take-memory", "too little for one take of audio-limit, which has 1.9 MB a minute");
    return bytes;
}

ProgramOptions meaningOf(const RawOptions& raw) {
    ProgramOptions options;
    options.postgres = readPostgres(raw);
    options.database = options.postgres ? defaultDatabase() : std::filesystem::path(raw.database);
    options.portFile = raw.portFile;
    options.models = raw.models;
    options.drainDelay = std::chrono::seconds(raw.drainDelaySeconds);
    options.drain = std::chrono::seconds(raw.drainSeconds);
    if (!raw.parent.empty() && raw.parent != "true")
        options.parent = static_cast<pid_t>(std::strtol(raw.parent.c_str(), nullptr, 10));
    options.backend.server = readServer(raw);
    options.backend.service = readService(raw);
    options.backend.mail = readMail(raw, options.database);
    options.backend.releases = readReleases(raw);
    options.speech = readSpeech(raw.speech);
    options.backend.language = readLanguage(raw.language);
    options.backend.apertium = raw.apertium;
    options.backend.workers = workersFor(raw, !options.speech.empty());
    options.backend.writtenAtOnce = raw.writtenAtOnce;
    options.backend.queue = raw.queue;
    options.backend.tokenTime = std::chrono::seconds(raw.tokenSeconds);
    options.backend.maxAudioSeconds = raw.audioMinutes * 60;
    options.backend.takeBytes = readTakeMemory(raw);
    return options;
}

std::string configFile(const RawOptions& raw) {
    const char* variable = std::getenv(environmentName("config").c_str());
    return raw.config.empty() && variable ? variable : raw.config;
}

} // namespace

ParsedOptions parseOptions(int argc, char** argv) {
    RawOptions raw;
    raw.database = defaultDatabase();
    CLI::App app(description, "lorvane-backend");
    app.set_version_flag("--version", "lorvane-backend " LORVANE_VERSION)->configurable(false);
    app.get_help_ptr()->configurable(false);
    addOptions(app, raw);
    try {
        app.parse(argc, argv);
        ConfigLayers layers(app);
        layers.apply(configFile(raw));
        auto options = meaningOf(raw);
        options.watchParent = app.count("--parent-watch") > 0;
        if (!raw.printConfig)
            return {options, 0};
        std::fputs(layers.print().c_str(), stdout);
        return {std::nullopt, 0};
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, app.exit(error)};
    } catch (const ConfigError& error) {
        std::fprintf(stderr, "lorvane-backend: %s\n", error.what());
        return {std::nullopt, static_cast<int>(CLI::ExitCodes::ConfigError)};
    }
}

} // namespace lorvane::backend

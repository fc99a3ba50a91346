// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdlib>
#include <thread>

namespace lorvane::backend {

namespace {

constexpr const char* description =
    "Turns dictated takes into clean text over HTTP: the service behind lorvane.\n"
    "On its own it needs nothing else: tokens in SQLite, speech by pocketsphinx. That is an offline "
    "fall-back for\n"
    "English, with about one word in four wrong, and no more.";

std::filesystem::path defaultDatabase() {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    const std::filesystem::path base = data && *data
                                           ? std::filesystem::path(data)
                                           : std::filesystem::path(home ? home : ".") / ".local/share";
    return base / "lorvane-backend" / "backend.sqlite";
}

bool readPort(std::string_view text, std::uint16_t& port) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size();
}

// "127.0.0.1:8080", "[::1]:8080"; the address alone leaves the port.
std::string readListen(const std::string& text, ServerOptions& server) {
    std::string_view rest = text;
    if (rest.starts_with('[')) {
        const auto end = rest.find(']');
        if (end == std::string_view::npos)
            return "no ] after the address";
        server.address = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
    } else {
        const auto colon = rest.find(':');
        server.address = rest.substr(0, colon);
        rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon);
    }
    if (rest.empty())
        return {};
    return rest.starts_with(':') && readPort(rest.substr(1), server.port) ? ""
                                                                          : "the port is no number to 65535";
}

struct RawOptions {
    std::string listen = "127.0.0.1:0";
    std::string parent;
    std::size_t bodyMiB = 64;
    double audioMinutes = 30;
    std::size_t writeSeconds = 20;
    std::size_t drainSeconds = 5;
};

void addOptions(CLI::App& app, ProgramOptions& options, RawOptions& raw) {
    app.add_option("--listen", raw.listen, "Address and port; port 0 takes a free one")
        ->capture_default_str()
        ->check([&options](const std::string& text) { return readListen(text, options.backend.server); });
    app.add_option("--port", options.backend.server.port, "Port alone, over that of --listen")
        ->type_name("PORT");
    app.add_option("--port-file", options.portFile, "Write the port there once listening")->type_name("FILE");
    app.add_option("--database", options.database, "SQLite file, made when missing")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--models", options.models, "Folder of en-us/, en-us.lm.bin and cmudict-en-us.dict")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--parent-watch", raw.parent,
                   "End when the process that started this one is gone; PID guards against one gone already")
        ->type_name("[PID]")
        ->expected(0, 1);
    app.add_option("--workers", options.backend.workers, "Takes worked on at once; about 90 MB each")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    app.add_option("--queue", options.backend.queue, "Takes that wait; more are answered 503")
        ->capture_default_str();
    app.add_option("--io-threads", options.backend.server.threads, "Threads that serve connections")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    app.add_option("--connections", options.backend.server.connections, "Connections at once")
        ->capture_default_str();
    app.add_option("--body-limit", raw.bodyMiB, "Largest take in MiB; more is answered 413")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    app.add_option("--audio-limit", raw.audioMinutes, "Longest take in minutes; more is answered 413")
        ->check(CLI::Range(0.1, 600.0))
        ->capture_default_str();
    app.add_option("--write-time", raw.writeSeconds, "Seconds a client may take to accept one line")
        ->check(CLI::Range(1, 600))
        ->capture_default_str();
    app.add_option("--drain", raw.drainSeconds, "Seconds that running requests get at SIGTERM")
        ->capture_default_str();
}

} // namespace

ParsedOptions parseOptions(int argc, char** argv) {
    ProgramOptions options;
    RawOptions raw;
    options.database = defaultDatabase();
    options.models = "/usr/share/pocketsphinx/model/en-us";
    options.backend.workers = std::max(1U, std::thread::hardware_concurrency());
    CLI::App app(description, "lorvane-backend");
    app.set_version_flag("--version", "lorvane-backend " LORVANE_VERSION);
    addOptions(app, options, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, app.exit(error)};
    }
    options.watchParent = app.count("--parent-watch") > 0;
    if (!raw.parent.empty() && raw.parent != "true")
        options.parent = static_cast<pid_t>(std::strtol(raw.parent.c_str(), nullptr, 10));
    options.backend.service.takeLimit = raw.bodyMiB << 20;
    options.backend.maxAudioSeconds = raw.audioMinutes * 60;
    options.backend.server.writeTime = std::chrono::seconds(raw.writeSeconds);
    options.drain = std::chrono::seconds(raw.drainSeconds);
    return {options, 0};
}

} // namespace lorvane::backend

// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/PostgresLink.h"

#include "storage/PostgresHosts.h"
#include "util/Log.h"
#include "util/Secrets.h"

#include <array>
#include <bit>
#include <cstring>
#include <endian.h>
#include <libpq-fe.h>
#include <poll.h>
#include <utility>

namespace lorvane::backend {

namespace {

using Clock = std::chrono::steady_clock;

struct FreeResult {
    void operator()(PGresult* it) const { PQclear(it); }
};
using Result = std::unique_ptr<PGresult, FreeResult>;

// The library ends its messages with a new line, and the log has one a message.
std::string oneLine(const char* message) {
    std::string text = message ? message : "";
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
        text.pop_back();
    for (char& c : text)
        if (c == '\n' || c == '\t')
            c = ' ';
    return text;
}

std::string field(const PGresult* result, int which) {
    const char* value = PQresultErrorField(result, which);
    return value ? value : "";
}

// Shutting down, starting up, connection lost, or a standby that takes no writes: another try may meet a
// server that can.
bool meansAway(std::string_view state) {
    return state.starts_with("57P") || state.starts_with("08") || state == "25006" || state == "53300";
}

// The library would print them. The primary message alone: details quote what stands in the rows.
void logNotice(void*, const PGresult* result) {
    logLine("the database says: " + oneLine(field(result, PG_DIAG_MESSAGE_PRIMARY).c_str()) + " (" +
            field(result, PG_DIAG_SQLSTATE) + ')');
}

// The end of one part of what is left.
Clock::time_point partOfTime(Clock::time_point latest, std::size_t parts) {
    const auto now = Clock::now();
    return now + (latest - now) / static_cast<int>(parts);
}

bool succeeded(const PGresult* result) {
    const auto status = PQresultStatus(result);
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK;
}

} // namespace

std::string flawOfPostgresAddress(const std::string& address) {
    char* message = nullptr;
    PQconninfoOption* options = PQconninfoParse(address.c_str(), &message);
    PQfreemem(message); // it may quote the address
    if (!options)
        return "no address of the form postgresql://[USER@]HOST[:PORT]/NAME";
    std::string flaw;
    for (const auto* option = options; option->keyword; ++option)
        if (std::strcmp(option->keyword, "password") == 0 && option->val)
            flaw = "no password in the address, where everybody reads it; use database-password-file, "
                   "PGPASSWORD or "
                   "~/.pgpass";
    PQconninfoFree(options);
    return flaw;
}

PostgresValues& PostgresValues::number(std::int64_t value) {
    values_.push_back(std::to_string(value));
    formats_.push_back(0);
    return *this;
}

PostgresValues& PostgresValues::text(std::string_view value) {
    values_.emplace_back(value);
    formats_.push_back(0);
    return *this;
}

PostgresValues& PostgresValues::bytes(std::string_view value) {
    values_.emplace_back(value);
    formats_.push_back(1);
    return *this;
}

void PostgresRows::clear(pg_result* result) { PQclear(result); }
int PostgresRows::count() const { return PQntuples(result_.get()); }

std::int64_t PostgresRows::number(int row, int column) const {
    std::uint64_t wire = 0;
    if (PQgetisnull(result_.get(), row, column) || PQgetlength(result_.get(), row, column) != sizeof wire)
        throw StorageError("a column of the database is no bigint");
    std::memcpy(&wire, PQgetvalue(result_.get(), row, column), sizeof wire);
    return std::bit_cast<std::int64_t>(be64toh(wire));
}

std::string PostgresRows::bytes(int row, int column) const {
    return {PQgetvalue(result_.get(), row, column),
            static_cast<std::size_t>(PQgetlength(result_.get(), row, column))};
}

PostgresLink::PostgresLink(const PostgresOptions& options, NameLookup& names) : timeout_(options.timeout) {
    try {
        connect(options, names);
        setTimeout(options.timeout);
    } catch (...) {
        PQfinish(connection_);
        throw;
    }
}

PostgresLink::~PostgresLink() { PQfinish(connection_); }

// One time for all places: each may have its part of what is left, so that a silent one does not keep us from
// the others.
void PostgresLink::connect(const PostgresOptions& options, NameLookup& names) {
    std::string password;
    if (!options.passwordFile.empty()) {
        auto line = firstLineOf(options.passwordFile);
        if (!line)
            away(options.passwordFile.string() + " cannot be read");
        password = std::move(*line);
    }
    const auto latest = Clock::now() + timeout_;
    const auto hosts = postgresHosts(options.address);
    std::string reasons;
    for (std::size_t i = 0; i < hosts.size(); ++i) {
        const auto reason =
            connectToAny(hosts[i], options, password, names, partOfTime(latest, hosts.size() - i));
        if (reason.empty())
            return;
        reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    away(reasons);
}

// The name is looked up here: libpq would do it without any bound.
std::string PostgresLink::connectToAny(const PostgresHost& host, const PostgresOptions& options,
                                       const std::string& password, NameLookup& names, Time latest) {
    if (!host.named())
        return connectTo(host, options, password, latest);
    const auto found = names.find(host.host, latest);
    if (found.addresses.empty())
        return host.host + ": " + found.failure;
    std::string reasons;
    for (std::size_t i = 0; i < found.addresses.size(); ++i) {
        const auto reason = connectTo({host.host, found.addresses[i], host.port}, options, password,
                                      partOfTime(latest, found.addresses.size() - i));
        if (reason.empty())
            return {};
        reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    return reasons;
}

std::string PostgresLink::connectTo(const PostgresHost& host, const PostgresOptions& options,
                                    const std::string& password, Time latest) {
    const auto lost = std::to_string(options.timeout.count());
    const auto given = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
    // What comes after the address goes over what it says.
    const std::array keys{
        "dbname",   "fallback_application_name",      "tcp_user_timeout", "host", "hostaddr", "port",
        "password", static_cast<const char*>(nullptr)};
    const std::array values{options.address.c_str(),
                            "lorvane-backend",
                            lost.c_str(),
                            given(host.host),
                            given(host.address),
                            given(host.port),
                            options.passwordFile.empty() ? nullptr : password.c_str(),
                            static_cast<const char*>(nullptr)};
    PQfinish(std::exchange(connection_, nullptr));
    connection_ = PQconnectStartParams(keys.data(), values.data(), 1);
    if (!connection_)
        return "out of memory";
    PQsetNoticeReceiver(connection_, &logNotice, nullptr);
    auto state = PGRES_POLLING_WRITING;
    while (PQstatus(connection_) != CONNECTION_BAD && state != PGRES_POLLING_OK &&
           state != PGRES_POLLING_FAILED) {
        if (!ready(state == PGRES_POLLING_READING ? POLLIN : POLLOUT, latest))
            return host.host + ' ' + host.address + " gives no answer";
        state = PQconnectPoll(connection_);
    }
    if (PQstatus(connection_) != CONNECTION_OK || PQsetnonblocking(connection_, 1) != 0)
        return oneLine(PQerrorMessage(connection_));
    return {};
}

// The server gives up a little before we do, so that a slow statement costs an error and no connection.
void PostgresLink::setTimeout(std::chrono::milliseconds timeout) {
    timeout_ = timeout;
    run("SELECT set_config('statement_timeout', $1, false), set_config('client_min_messages', 'warning', "
        "false)",
        PostgresValues().number(timeout.count() * 4 / 5));
}

void PostgresLink::away(const std::string& reason) {
    broken_ = true;
    throw StorageAway("the database is away: " + reason);
}

bool PostgresLink::ready(short events, Time latest) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(latest - Clock::now()).count();
    pollfd entry{PQsocket(connection_), events, 0};
    return entry.fd < 0 || (left > 0 && ::poll(&entry, 1, static_cast<int>(left)) != 0);
}

void PostgresLink::await(short events, Time latest) {
    if (PQsocket(connection_) < 0)
        away(oneLine(PQerrorMessage(connection_)));
    if (!ready(events, latest))
        away("no answer within " + std::to_string(timeout_.count()) + " ms");
}

PostgresRows PostgresLink::run(const std::string& sql, const PostgresValues& values) {
    const auto latest = Clock::now() + timeout_;
    const auto count = values.values_.size();
    std::vector<const char*> texts(count);
    std::vector<int> lengths(count);
    for (std::size_t i = 0; i < count; ++i) {
        texts[i] = values.values_[i].c_str();
        lengths[i] = static_cast<int>(values.values_[i].size());
    }
    constexpr int binary = 1;
    if (broken_ || !PQsendQueryParams(connection_, sql.c_str(), static_cast<int>(count), nullptr,
                                      texts.data(), lengths.data(), values.formats_.data(), binary))
        away(oneLine(PQerrorMessage(connection_)));
    for (int unsent = PQflush(connection_); unsent != 0; unsent = PQflush(connection_)) {
        if (unsent < 0)
            away(oneLine(PQerrorMessage(connection_)));
        await(POLLIN | POLLOUT, latest);
        if (!PQconsumeInput(connection_))
            away(oneLine(PQerrorMessage(connection_)));
    }
    return answer(latest);
}

PostgresRows PostgresLink::answer(Time latest) {
    Result kept;
    for (;;) {
        while (PQisBusy(connection_)) {
            await(POLLIN, latest);
            if (!PQconsumeInput(connection_))
                away(oneLine(PQerrorMessage(connection_)));
        }
        Result next(PQgetResult(connection_));
        if (!next)
            break;
        if (!kept || succeeded(kept.get()))
            kept = std::move(next);
    }
    if (kept && succeeded(kept.get()))
        return PostgresRows(kept.release());
    const auto state = field(kept.get(), PG_DIAG_SQLSTATE);
    if (!kept || PQstatus(connection_) != CONNECTION_OK || meansAway(state))
        away(oneLine(PQerrorMessage(connection_)));
    // The primary message alone: details quote what stands in the rows.
    throw StorageError(oneLine(field(kept.get(), PG_DIAG_MESSAGE_PRIMARY).c_str()) + " (" + state + ')');
}

bool PostgresLink::stillThere() {
    pollfd entry{PQsocket(connection_), POLLIN, 0};
    while (!broken_ && ::poll(&entry, 1, 0) > 0)
        broken_ = !PQconsumeInput(connection_) || PQstatus(connection_) != CONNECTION_OK;
    return !broken_;
}

PostgresTransaction::~PostgresTransaction() {
    if (committed_ || link_.broken())
        return;
    try {
        link_.run("ROLLBACK");
    } catch (const StorageError&) {
        link_.giveUp();
    }
}

} // namespace lorvane::backend

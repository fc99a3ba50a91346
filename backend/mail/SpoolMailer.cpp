// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/Mailer.h"
#include "util/Secrets.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace lorvane::backend {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const char* what) { throw MailError(std::string(what) + ": " + std::strerror(errno)); }

void writeWhole(const fs::path& file, std::string_view bytes) {
    const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (target < 0)
        fail("cannot make a file in the spool folder");
    bool good = true;
    while (good && !bytes.empty()) {
        const auto written = ::write(target, bytes.data(), bytes.size());
        good = written > 0;
        bytes.remove_prefix(good ? static_cast<std::size_t>(written) : 0);
    }
    good = good && ::fsync(target) == 0;
    ::close(target);
    if (!good)
        fail("cannot write to the spool folder");
}

std::size_t lettersIn(const fs::path& folder) {
    std::error_code ignored;
    const fs::directory_iterator entries(folder, ignored);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace

SpoolMailer::SpoolMailer(fs::path folder, std::size_t most) : folder_(std::move(folder)), most_(most) {
    fs::create_directories(folder_);
    fs::permissions(folder_, fs::perms::owner_all);
}

void SpoolMailer::send(const Letter& letter) {
    if (lettersIn(folder_) >= most_)
        throw MailError("the spool folder is full");
    const auto now = std::chrono::system_clock::now();
    const auto unique = newToken().substr(0, 24);
    const auto stamp = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    const auto file = folder_ / (std::to_string(stamp) + '-' + unique + ".eml");
    const auto fresh = folder_ / ('.' + unique + ".new");
    std::error_code error;
    try {
        writeWhole(fresh, messageOf(letter, now, unique));
    } catch (...) {
        fs::remove(fresh, error);
        throw;
    }
    fs::rename(fresh, file, error);
    if (error)
        throw MailError("cannot rename within the spool folder: " + error.message());
}

} // namespace lorvane::backend

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/Mailer.h"
#include "util/Secrets.h"

#include <algorithm>
#include <cstring>
#include <curl/curl.h>
#include <memory>

namespace lorvane::backend {

namespace {

constexpr long connectSeconds = 5;

std::size_t readMessage(char* target, std::size_t size, std::size_t count, void* rest) {
    auto& left = *static_cast<std::string_view*>(rest);
    const auto taken = std::min(left.size(), size * count);
    std::memcpy(target, left.data(), taken);
    left.remove_prefix(taken);
    return taken;
}

// The mail server's own words may repeat an address, so that only the kind of the failure is told.
[[noreturn]] void fail(CURL* curl, CURLcode code) {
    long reply = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply);
    std::string reason = std::string("the mail server: ") + curl_easy_strerror(code);
    if (reply > 0)
        reason += " (reply " + std::to_string(reply) + ')';
    throw MailError(reason);
}

void setUp(CURL* curl, const SmtpOptions& options) {
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_URL, options.url.c_str());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    curl_easy_setopt(curl, CURLOPT_USE_SSL,
                     static_cast<long>(options.tls ? CURLUSESSL_ALL : CURLUSESSL_NONE));
    curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, static_cast<long>(options.time.count()));
    if (!options.authorities.empty())
        curl_easy_setopt(curl, CURLOPT_CAINFO, options.authorities.c_str());
    if (!options.user.empty()) {
        curl_easy_setopt(curl, CURLOPT_USERNAME, options.user.c_str());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, options.password.c_str());
    }
}

} // namespace

SmtpMailer::SmtpMailer(SmtpOptions options) : options_(std::move(options)) {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (initialised != CURLE_OK)
        throw MailError("libcurl cannot start");
}

void SmtpMailer::send(const Letter& letter) {
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), &curl_easy_cleanup);
    const std::unique_ptr<curl_slist, void (*)(curl_slist*)> to(
        curl_slist_append(nullptr, ('<' + letter.to + '>').c_str()), &curl_slist_free_all);
    if (!curl || !to)
        throw MailError("no memory");
    const auto message = messageOf(letter, std::chrono::system_clock::now(), newToken().substr(0, 24));
    std::string_view rest = message;
    setUp(curl.get(), options_);
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_FROM, ('<' + letter.from + '>').c_str());
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_RCPT, to.get());
    curl_easy_setopt(curl.get(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(message.size()));
    curl_easy_setopt(curl.get(), CURLOPT_READFUNCTION, &readMessage);
    curl_easy_setopt(curl.get(), CURLOPT_READDATA, &rest);
    if (const auto code = curl_easy_perform(curl.get()); code != CURLE_OK)
        fail(curl.get(), code);
}

} // namespace lorvane::backend

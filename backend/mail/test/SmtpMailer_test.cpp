// SPDX-License-Identifier: GPL-3.0-or-later
// Against a mail server that is not ours.
#include "mail/Mailer.h"
#include "testing/SmtpSink.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace std::chrono_literals;
using lorvane::backend::testing::SmtpSink;

namespace {

const Letter letter{"service@example.org", "ann@example.org", "", "Hello", "..\nA line.\n.\nThe end."};

SmtpOptions optionsFor(const SmtpSink& sink) {
    SmtpOptions options;
    options.url = sink.url();
    options.authorities = sink.certificate();
    return options;
}

std::string reasonOf(const SmtpOptions& options) {
    try {
        SmtpMailer(options).send(letter);
    } catch (const MailError& error) {
        return error.what();
    }
    return "sent";
}

} // namespace

TEST(SmtpMailer, ALetterGoesOverTls) {
    const SmtpSink sink("tls");
    SmtpMailer mailer(optionsFor(sink));
    mailer.send(letter);
    mailer.send(letter);
    ASSERT_TRUE(sink.letter(1));
    EXPECT_TRUE(sink.letter(0)->starts_with("from=service@example.org to=ann@example.org tls=True "))
        << *sink.letter(0);
    EXPECT_NE(sink.letter(0)->find("Subject: Hello\r\n"), std::string::npos);
}

TEST(SmtpMailer, ItLogsInAndAWrongPasswordIsAnError) {
    const SmtpSink sink("login");
    auto options = optionsFor(sink);
    options.user = "lorvane";
    options.password = "wrong";
    EXPECT_NE(reasonOf(options), "sent");
    options.password = "secret";
    EXPECT_EQ(reasonOf(options), "sent");
    ASSERT_TRUE(sink.letter(0));
    EXPECT_NE(sink.letter(0)->find("user=True"), std::string::npos);
    EXPECT_FALSE(sink.letter(1));
}

TEST(SmtpMailer, NothingIsSaidToAServerWithoutTlsOrOfAnUnknownName) {
    const SmtpSink open("plain");
    auto options = optionsFor(open);
    EXPECT_NE(reasonOf(options), "sent") << "no STARTTLS";
    options.tls = false;
    EXPECT_EQ(reasonOf(options), "sent") << "asked for";
    const SmtpSink stranger("tls");
    options = optionsFor(stranger);
    options.authorities = open.certificate();
    EXPECT_NE(reasonOf(options), "sent") << "a certificate that nobody vouches for";
    EXPECT_FALSE(stranger.letter(0));
}

TEST(SmtpMailer, ARefusalIsToldWithoutTheAddress) {
    const SmtpSink sink("refuse");
    const auto reason = reasonOf(optionsFor(sink));
    EXPECT_NE(reason.find("550"), std::string::npos) << reason;
    EXPECT_EQ(reason.find("ann"), std::string::npos) << reason;
}

TEST(SmtpMailer, AServerThatSaysNothingIsGivenUp) {
    const SmtpSink sink("hang");
    auto options = optionsFor(sink);
    options.time = 1s;
    const auto began = std::chrono::steady_clock::now();
    EXPECT_NE(reasonOf(options), "sent");
    EXPECT_LT(std::chrono::steady_clock::now() - began, 4s);
    options.url = "smtp://127.0.0.1:1";
    EXPECT_NE(reasonOf(options), "sent") << "nobody listens";
    options.url = "file:///etc/passwd";
    EXPECT_NE(reasonOf(options), "sent") << "no mail server at all";
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/Address.h"
#include "mail/Letter.h"
#include "mail/Mailer.h"
#include "testing/TemporaryFolder.h"
#include "util/Base64.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace lorvane::backend;
using lorvane::backend::testing::readFile;
using lorvane::backend::testing::TemporaryFolder;

namespace {

const Letter plain{"service@example.org", "ann@example.org", "", "Hello", "A line.\nAnother."};

std::string written(const Letter& letter) {
    return messageOf(letter, std::chrono::system_clock::from_time_t(1'700'000'000), "unique");
}

std::vector<std::string> headersOf(const std::string& message) {
    std::vector<std::string> headers;
    std::istringstream in(message.substr(0, message.find("\r\n\r\n")));
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.starts_with(' '))
            headers.back() += line;
        else
            headers.push_back(line);
    }
    return headers;
}

std::string bodyOf(const std::string& message) {
    std::string base64;
    for (const char c : message.substr(message.find("\r\n\r\n")))
        if (c != '\r' && c != '\n')
            base64 += c;
    return decodeBase64(base64).value_or("not base64");
}

std::string decodedWords(std::string text) {
    std::string out;
    for (std::size_t at = 0; (at = text.find("=?UTF-8?B?", at)) != std::string::npos;) {
        at += 10;
        out += decodeBase64(text.substr(at, text.find("?=", at) - at)).value_or("not base64");
    }
    return out;
}

std::string header(const std::string& message, const std::string& name) {
    for (const auto& line : headersOf(message))
        if (line.starts_with(name + ": "))
            return line.substr(name.size() + 2);
    return "none";
}

} // namespace

TEST(MailAddress, OrdinaryOnesAreTaken) {
    for (const char* good : {"ann@example.org", "a.b+c@mail.example.co.uk", "x_y@xn--e1afmkfd.xn--p1ai",
                             "o'neil@example.org", "1@2.ab"})
        EXPECT_TRUE(isMailAddress(good)) << good;
    EXPECT_TRUE(isMailAddress(std::string(64, 'a') + "@example.org"));
}

TEST(MailAddress, WhatNoServerWouldTakeOrCouldForgeIsRefused) {
    for (const char* bad : {"",
                            "@",
                            "ann",
                            "ann@",
                            "@example.org",
                            "ann@example",
                            "ann@@example.org",
                            "ann@example.org.",
                            ".ann@example.org",
                            "ann.@example.org",
                            "a..b@example.org",
                            "ann@-a.org",
                            "ann@a-.org",
                            "ann@a..org",
                            "ann@127.0.0.1",
                            "ann@[127.0.0.1]",
                            "\"a b\"@example.org",
                            "ann @example.org",
                            " ann@example.org",
                            "ann@example.org ",
                            "ann@example.org\n",
                            "ann@example.org\r\nBcc: eve@example.org",
                            "ann@example.org,eve@example.org",
                            "ann@example.org>",
                            "<ann@example.org>",
                            "a@b@example.org",
                            "\xd0\xb0@example.org",
                            "ann@ex\xc3\xa4mple.org"})
        EXPECT_FALSE(isMailAddress(bad)) << bad;
    EXPECT_FALSE(isMailAddress(std::string("a\0b@example.org", 15)));
    EXPECT_FALSE(isMailAddress(std::string(65, 'a') + "@example.org"));
    EXPECT_FALSE(isMailAddress("a@" + std::string(64, 'b') + ".org"));
    std::string longest = "a@";
    while (longest.size() < 250)
        longest += "bbbbbbbb.";
    EXPECT_FALSE(isMailAddress(longest + "org"));
}

TEST(Letter, SaysWhoWhenAndWhat) {
    auto letter = plain;
    letter.replyTo = "bob@example.org";
    const auto message = written(letter);
    EXPECT_EQ(headersOf(message).front(), "Date: Tue, 14 Nov 2023 22:13:20 +0000");
    EXPECT_EQ(header(message, "From"), "Lorvane <service@example.org>");
    EXPECT_EQ(header(message, "To"), "<ann@example.org>");
    EXPECT_EQ(header(message, "Reply-To"), "<bob@example.org>");
    EXPECT_EQ(header(message, "Subject"), "Hello");
    EXPECT_EQ(header(message, "Message-ID"), "<unique@example.org>");
    EXPECT_EQ(bodyOf(message), "A line.\r\nAnother.");
    EXPECT_EQ(header(written(plain), "Reply-To"), "none");
}

TEST(Letter, ASubjectInAnyScriptComesThroughWhole) {
    auto letter = plain;
    for (int i = 0; i < 30; ++i)
        letter.subject += "Приглашение €";
    const auto message = written(letter);
    EXPECT_EQ(decodedWords(header(message, "Subject")), letter.subject);
    std::istringstream in(message);
    for (std::string line; std::getline(in, line);) {
        EXPECT_LE(line.size(), 79U) << line;
        for (const char c : line)
            EXPECT_LT(static_cast<unsigned char>(c), 0x80U);
    }
}

TEST(Letter, NoContentBecomesAHeader) {
    auto letter = plain;
    letter.subject = "x\r\nBcc: eve@example.org\r\n\r\nbody";
    letter.text = "a\r\n\r\n.\r\nBcc: eve@example.org\n";
    const auto message = written(letter);
    EXPECT_EQ(headersOf(message).size(), headersOf(written(plain)).size());
    EXPECT_EQ(header(message, "Bcc"), "none");
    EXPECT_EQ(bodyOf(message), "a\r\n\r\n.\r\nBcc: eve@example.org\r\n");
    letter.subject = "=?UTF-8?B?eA==?=";
    EXPECT_EQ(decodedWords(header(written(letter), "Subject")), letter.subject) << "as it was typed";
    letter.subject = std::string(200, '\x80');
    EXPECT_EQ(decodedWords(header(written(letter), "Subject")), letter.subject)
        << "what is no UTF-8 ends too";
}

TEST(SpoolMailer, EachLetterIsAWholeFileForTheOwnerAlone) {
    const TemporaryFolder folder;
    SpoolMailer mailer(folder / "deep/mail");
    mailer.send(plain);
    mailer.send(plain);
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "deep/mail")) {
        ++files;
        EXPECT_EQ(entry.path().extension(), ".eml");
        EXPECT_EQ(entry.status().permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        EXPECT_EQ(bodyOf(readFile(entry.path())), "A line.\r\nAnother.");
    }
    EXPECT_EQ(files, 2U);
    EXPECT_EQ(std::filesystem::status(folder / "deep/mail").permissions(), std::filesystem::perms::owner_all);
}

TEST(SpoolMailer, AFullOrVanishedFolderIsAnError) {
    const TemporaryFolder folder;
    SpoolMailer small(folder / "small", 1);
    small.send(plain);
    EXPECT_THROW(small.send(plain), MailError);
    SpoolMailer gone(folder / "gone");
    std::filesystem::remove_all(folder / "gone");
    EXPECT_THROW(gone.send(plain), MailError);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/Letter.h"

#include "util/Base64.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace lorvane::backend {

namespace {

constexpr std::size_t plainLength = 60;   // of a header's content that stands as it is
constexpr std::size_t encodedLength = 42; // bytes in one encoded word: 56 signs and 12 around them
constexpr std::size_t bodyLine = 57;      // bytes that make 76 signs

std::string withoutControls(std::string_view text) {
    std::string out(text);
    std::replace_if(
        out.begin(), out.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; },
        ' ');
    return out;
}

// At most `most` bytes, and never a part of a sign.
std::string_view prefixOfWholeSigns(std::string_view text, std::size_t most) {
    if (text.size() <= most)
        return text;
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xc0U) == 0x80)
        --most;
    return text.substr(0, most);
}

std::string headerText(std::string_view raw) {
    auto text = withoutControls(raw);
    const bool plain = text.size() <= plainLength && text.find("=?") == std::string::npos &&
                       std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < 0x7f; });
    if (plain)
        return text;
    std::string out;
    for (std::string_view rest = text; !rest.empty();) {
        auto part = prefixOfWholeSigns(rest, encodedLength);
        if (part.empty())
            part = rest.substr(0, encodedLength); // no UTF-8 at all
        out += (out.empty() ? "=?UTF-8?B?" : "\r\n =?UTF-8?B?") + encodeBase64(part) + "?=";
        rest.remove_prefix(part.size());
    }
    return out;
}

std::string bodyText(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\n')
            lines += '\r';
        if (c != '\r')
            lines += c;
    }
    std::string out;
    for (std::string_view rest = lines; !rest.empty(); rest.remove_prefix(std::min(bodyLine, rest.size())))
        out += encodeBase64(rest.substr(0, bodyLine)) + "\r\n";
    return out;
}

// Not strftime: the names must be English in every locale.
std::string dateText(std::chrono::system_clock::time_point date) {
    static constexpr std::array<const char*, 7> days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto seconds = std::chrono::system_clock::to_time_t(date);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s, %d %s %d %02d:%02d:%02d +0000",
                  days.at(static_cast<std::size_t>(parts.tm_wday)), parts.tm_mday,
                  months.at(static_cast<std::size_t>(parts.tm_mon)), parts.tm_year + 1900, parts.tm_hour,
                  parts.tm_min, parts.tm_sec);
    return text.data();
}

} // namespace

std::string messageOf(const Letter& letter, std::chrono::system_clock::time_point date,
                      std::string_view unique) {
    const auto host = letter.from.substr(letter.from.find('@') + 1);
    std::string message =
        "Date: " + dateText(date) + "\r\nFrom: Lorvane <" + letter.from + ">\r\nTo: <" + letter.to + ">\r\n";
    if (!letter.replyTo.empty())
        message += "Reply-To: <" + letter.replyTo + ">\r\n";
    message += "Subject: " + headerText(letter.subject) + "\r\nMessage-ID: <";
    message.append(unique).append("@").append(host).append(">\r\n");
    message += "MIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n"
               "Content-Transfer-Encoding: base64\r\nAuto-Submitted: auto-generated\r\n\r\n";
    return message + bodyText(letter.text);
}

} // namespace lorvane::backend

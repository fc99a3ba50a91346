// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Markup.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

constexpr std::size_t longestValue = 32;

constexpr std::string_view pageHead = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<meta name="referrer" content="no-referrer">
<title>Get Lorvane</title>
<style>
:root { color-scheme: light dark }
body { font: 17px/1.5 system-ui, sans-serif; max-width: 34em; margin: 15vh auto; padding: 0 1.5em }
h1 { font-size: 1.6em }
code { font-size: 1.1em; letter-spacing: .08em }
</style>
</head>
<body>
<h1>Lorvane</h1>
<p>Say more than you can type: hold a key, speak, let go, and clean text stands where you were writing.</p>
)";

bool isUsable(std::string_view value) {
    return !value.empty() && value.size() <= longestValue &&
           std::all_of(value.begin(), value.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '_';
           });
}

// The first usable value of the key; empty when there is none.
std::string_view valueOf(std::string_view query, std::string_view key) {
    while (!query.empty()) {
        const auto end = std::min(query.find('&'), query.size());
        const auto pair = query.substr(0, end);
        const auto value = pair.size() > key.size() ? pair.substr(key.size() + 1) : std::string_view();
        if (pair.starts_with(key) && pair.size() > key.size() && pair[key.size()] == '=' && isUsable(value))
            return value;
        query.remove_prefix(std::min(end + 1, query.size()));
    }
    return {};
}

} // namespace

std::string escapedMarkup(std::string_view text) {
    std::string out;
    for (const char c : text)
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&#39;";
            break;
        default:
            out += static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t' ? ' ' : c;
        }
    return out;
}

std::string landingPage(std::string_view query, std::string_view downloadUrl) {
    const auto code = valueOf(query, "r");
    const auto place = valueOf(query, "c");
    std::string link(downloadUrl);
    const auto add = [&link](std::string_view key, std::string_view value) {
        if (!value.empty())
            link.append(link.find('?') == std::string::npos ? "?" : "&").append(key).append(value);
    };
    add("r=", code);
    add("c=", place);
    std::string page(pageHead);
    if (!code.empty())
        page += "<p>A friend sent you here. The code of the invitation: <code>" + escapedMarkup(code) +
                "</code></p>\n";
    if (downloadUrl.empty())
        page += "<p>Ask whoever runs this service for the download.</p>\n";
    else
        page += "<p><a href=\"" + escapedMarkup(link) + "\">Download Lorvane</a></p>\n";
    return page + "</body>\n</html>\n";
}

} // namespace lorvane::backend

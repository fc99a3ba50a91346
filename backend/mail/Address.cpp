// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/Address.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isAtomSign(char c) {
    return isLetterOrDigit(c) || std::string_view("!#$%&'*+-/=?^_`{|}~").find(c) != std::string_view::npos;
}

bool isLabel(std::string_view label) {
    return !label.empty() && label.size() <= 63 && label.front() != '-' && label.back() != '-' &&
           std::all_of(label.begin(), label.end(), [](char c) { return isLetterOrDigit(c) || c == '-'; });
}

bool isLocalPart(std::string_view local) {
    if (local.empty() || local.size() > 64 || local.front() == '.' || local.back() == '.' ||
        local.find("..") != std::string_view::npos)
        return false;
    return std::all_of(local.begin(), local.end(), [](char c) { return c == '.' || isAtomSign(c); });
}

bool isHostName(std::string_view host) {
    std::size_t labels = 0;
    bool digitsOnly = false;
    for (;;) {
        const auto dot = host.find('.');
        const auto label = host.substr(0, dot);
        if (!isLabel(label))
            return false;
        ++labels;
        digitsOnly = std::all_of(label.begin(), label.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (dot == std::string_view::npos)
            return labels >= 2 && !digitsOnly;
        host.remove_prefix(dot + 1);
    }
}

} // namespace

bool isMailAddress(std::string_view text) {
    const auto at = text.find('@');
    return text.size() <= 254 && at != std::string_view::npos && isLocalPart(text.substr(0, at)) &&
           isHostName(text.substr(at + 1));
}

} // namespace lorvane::backend

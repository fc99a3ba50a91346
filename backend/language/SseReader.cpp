// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/SseReader.h"

namespace lorvane::backend {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

SseReader::Line lineOf(std::string_view whole) {
    const auto colon = whole.find(':');
    if (colon == std::string_view::npos)
        return {whole, {}, whole};
    auto value = whole.substr(colon + 1);
    if (value.starts_with(' '))
        value.remove_prefix(1);
    return {whole.substr(0, colon), value, whole};
}

} // namespace

SseReader::SseReader(OnLine onLine, std::size_t longestLine)
    : onLine_(std::move(onLine)), longest_(longestLine) {}

bool SseReader::feed(std::string_view bytes) {
    while (wanted_ && !bytes.empty()) {
        if (afterReturn_ && bytes.front() == '\n')
            bytes.remove_prefix(1);
        afterReturn_ = false;
        const auto end = std::min(bytes.find_first_of("\r\n"), bytes.size());
        tooLong_ = line_.size() + end > longest_;
        if (tooLong_)
            return wanted_ = false;
        line_.append(bytes.substr(0, end));
        if (end == bytes.size())
            break;
        afterReturn_ = bytes[end] == '\r';
        bytes.remove_prefix(end + 1);
        wanted_ = emit();
    }
    return wanted_;
}

bool SseReader::finish() {
    if (wanted_ && !line_.empty())
        wanted_ = emit();
    return wanted_;
}

bool SseReader::emit() {
    std::string_view whole = line_;
    if (first_ && whole.starts_with(byteOrderMark))
        whole.remove_prefix(byteOrderMark.size());
    first_ = false;
    const bool more = onLine_(lineOf(whole));
    line_.clear();
    return more;
}

} // namespace lorvane::backend

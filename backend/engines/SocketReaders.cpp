// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SocketReaders.h"

#include <algorithm>
#include <boost/json.hpp>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

constexpr std::size_t longestLine = std::size_t(64) << 10;
constexpr std::size_t mostData = std::size_t(4) << 20;

json::object objectOf(std::string_view text) {
    json::error_code error;
    auto value = json::parse({text.data(), text.size()}, error);
    if (error || !value.is_object())
        throw BadSpeechAnswer("an answer that is no JSON object");
    return std::move(value.as_object());
}

std::optional<std::string> textIn(const json::object& object, const char* key) {
    const auto* value = object.if_contains(key);
    return value && value->is_string() ? std::optional(std::string(value->as_string())) : std::nullopt;
}

std::size_t lengthIn(const json::object& object, const char* key) {
    const auto* value = object.if_contains(key);
    if (!value || value->is_null())
        return 0;
    json::error_code error;
    const auto length = value->to_number<std::uint64_t>(error);
    if (error || length > mostData)
        throw BadSpeechAnswer("an event of no possible length");
    return static_cast<std::size_t>(length);
}

} // namespace

bool WyomingReader::feed(std::string_view bytes) {
    if (whole_)
        return true;
    read_ += bytes;
    while (!whole_ && (head_ || readHead()) && readEvent())
        continue;
    return whole_;
}

// False when the line is not whole.
bool WyomingReader::readHead() {
    const auto end = read_.find('\n');
    if (std::min(end, read_.size()) > longestLine)
        throw BadSpeechAnswer("an event without end");
    if (end == std::string::npos)
        return false;
    const auto object = objectOf(std::string_view(read_).substr(0, end));
    Head head{textIn(object, "type").value_or(""),
              {},
              lengthIn(object, "data_length"),
              lengthIn(object, "payload_length")};
    if (const auto* data = object.if_contains("data"); data && data->is_object())
        head.text = textIn(data->as_object(), "text").value_or("");
    read_.erase(0, end + 1);
    head_ = std::move(head);
    return true;
}

// False when not all of its bytes are there.
bool WyomingReader::readEvent() {
    if (read_.size() < head_->data + head_->payload)
        return false;
    if (head_->data > 0) {
        const auto data = objectOf(std::string_view(read_).substr(0, head_->data));
        head_->text = textIn(data, "text").value_or(std::move(head_->text));
    }
    read_.erase(0, head_->data + head_->payload);
    hear(head_->type, head_->text);
    head_.reset();
    return true;
}

void WyomingReader::hear(const std::string& type, const std::string& text) {
    if (type == "error")
        throw BadSpeechAnswer("the server told an error");
    if (type == "transcript-chunk")
        pieces_ += text;
    whole_ = type == "transcript" || type == "transcript-stop";
    if (whole_)
        text_ = type == "transcript" ? text : pieces_;
    if (std::max(pieces_.size(), text_.size()) > longestSocketText)
        throw BadSpeechAnswer("a transcript without end");
}

void VoskReader::hear(std::string_view message) {
    const auto words = textIn(objectOf(message), "text").value_or("");
    if (!words.empty())
        text_ += (text_.empty() ? "" : " ") + words;
    if (text_.size() > longestSocketText)
        throw BadSpeechAnswer("a transcript without end");
}

} // namespace lorvane::backend

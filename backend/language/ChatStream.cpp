// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/ChatStream.h"

#include <boost/json.hpp>
#include <optional>
#include <utility>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

constexpr std::size_t longestObject = std::size_t(4) << 20;
constexpr std::size_t longestOpening = 64; // blanks before the answer
constexpr std::size_t mostPieces = 64;     // of one event's data
constexpr std::string_view thoughtBegin = "<think>";
constexpr std::string_view thoughtEnd = "</think>";
constexpr std::string_view blanks = " \t\r\n";

std::string_view view(const json::string& text) { return {text.data(), text.size()}; }

std::string_view trimmedFront(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
}

std::optional<json::object> objectOf(std::string_view text) {
    json::error_code error;
    auto value = json::parse({text.data(), text.size()}, error);
    if (error || !value.is_object())
        return std::nullopt;
    return std::move(value.as_object());
}

const json::value* present(const json::object& object, std::string_view key) {
    const auto* value = object.if_contains({key.data(), key.size()});
    return value && !value->is_null() ? value : nullptr;
}

} // namespace

ChatStream::ChatStream(OnText onText)
    : onText_(std::move(onText)), lines_([this](const SseReader::Line& line) { return this->line(line); }) {}

ChatStream::~ChatStream() = default;

bool ChatStream::feed(std::string_view bytes) {
    if (ended_)
        return false;
    if (shape_ == Shape::unknown) {
        bytes = trimmedFront(bytes);
        if (bytes.empty())
            return true;
        shape_ = bytes.front() == '{' ? Shape::object : Shape::events;
    }
    if (shape_ == Shape::object) {
        if (object_.size() + bytes.size() > longestObject)
            return end(ChatEnd::failed, "the answer is too long");
        object_.append(bytes);
        return true;
    }
    if (!lines_.feed(bytes) && lines_.tooLong())
        return end(ChatEnd::failed, "a line of the answer is too long");
    return !ended_;
}

ChatEnd ChatStream::finish() {
    if (!ended_ && shape_ == Shape::events)
        lines_.finish();
    if (!ended_ && !object_.empty()) {
        // A server that sends its error as bare JSON may do so in lines, or not stream at all.
        if (const auto object = objectOf(object_))
            event(*object);
        else
            end(ChatEnd::failed, "an answer that is no JSON");
    }
    if (!ended_)
        end(ChatEnd::failed, "the answer breaks off");
    return end_;
}

bool ChatStream::line(const SseReader::Line& line) {
    if (line.whole.empty()) {
        if (!object_.empty())
            return end(ChatEnd::failed, "an event that is no JSON");
        return true;
    }
    if (line.whole.starts_with('{'))
        return data(line.whole);
    if (line.field == "data")
        return data(line.value);
    if (line.field == "error")
        return end(ChatEnd::failed, "an error in the stream");
    if (line.field == "event" && line.value == "error")
        errorEvent_ = true;
    return true; // comments keep the connection alive; other fields say nothing here
}

// An event's data may come in several lines; nearly always it is one.
bool ChatStream::data(std::string_view piece) {
    if (errorEvent_)
        return end(ChatEnd::failed, "an error in the stream");
    if (object_.empty() && piece == "[DONE]")
        return end(ChatEnd::failed, "the answer ends without a reason");
    if (object_.empty() && trimmedFront(piece).empty())
        return true;
    object_ += object_.empty() ? std::string(piece) : '\n' + std::string(piece);
    const auto object = objectOf(object_);
    if (!object)
        return ++pieces_ < mostPieces && object_.size() < longestObject
                   ? true
                   : end(ChatEnd::failed, "an event that is no JSON");
    object_.clear();
    pieces_ = 0;
    return event(*object);
}

bool ChatStream::event(const json::object& chunk) {
    if (present(chunk, "error"))
        return end(ChatEnd::failed, "an error in the answer");
    const auto* choices = present(chunk, "choices");
    if (!choices)
        return true; // figures of use, or a word from a filter
    if (!choices->is_array())
        return end(ChatEnd::failed, "an answer of another kind");
    for (const auto& entry : choices->as_array()) {
        if (!entry.is_object())
            return end(ChatEnd::failed, "an answer of another kind");
        const auto* index = present(entry.as_object(), "index");
        if (index && index->is_int64() && index->as_int64() != 0)
            continue;
        if (!choice(entry.as_object()))
            return false;
    }
    return true;
}

bool ChatStream::choice(const json::object& choice) {
    const auto* delta = present(choice, "delta");
    const auto* said = delta ? delta : present(choice, "message");
    if (said && said->is_object()) {
        const auto* refusal = present(said->as_object(), "refusal");
        if (refusal && refusal->is_string() && !refusal->as_string().empty())
            return end(ChatEnd::refused, "the model refuses");
        const auto* text = present(said->as_object(), "content");
        if (text && !content(*text))
            return false;
    }
    const auto* reason = present(choice, "finish_reason");
    if (!reason)
        return true;
    if (!reason->is_string())
        return end(ChatEnd::failed, "an answer of another kind");
    return reason->as_string().empty() || finishedBy(view(reason->as_string()));
}

// A text, or, from servers with several kinds of content, a list of parts.
bool ChatStream::content(const json::value& content) {
    if (content.is_string())
        return write(view(content.as_string()));
    if (!content.is_array())
        return end(ChatEnd::failed, "an answer of another kind");
    for (const auto& part : content.as_array()) {
        const auto* text = part.is_object() ? present(part.as_object(), "text") : nullptr;
        if (text && text->is_string() && !write(view(text->as_string())))
            return false;
    }
    return true;
}

bool ChatStream::finishedBy(std::string_view reason) {
    if (reason == "stop")
        return settle() && end(ChatEnd::complete, {});
    if (reason == "length")
        return end(ChatEnd::truncated, "the answer is cut off at its limit");
    if (reason == "content_filter")
        return end(ChatEnd::refused, "a filter ended the answer");
    return end(ChatEnd::failed, "the answer ends for another reason");
}

bool ChatStream::write(std::string_view text) {
    if (answering_)
        return answer(text);
    opening_ += text;
    if (!thinking_) {
        const auto begin = trimmedFront(opening_);
        if (thoughtBegin.starts_with(begin) && begin != thoughtBegin && opening_.size() < longestOpening)
            return true;
        thinking_ = begin.starts_with(thoughtBegin);
    }
    if (!thinking_)
        return answer(std::exchange(opening_, {}));
    const auto stop = opening_.find(thoughtEnd);
    if (stop == std::string::npos) {
        const auto kept = std::min(opening_.size(), thoughtEnd.size() - 1);
        opening_.erase(0, opening_.size() - kept);
        return true;
    }
    thinking_ = false;
    opening_.erase(0, stop + thoughtEnd.size());
    return answer(std::exchange(opening_, {}));
}

bool ChatStream::answer(std::string_view text) {
    answering_ = true;
    return text.empty() || onText_(text) || end(ChatEnd::unwanted, "unwanted");
}

// At the end what looked like the beginning of a thought is known to be none.
bool ChatStream::settle() {
    if (thinking_)
        return end(ChatEnd::failed, "the model thinks and does not answer");
    return answering_ || answer(std::exchange(opening_, {}));
}

bool ChatStream::end(ChatEnd end, std::string reason) {
    if (!ended_) {
        ended_ = true;
        end_ = end;
        reason_ = std::move(reason);
    }
    return false;
}

} // namespace lorvane::backend

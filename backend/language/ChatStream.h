// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/SseReader.h"

#include <boost/json/fwd.hpp>
#include <functional>
#include <string>
#include <string_view>

namespace lorvane::backend {

enum class ChatEnd {
    complete,  // the model came to its end
    truncated, // by the limit of its length
    refused,   // by the model or a filter
    failed,    // an error, or a body that breaks off or is none
    unwanted,  // whoever listens wanted no more
};

// The answer of a chat completion (OpenAI's POST /v1/chat/completions) read as it comes: a stream of events,
// or one JSON object from servers that do not stream. What a model thinks before it answers is left out. An
// answer without a finish_reason is a failure, since some servers end so after an error. One thread.
class ChatStream {
 public:
    using OnText = std::function<bool(std::string_view text)>; // false: no more is wanted

    explicit ChatStream(OnText onText);
    ~ChatStream();

    bool feed(std::string_view bytes); // false: the end is known
    ChatEnd finish();                  // when nothing more comes
    // Why it was not complete; holds nothing that was received.
    const std::string& reason() const { return reason_; }

 private:
    enum class Shape { unknown, events, object };
    bool line(const SseReader::Line& line);
    bool data(std::string_view piece);
    bool event(const boost::json::object& chunk);
    bool choice(const boost::json::object& choice);
    bool content(const boost::json::value& content);
    bool finishedBy(std::string_view reason);
    bool write(std::string_view text);
    bool answer(std::string_view text);
    bool settle();
    bool end(ChatEnd end, std::string reason);

    const OnText onText_;
    SseReader lines_;
    Shape shape_ = Shape::unknown;
    std::string object_; // the whole body, of a server that does not stream; or an event's data so far
    std::size_t pieces_ = 0;
    bool errorEvent_ = false;
    bool thinking_ = false;
    bool answering_ = false; // what comes is answer, not thought
    std::string opening_;    // until that is known; then what may be the end of the thought
    bool ended_ = false;
    ChatEnd end_ = ChatEnd::failed;
    std::string reason_;
};

} // namespace lorvane::backend

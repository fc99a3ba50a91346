// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"
#include "net/SocketAddress.h"
#include "net/SocketCall.h"

#include <chrono>
#include <string>

namespace lorvane::backend {

struct SocketSpeechCall {
    SocketAddress address;
    std::string model;    // empty: the server's own
    std::string language; // empty: the server's own
    Samples samples;
    std::chrono::milliseconds connectTime = std::chrono::seconds(5);
    std::chrono::milliseconds answerTime = std::chrono::seconds(30); // for each answer
    std::chrono::milliseconds wholeTime = std::chrono::seconds(200);
};

struct SocketSpeechAnswer {
    SocketCallEnd call;
    std::string text; // as the server wrote it
};

// By Wyoming: events of a JSON line, with data and bytes behind it, over TCP. Blocks; a stop is seen at once.
SocketSpeechAnswer hearByWyoming(const SocketSpeechCall& call, const std::stop_token& stop);

// By the WebSocket of a Vosk server, which speaks the one language of its model and writes neither capitals
// nor punctuation. Blocks; a stop is seen at once.
SocketSpeechAnswer hearByVosk(const SocketSpeechCall& call, const std::stop_token& stop);

} // namespace lorvane::backend

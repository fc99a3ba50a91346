// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/ChatClient.h"

#include "net/HttpCall.h"

#include <boost/json.hpp>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

using End = ChatOutcome::End;

json::string_view view(std::string_view text) { return {text.data(), text.size()}; }

// Nothing more than this: servers refuse members that they do not know.
std::string bodyOf(const ChatServer& server, const ChatRequest& request) {
    json::object body{{"messages", json::array{{{"role", "system"}, {"content", view(request.system)}},
                                               {{"role", "user"}, {"content", view(request.user)}}}},
                      {"stream", true},
                      {"temperature", 0},
                      {"max_tokens", request.mostTokens}};
    if (!server.model.empty())
        body["model"] = view(server.model);
    return json::serialize(body);
}

std::vector<PooledServer> pooled(const std::vector<ChatServer>& servers) {
    std::vector<PooledServer> places;
    for (const auto& server : servers)
        places.push_back({server.url, server.profile->atOnce});
    return places;
}

End endOf(ChatEnd end) {
    switch (end) {
    case ChatEnd::complete:
        return End::complete;
    case ChatEnd::truncated:
        return End::truncated;
    case ChatEnd::refused:
        return End::refused;
    case ChatEnd::unwanted:
        return End::unwanted;
    case ChatEnd::failed:
        break;
    }
    return End::failed;
}

// What the end of a server's answer means for the others.
Attempt attemptOf(const ChatOutcome& outcome, bool committed) {
    if (outcome.end == End::complete)
        return {Attempt::End::done, {}};
    if (outcome.end == End::failed)
        return committed ? Attempt{Attempt::End::over, outcome.reason, true}
                         : Attempt{Attempt::End::next, outcome.reason};
    return {Attempt::End::over, outcome.reason};
}

} // namespace

ChatClient::ChatClient(std::vector<ChatServer> servers, PoolTimes pool)
    : servers_(std::move(servers)), pool_("language", pooled(servers_), pool) {}

ChatOutcome ChatClient::complete(const ChatRequest& request, const ChatTimes& times, ChatListener& listener,
                                 const std::stop_token& stop) try {
    ChatOutcome outcome;
    const auto attempt = pool_.run(
        [&](std::size_t server) { return ask(servers_[server], request, times, listener, outcome, stop); },
        stop);
    if (attempt.end == Attempt::End::stopped)
        return {End::stopped, "stopped"};
    if (attempt.end == Attempt::End::next)
        return {End::failed, attempt.reason};
    return outcome;
} catch (const std::exception& error) {
    return {End::failed, error.what()};
}

Attempt ChatClient::ask(const ChatServer& server, const ChatRequest& request, const ChatTimes& times,
                        ChatListener& listener, ChatOutcome& outcome, const std::stop_token& stop) const {
    listener.begin();
    ChatStream stream([&](std::string_view text) { return listener.hear(text); });
    HttpCall call;
    call.url = server.url + "/v1/chat/completions";
    call.bearer = server.key;
    call.json = bodyOf(server, request);
    call.onBytes = [&](std::string_view bytes) { return stream.feed(bytes); };
    call.connectTime = times.connect;
    call.answerTime = times.answer;
    call.silence = times.silence;
    call.wholeTime = times.whole;
    const auto answer = callHttp(call, stop);
    if (answer.end == HttpAnswer::End::stopped)
        return {Attempt::End::stopped, "stopped"};
    const bool came = answer.end == HttpAnswer::End::whole || answer.end == HttpAnswer::End::enough;
    // What a server says about an error may quote the text, so that the status is all that is told.
    if (!came)
        outcome = {End::failed, answer.reason};
    else if (answer.status != 200)
        outcome = {End::failed, "status " + std::to_string(answer.status)};
    else
        outcome = {endOf(stream.finish()), stream.reason()};
    return attemptOf(outcome, listener.committed());
}

} // namespace lorvane::backend

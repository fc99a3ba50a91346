// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/ScriptedChat.h"

#include <boost/json.hpp>

namespace lorvane::backend::testing {

namespace json = boost::json;

namespace {

std::string plain(const json::value& value) { return {value.as_string().data(), value.as_string().size()}; }

} // namespace

std::string chatAnswer(const std::vector<std::string>& tokens, const std::string& finish) {
    std::string answer = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\n: \n\n";
    for (const auto& token : tokens)
        answer +=
            "data: " +
            json::serialize(json::object{{"choices", {{{"index", 0}, {"delta", {{"content", token}}}}}}}) +
            "\n\n";
    if (!finish.empty())
        answer += "data: " +
                  json::serialize(json::object{
                      {"choices", {{{"index", 0}, {"delta", json::object()}, {"finish_reason", finish}}}}}) +
                  "\n\ndata: [DONE]\n\n";
    return answer;
}

ChatCall readChatCall(const std::string& request) {
    ChatCall call;
    const auto end = request.find("\r\n\r\n");
    call.head = request.substr(0, end);
    call.target = request.substr(0, request.find(" HTTP/"));
    call.body = request.substr(end + 4);
    const auto body = json::parse(call.body).as_object();
    if (const auto* model = body.if_contains("model"))
        call.model = plain(*model);
    call.system = plain(body.at("messages").at(0).at("content"));
    call.user = plain(body.at("messages").at(1).at("content"));
    const auto line = call.user.substr(0, call.user.find('\n'));
    call.marker = line.substr(line.rfind(' ') + 1);
    return call;
}

std::string ChatCall::block(const std::string& name) const {
    const auto begin = "BEGIN " + name + ' ' + marker + '\n';
    const auto from = user.find(begin);
    const auto to = user.find("\nEND " + name + ' ' + marker + '\n');
    if (from == std::string::npos || to == std::string::npos)
        return "absent";
    return user.substr(from + begin.size(), to - from - begin.size());
}

} // namespace lorvane::backend::testing

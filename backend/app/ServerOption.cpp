// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ServerOption.h"

#include "app/ConfigLayers.h"
#include "util/Secrets.h"

#include <sstream>

namespace lorvane::backend {

namespace {

// What a list is of: the key that it stands under, how its kinds are found, and what they are for who errs.
template <class Profile>
struct List {
    const char* key;
    const Profile* (*find)(std::string_view kind);
    const char* kinds;
    [[noreturn]] void fail(const std::string& reason) const {
        throw ConfigError(std::string(key) + ": " + reason);
    }
};

constexpr List<SpeechProfile> speech{
    "speech", &findSpeechProfile,
    "openai, whispercpp, speaches, vllm, llamacpp, ollama, generic, wyoming, vosk"};
constexpr List<ChatProfile> language{"language", &findChatProfile, "openai, vllm, llamacpp, ollama, generic"};

bool isAddress(const SpeechProfile& profile, const std::string& url) {
    return isSpeechAddress(profile.protocol, url);
}

bool isAddress(const ChatProfile&, const std::string& url) {
    return isSpeechAddress(SpeechProtocol::openai, url);
}

bool namesUser(std::string_view url) {
    const auto host = url.substr(url.find("://") + 3);
    return host.substr(0, host.find('/')).find('@') != std::string_view::npos;
}

template <class Server, class Profile>
void readSetting(const List<Profile>& list, const std::string& word, Server& server) {
    if (word.starts_with("model="))
        server.model = word.substr(6);
    else if (word.starts_with("key-file="))
        server.key = firstLineOf(word.substr(9), list.key);
    else
        // What stands after the sign may be a key.
        list.fail('"' + word.substr(0, word.find('=')) + "\" is neither model=NAME nor key-file=FILE");
}

template <class Server, class Profile>
Server readServer(const List<Profile>& list, const std::string& entry) {
    std::istringstream words(entry);
    std::string kind;
    Server server;
    words >> kind >> server.url;
    server.profile = list.find(kind);
    if (!server.profile)
        list.fail('"' + kind + "\" is no kind of server: " + list.kinds);
    if (!isAddress(*server.profile, server.url))
        list.fail("after " + kind + " comes an address with " +
                  (kind == "wyoming" ? "tcp://"
                   : kind == "vosk"  ? "ws://"
                                     : "http:// or https://"));
    if (namesUser(server.url))
        list.fail("no user and password in an address, which the log tells; use key-file=FILE");
    while (server.url.ends_with('/'))
        server.url.pop_back();
    for (std::string word; words >> word;)
        readSetting(list, word, server);
    if (server.profile->model && server.model.empty())
        list.fail(kind + " wants a model=NAME");
    return server;
}

template <class Server, class Profile>
std::vector<Server> readServers(const List<Profile>& list, const std::string& text) {
    std::vector<Server> servers;
    std::istringstream entries(text);
    for (std::string entry; std::getline(entries, entry, ';');)
        if (entry.find_first_not_of(" \t") != std::string::npos)
            servers.push_back(readServer<Server>(list, entry));
    return servers;
}

} // namespace

std::string firstLineOf(const std::string& file, const char* key) {
    auto line = firstLineOf(std::filesystem::path(file));
    if (!line)
        throw ConfigError(std::string(key) + ": " + file + " cannot be read");
    return *std::move(line);
}

std::vector<SpeechUpstream> readSpeech(const std::string& text) {
    return readServers<SpeechUpstream>(speech, text);
}

std::vector<ChatServer> readLanguage(const std::string& text) {
    return readServers<ChatServer>(language, text);
}

} // namespace lorvane::backend

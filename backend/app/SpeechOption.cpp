// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SpeechOption.h"

#include "app/ConfigLayers.h"
#include "util/Secrets.h"

#include <sstream>

namespace lorvane::backend {

namespace {

[[noreturn]] void fail(const std::string& reason) { throw ConfigError("speech: " + reason); }

void readSetting(const std::string& word, SpeechUpstream& upstream) {
    if (word.starts_with("model="))
        upstream.model = word.substr(6);
    else if (word.starts_with("key-file="))
        upstream.key = firstLineOf(word.substr(9), "speech");
    else
        fail('"' + word + "\" is neither model=NAME nor key-file=FILE");
}

SpeechUpstream readUpstream(const std::string& entry) {
    std::istringstream words(entry);
    std::string kind;
    SpeechUpstream upstream;
    words >> kind >> upstream.url;
    upstream.profile = findSpeechProfile(kind);
    if (!upstream.profile)
        fail('"' + kind +
             "\" is no kind of server: openai, whispercpp, speaches, vllm, llamacpp, ollama, generic");
    if (!upstream.url.starts_with("http://") && !upstream.url.starts_with("https://"))
        fail("after " + kind + " comes an address with http:// or https://");
    while (upstream.url.ends_with('/'))
        upstream.url.pop_back();
    for (std::string word; words >> word;)
        readSetting(word, upstream);
    if (upstream.profile->model && upstream.model.empty())
        fail(kind + " wants a model=NAME");
    return upstream;
}

} // namespace

std::string firstLineOf(const std::string& file, const char* key) {
    auto line = firstLineOf(std::filesystem::path(file));
    if (!line)
        throw ConfigError(std::string(key) + ": " + file + " cannot be read");
    return *std::move(line);
}

std::vector<SpeechUpstream> readSpeech(const std::string& text) {
    std::vector<SpeechUpstream> upstreams;
    std::istringstream entries(text);
    for (std::string entry; std::getline(entries, entry, ';');)
        if (entry.find_first_not_of(" \t") != std::string::npos)
            upstreams.push_back(readUpstream(entry));
    return upstreams;
}

} // namespace lorvane::backend

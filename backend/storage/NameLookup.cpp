// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/NameLookup.h"

#include <array>
#include <condition_variable>
#include <netdb.h>
#include <optional>
#include <system_error>
#include <thread>

namespace lorvane::backend {

// Shared with the thread that answers it, which may outlive everybody else.
struct NameLookup::Question {
    std::mutex mutex;
    std::condition_variable answered;
    std::optional<FoundAddresses> answer;

    void give(FoundAddresses found) {
        {
            const std::lock_guard lock(mutex);
            answer = std::move(found);
        }
        answered.notify_all();
    }
    bool open() {
        const std::lock_guard lock(mutex);
        return !answer;
    }
};

// An answer is not kept for those who come later: names move.
std::shared_ptr<NameLookup::Question> NameLookup::questionFor(const std::string& name) {
    const std::lock_guard lock(mutex_);
    auto& known = open_[name];
    if (auto question = known.lock(); question && question->open())
        return question;
    auto question = std::make_shared<Question>();
    known = question;
    try {
        std::thread([question, name, resolve = resolve_] { question->give(resolve(name)); }).detach();
    } catch (const std::system_error&) {
        question->give({{}, "no thread to look it up"});
    }
    return question;
}

FoundAddresses NameLookup::find(const std::string& name, Time latest) {
    const auto question = questionFor(name);
    std::unique_lock lock(question->mutex);
    if (question->answered.wait_until(lock, latest, [&] { return question->answer.has_value(); }))
        return *question->answer;
    return {{}, "no answer about this name in time"};
}

FoundAddresses NameLookup::askSystem(const std::string& name) {
    addrinfo wish{};
    wish.ai_socktype = SOCK_STREAM;
    addrinfo* raw = nullptr;
    if (const int error = ::getaddrinfo(name.c_str(), nullptr, &wish, &raw); error != 0)
        return {{}, ::gai_strerror(error)};
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> found(raw, &::freeaddrinfo);
    FoundAddresses result{{}, "the name has no address"};
    for (const auto* each = found.get(); each; each = each->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (::getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0)
            result.addresses.emplace_back(text.data());
    }
    return result;
}

} // namespace lorvane::backend

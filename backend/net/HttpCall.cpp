// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/HttpCall.h"

#include <algorithm>
#include <curl/curl.h>
#include <exception>
#include <memory>
#include <stdexcept>

namespace lorvane::backend {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Handles {
    std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi{curl_multi_init(), &curl_multi_cleanup};
    std::unique_ptr<CURL, void (*)(CURL*)> easy{curl_easy_init(), &curl_easy_cleanup};
    std::unique_ptr<curl_mime, void (*)(curl_mime*)> form{curl_mime_init(easy.get()), &curl_mime_free};
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers{nullptr, &curl_slist_free_all};

    void addHeader(const std::string& line) {
        headers.reset(curl_slist_append(headers.release(), line.c_str()));
    }
};

struct Received {
    const HttpCall* call = nullptr;
    CURL* curl = nullptr;
    std::string body;
    std::size_t bytes = 0;
    Clock::time_point latest; // when something came last
    bool any = false;
    bool tooMuch = false;
    bool enough = false;
    std::exception_ptr thrown; // by onBytes; it must not go through libcurl
};

int statusOf(CURL* curl) {
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

// False: the transfer is to end.
bool take(Received& received, std::string_view bytes) try {
    received.bytes += bytes.size();
    received.tooMuch = received.bytes > received.call->mostBytes;
    if (received.tooMuch)
        return false;
    if (received.call->onBytes && statusOf(received.curl) == 200)
        received.enough = !received.call->onBytes(bytes);
    else
        received.body.append(bytes);
    return !received.enough;
} catch (...) {
    received.thrown = std::current_exception();
    return false;
}

std::size_t receive(const char* data, std::size_t size, std::size_t count, void* target) {
    auto& received = *static_cast<Received*>(target);
    received.any = true;
    const bool more = take(received, {data, size * count});
    received.latest = Clock::now(); // not before: whoever takes the bytes may have been slow
    return more ? size * count : 0;
}

// An upload counts as life too: the time for the answer begins with its end.
int uploaded(void* target, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    auto& [received, before] = *static_cast<std::pair<Received*, curl_off_t>*>(target);
    if (sent != before)
        received->latest = Clock::now();
    before = sent;
    return 0;
}

void addForm(Handles& handles, const HttpCall& call) {
    for (const auto& part : call.form) {
        curl_mimepart* added = curl_mime_addpart(handles.form.get());
        curl_mime_name(added, part.name.c_str());
        curl_mime_data(added, part.value.data(), part.value.size());
        if (!part.fileName.empty())
            curl_mime_filename(added, part.fileName.c_str());
        if (!part.type.empty())
            curl_mime_type(added, part.type.c_str());
    }
    curl_easy_setopt(handles.easy.get(), CURLOPT_MIMEPOST, handles.form.get());
}

void addJson(Handles& handles, const std::string& json) {
    handles.addHeader("Content-Type: application/json");
    curl_easy_setopt(handles.easy.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(json.size()));
    curl_easy_setopt(handles.easy.get(), CURLOPT_POSTFIELDS, json.data());
}

void setUp(Handles& handles, const HttpCall& call) {
    CURL* curl = handles.easy.get();
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_URL, call.url.c_str());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(call.connectTime.count()));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(call.wholeTime.count()));
    handles.addHeader(call.onBytes ? "Accept: text/event-stream, application/json"
                                   : "Accept: application/json");
    handles.addHeader("Expect:"); // some servers never answer it
    if (!call.bearer.empty())
        handles.addHeader("Authorization: Bearer " + call.bearer);
    if (call.json.empty())
        addForm(handles, call);
    else
        addJson(handles, call.json);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, handles.headers.get());
}

HttpAnswer failed(HttpAnswer::End end, std::string reason) { return {end, 0, {}, std::move(reason)}; }

HttpAnswer answerOf(CURL* curl, CURLcode code, Received& received) {
    if (received.thrown)
        std::rethrow_exception(received.thrown);
    if (received.tooMuch)
        return failed(HttpAnswer::End::broken, "the answer is too long");
    if (received.enough)
        return {HttpAnswer::End::enough, statusOf(curl), {}, {}};
    switch (code) {
    case CURLE_OK:
        break;
    case CURLE_COULDNT_CONNECT:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return failed(HttpAnswer::End::unreachable, curl_easy_strerror(code));
    case CURLE_OPERATION_TIMEDOUT:
        return failed(HttpAnswer::End::late, curl_easy_strerror(code));
    default:
        return failed(HttpAnswer::End::broken, curl_easy_strerror(code));
    }
    return {HttpAnswer::End::whole, statusOf(curl), std::move(received.body), {}};
}

// Until the transfer ends, somebody asks to stop, or the other side is silent for too long.
HttpAnswer transfer(Handles& handles, const HttpCall& call, Received& received, const std::stop_token& stop) {
    CURLM* multi = handles.multi.get();
    const std::stop_callback wake(stop, [multi] { curl_multi_wakeup(multi); });
    for (;;) {
        int running = 0;
        if (curl_multi_perform(multi, &running) != CURLM_OK)
            return failed(HttpAnswer::End::broken, "the transfer failed");
        if (stop.stop_requested())
            return failed(HttpAnswer::End::stopped, "stopped");
        int left = 0;
        if (const CURLMsg* message = curl_multi_info_read(multi, &left))
            return answerOf(handles.easy.get(), message->data.result, received);
        const auto patience = received.any ? call.silence : std::max(call.answerTime, call.connectTime);
        const auto rest = std::chrono::duration_cast<milliseconds>(received.latest + patience - Clock::now());
        if (rest.count() <= 0)
            return failed(HttpAnswer::End::late, "no answer in time");
        curl_multi_poll(multi, nullptr, 0,
                        static_cast<int>(std::min(rest.count() + 1, milliseconds(1000).count())), nullptr);
    }
}

} // namespace

HttpAnswer callHttp(const HttpCall& call, const std::stop_token& stop) {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    Handles handles;
    if (initialised != CURLE_OK || !handles.multi || !handles.easy || !handles.form)
        throw std::runtime_error("libcurl cannot start");
    setUp(handles, call);
    Received received;
    received.call = &call;
    received.curl = handles.easy.get();
    received.latest = Clock::now();
    std::pair<Received*, curl_off_t> progress{&received, 0};
    CURL* curl = handles.easy.get();
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &receive);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &received);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &uploaded);
    curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &progress);
    curl_multi_add_handle(handles.multi.get(), curl);
    struct Removal { // before the handles are freed, whatever is thrown
        Handles& handles;
        ~Removal() { curl_multi_remove_handle(handles.multi.get(), handles.easy.get()); }
    } const removal{handles};
    return transfer(handles, call, received, stop);
}

} // namespace lorvane::backend

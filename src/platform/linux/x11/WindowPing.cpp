// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/WindowPing.h"

#include "platform/linux/x11/X11Properties.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(100);
constexpr std::uint8_t sentByAProgram = 0x80;

} // namespace

WindowPing::WindowPing(X11Connection& connection, Clock& clock) : connection_(connection), clock_(clock) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
}

QCoro::Task<bool> WindowPing::answer(TaskScope scope) {
    const xcb_window_t window = askedWindow();
    if (window == XCB_WINDOW_NONE) {
        co_return false;
    }
    if (const auto asked = answers_.find(window); asked != answers_.end() && !asked->second) {
        co_return false;
    }
    listen(true);
    answered_ = Completion<bool>();
    const Completion<bool> answered = answered_;
    ask(window);
    const Handle tooLate = clock_.after(patience, [answered] { answered.complete(false); });
    const bool came = co_await answered.wait(scope);
    answers_[window] = answers_[window] || came;
    co_return came;
}

xcb_window_t WindowPing::askedWindow() {
    const auto active = windowNumbers(connection_, connection_.root(), "_NET_ACTIVE_WINDOW");
    if (active.empty() || active.front() == XCB_WINDOW_NONE) {
        return XCB_WINDOW_NONE;
    }
    const auto protocols = windowNumbers(connection_, active.front(), "WM_PROTOCOLS");
    const bool knows =
        std::find(protocols.begin(), protocols.end(), connection_.atom("_NET_WM_PING")) != protocols.end();
    return knows ? active.front() : xcb_window_t{XCB_WINDOW_NONE};
}

// Others of this connection have chosen events of the root window too.
void WindowPing::listen(bool on) {
    if (on == listening_ || !connection_.isAlive()) {
        return;
    }
    listening_ = on;
    auto* const xcb = connection_.xcb();
    const auto chosen = connection_.reply(xcb_get_window_attributes_reply,
                                          xcb_get_window_attributes(xcb, connection_.root()));
    if (!chosen) {
        return;
    }
    constexpr std::uint32_t answers = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    const std::uint32_t mask = on ? chosen->your_event_mask | answers : chosen->your_event_mask & ~answers;
    xcb_change_window_attributes(xcb, connection_.root(), XCB_CW_EVENT_MASK, &mask);
    connection_.flush();
}

// A number of a window may mean another one by the next time.
void WindowPing::end() {
    answers_.clear();
    listen(false);
}

void WindowPing::ask(xcb_window_t window) {
    window_ = window;
    ++stamp_;
    xcb_client_message_event_t question{};
    question.response_type = XCB_CLIENT_MESSAGE;
    question.format = 32;
    question.window = window;
    question.type = connection_.atom("WM_PROTOCOLS");
    question.data.data32[0] = connection_.atom("_NET_WM_PING");
    question.data.data32[1] = stamp_;
    question.data.data32[2] = window;
    xcb_send_event(connection_.xcb(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&question));
    connection_.flush();
}

void WindowPing::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & ~sentByAProgram) != XCB_CLIENT_MESSAGE) {
        return;
    }
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (message.type != connection_.atom("WM_PROTOCOLS") ||
        message.data.data32[0] != connection_.atom("_NET_WM_PING")) {
        return;
    }
    // Late is better than never: it is worth asking again.
    if (const auto asked = answers_.find(message.data.data32[2]); asked != answers_.end()) {
        asked->second = true;
    }
    if (message.data.data32[1] == stamp_ && message.data.data32[2] == window_) {
        answered_.complete(true);
    }
}

} // namespace lorvane

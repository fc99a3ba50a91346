// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseConnection.h"

#include <algorithm>
#include <pulse/error.h>
#include <pulse/proplist.h>
#include <stdexcept>

namespace lorvane {

namespace {

constexpr Duration firstRetry = std::chrono::milliseconds(250);
constexpr Duration longestRetry = std::chrono::seconds(2);

PulseConnection* self(void* connection) { return static_cast<PulseConnection*>(connection); }

void forget(pa_operation* operation) {
    if (operation != nullptr) {
        pa_operation_unref(operation);
    }
}

pa_context* makeContext(pa_threaded_mainloop* loop) {
    pa_proplist* const properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Lorvane");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "com.ostrand.tirra");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, "audio-input-microphone");
    pa_context* const context =
        pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop), "Lorvane", properties);
    pa_proplist_free(properties);
    return context;
}

} // namespace

PulseConnection::PulseConnection(Clock& clock, const QByteArray& server)
    : clock_(clock), server_(server), loop_(pa_threaded_mainloop_new()),
      waiters_(std::make_shared<std::map<std::uint64_t, Waiter>>()), retryDelay_(firstRetry) {
    if (!loop_ || pa_threaded_mainloop_start(loop_.get()) < 0) {
        throw std::runtime_error("no thread for the sound server");
    }
    pa_threaded_mainloop_set_name(loop_.get(), "sound");
    connect();
}

PulseConnection::~PulseConnection() {
    dropContext();
    pa_threaded_mainloop_stop(loop_.get());
}

PulseConnection::State PulseConnection::state() const {
    const std::lock_guard guard(mutex_);
    return state_;
}

bool PulseConnection::isRefused() const {
    const std::lock_guard guard(mutex_);
    return refused_;
}

PulseInputs PulseConnection::inputs() const {
    const std::lock_guard guard(mutex_);
    return inputs_;
}

pa_context* PulseConnection::readyContext() const {
    return context_ != nullptr && pa_context_get_state(context_) == PA_CONTEXT_READY ? context_ : nullptr;
}

void PulseConnection::awaitReady(std::chrono::milliseconds bound) {
    if (state() == State::absent) {
        connect();
    }
    std::unique_lock guard(mutex_);
    stateChanged_.wait_for(guard, bound, [this] { return state_ != State::connecting; });
}

Handle PulseConnection::onceFresh(std::function<void()> work) {
    const Lock lock(*this);
    const std::uint64_t id = ++lastWaiter_;
    waiters_->emplace(id, Waiter{roundsBegun_ + 1, std::move(work)});
    if (readyContext() != nullptr) {
        ask();
    }
    return Handle([waiters = std::weak_ptr(waiters_), id] {
        if (const auto all = waiters.lock()) {
            all->erase(id);
        }
    });
}

void PulseConnection::tellFresh(std::uint64_t round) {
    const auto waiters = waiters_;
    for (auto next = waiters->begin(); next != waiters->end();) {
        const auto [id, waiter] = *next;
        if (waiter.round <= round) {
            waiters->erase(id);
            waiter.work();
        }
        next = waiters->upper_bound(id);
    }
}

// The server is never started by us: desktops that want one start it on the first connection themselves.
void PulseConnection::connect() {
    dropContext();
    retry_.reset();
    const Lock lock(*this);
    {
        const std::lock_guard guard(mutex_);
        state_ = State::connecting;
    }
    context_ = makeContext(loop_.get());
    pa_context_set_state_callback(
        context_, [](pa_context*, void* connection) { self(connection)->contextChanged(); }, this);
    if (pa_context_connect(context_, server_.isEmpty() ? nullptr : server_.constData(),
                           PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 &&
        state() == State::connecting) {
        contextLost(State::absent);
    }
}

void PulseConnection::dropContext() {
    const Lock lock(*this);
    if (context_ == nullptr) {
        return;
    }
    pa_context_set_state_callback(context_, nullptr, nullptr);
    pa_context_set_subscribe_callback(context_, nullptr, nullptr);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
    context_ = nullptr;
    asking_ = false;
    askAgain_ = false;
}

bool PulseConnection::isDown() const {
    const State now = state();
    return now == State::absent || now == State::forbidden;
}

void PulseConnection::retryLater() {
    if (!isDown()) {
        return;
    }
    retry_ = clock_.after(retryDelay_, [this] {
        if (isDown()) {
            connect();
        }
    });
    retryDelay_ = std::min(retryDelay_ * 2, longestRetry);
}

void PulseConnection::contextChanged() {
    switch (pa_context_get_state(context_)) {
    case PA_CONTEXT_READY:
        contextReady();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED: {
        const int error = pa_context_errno(context_);
        const bool refused = error == PA_ERR_ACCESS || error == PA_ERR_AUTHKEY;
        contextLost(refused ? State::forbidden : State::absent);
        break;
    }
    default:
        break;
    }
}

// It counts as ready when the first round of answers is in.
void PulseConnection::contextReady() {
    pa_context_set_subscribe_callback(
        context_,
        [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* connection) {
            self(connection)->ask();
        },
        this);
    forget(pa_context_subscribe(
        context_,
        static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER),
        nullptr, nullptr));
    ask();
}

void PulseConnection::contextLost(State state) {
    asking_ = false;
    publish({});
    {
        const std::lock_guard guard(mutex_);
        state_ = state;
        refused_ = state == State::forbidden;
    }
    stateChanged_.notify_all();
    QMetaObject::invokeMethod(
        &mainThread_, [this] { retryLater(); }, Qt::QueuedConnection);
}

// A server answers in the order of the questions, so the list's end is the end of the round.
void PulseConnection::ask() {
    if (asking_) {
        askAgain_ = true;
        return;
    }
    asking_ = true;
    ++roundsBegun_;
    arriving_ = {};
    forget(pa_context_get_server_info(
        context_,
        [](pa_context*, const pa_server_info* info, void* connection) {
            if (info != nullptr) {
                self(connection)->arriving_.defaultName = QString::fromUtf8(info->default_source_name);
            }
        },
        this));
    forget(pa_context_get_source_info_list(
        context_,
        [](pa_context*, const pa_source_info* info, int last, void* connection) {
            self(connection)->sourceArrived(info, last);
        },
        this));
}

void PulseConnection::sourceArrived(const pa_source_info* info, int last) {
    if (last == 0) {
        arriving_.sources.push_back(readSource(*info));
    } else {
        roundEnded();
    }
}

void PulseConnection::roundEnded() {
    asking_ = false;
    publish(std::move(arriving_));
    {
        const std::lock_guard guard(mutex_);
        state_ = State::ready;
        refused_ = false;
    }
    stateChanged_.notify_all();
    QMetaObject::invokeMethod(
        &mainThread_,
        [this, round = roundsBegun_] {
            retryDelay_ = firstRetry;
            tellFresh(round);
        },
        Qt::QueuedConnection);
    if (std::exchange(askAgain_, false)) {
        ask();
    }
}

void PulseConnection::publish(PulseInputs inputs) {
    {
        const std::lock_guard guard(mutex_);
        if (inputs_ == inputs) {
            return;
        }
        inputs_ = std::move(inputs);
    }
    QMetaObject::invokeMethod(
        &mainThread_, [this] { changed_.emit(); }, Qt::QueuedConnection);
}

} // namespace lorvane

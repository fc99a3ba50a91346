// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Signal.h"
#include "platform/linux/pulse/PulseSource.h"

#include <QByteArray>
#include <QObject>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <pulse/context.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>

namespace lorvane {

/// The program's one connection to the sound server. It stands all the time and knows the server's inputs by
/// heart, so that a capture starts without asking anything first; when the server goes it comes back by
/// itself. Main thread, except where a line says otherwise. It outlives everything that uses it.
class PulseConnection {
 public:
    enum class State { connecting, ready, absent, forbidden };

    /// `server`: an address as libpulse takes it; empty means the user's own server.
    explicit PulseConnection(Clock& clock, const QByteArray& server = {});
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    [[nodiscard]] State state() const;
    /// The last attempt that came to an end was refused by the server.
    [[nodiscard]] bool isRefused() const;
    /// As of the server's last word; empty when it is not there.
    [[nodiscard]] PulseInputs inputs() const;
    /// Waits at most `bound` for a connection under way, and first tries one if there is none.
    void awaitReady(std::chrono::milliseconds bound);
    /// Told when `inputs` has changed.
    [[nodiscard]] Handle subscribe(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }
    /// Runs `work` once, when the server has been asked for its inputs anew and has answered; if it is away,
    /// after its return.
    [[nodiscard]] Handle onceFresh(std::function<void()> work);

    /// The server's thread does nothing while this lives.
    class Lock {
     public:
        explicit Lock(PulseConnection& connection) : loop_(connection.loop_.get()) {
            pa_threaded_mainloop_lock(loop_);
        }
        ~Lock() { pa_threaded_mainloop_unlock(loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

     private:
        pa_threaded_mainloop* loop_;
    };
    /// Under the lock only. Null when not ready.
    [[nodiscard]] pa_context* readyContext() const;

 private:
    struct LoopFree {
        void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
    };
    struct Waiter {
        std::uint64_t round;
        std::function<void()> work;
    };

    void connect();
    void dropContext();
    [[nodiscard]] bool isDown() const;
    void retryLater();
    void tellFresh(std::uint64_t round);

    // On the server's thread, or under its lock.
    void contextChanged();
    void contextReady();
    void contextLost(State state);
    void ask();
    void sourceArrived(const pa_source_info* info, int last);
    void roundEnded();
    void publish(PulseInputs inputs);

    Clock& clock_;
    QByteArray server_;
    std::unique_ptr<pa_threaded_mainloop, LoopFree> loop_;
    pa_context* context_ = nullptr;
    // Rounds of questions; the lock of the server's thread guards these.
    PulseInputs arriving_;
    std::uint64_t roundsBegun_ = 0;
    bool asking_ = false;
    bool askAgain_ = false;

    mutable std::mutex mutex_;
    std::condition_variable stateChanged_;
    State state_ = State::connecting;
    bool refused_ = false;
    PulseInputs inputs_;

    Signal<> changed_;
    std::shared_ptr<std::map<std::uint64_t, Waiter>> waiters_;
    std::uint64_t lastWaiter_ = 0;
    Duration retryDelay_;
    Handle retry_;
    // Posts from the server's thread end with this.
    QObject mainThread_;
};

} // namespace lorvane

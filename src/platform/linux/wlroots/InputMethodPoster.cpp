// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/InputMethodPoster.h"

#include <utility>

namespace lorvane {

namespace {

/// For the application's answer that it has a text field.
constexpr Duration patience = std::chrono::milliseconds(140);
constexpr Duration roundTrip = std::chrono::milliseconds(100);

} // namespace

InputMethodPoster::InputMethodPoster(WaylandConnection& connection, WaylandSeat& seat, Clock& clock)
    : connection_(connection), seat_(seat), clock_(clock) {
    seatChanged_ = seat.onChanged([this] { method_.reset(); });
}

bool InputMethodPoster::isOffered() const {
    return connection_.isAlive() && seat_.seat() != nullptr &&
           connection_.offers(zwp_input_method_manager_v2_interface.name);
}

bool InputMethodPoster::make() {
    if (!isOffered()) {
        return false;
    }
    if (!manager_) {
        manager_ = waylandOwned(
            connection_.bind<zwp_input_method_manager_v2>(zwp_input_method_manager_v2_interface, 1),
            zwp_input_method_manager_v2_destroy);
    }
    if (manager_ && !method_) {
        method_ = std::make_unique<InputMethod>(*manager_, *seat_.seat());
        connection_.flush();
    }
    return method_ != nullptr;
}

bool InputMethodPoster::isReady() const {
    return connection_.isAlive() && method_ && method_->state().isActive && !method_->state().isSecret;
}

QCoro::Task<void> InputMethodPoster::waitFor(std::function<bool()> done, Duration bound, TaskScope scope) {
    const Completion<bool> over;
    const Handle timeout = clock_.after(bound, [over] { over.complete(false); });
    const Handle change = method_->onChange([over, done] {
        if (done()) {
            over.complete(true);
        }
    });
    const Handle lost = connection_.onLost([over] { over.complete(false); });
    if (!done()) {
        co_await over.wait(scope);
    }
}

QCoro::Task<bool> InputMethodPoster::canPost(PostingTarget /*target*/, TaskScope scope) {
    if (!make()) {
        co_return false;
    }
    const std::function<bool()> isAnswered = [this] {
        return !method_ || method_->isUnavailable() || method_->state().isActive;
    };
    const QCoro::Task<void> answered = waitFor(isAnswered, patience, scope);
    co_await answered;
    const bool isReadyNow = isReady();
    if (!isReadyNow) {
        method_.reset();
    }
    co_return isReadyNow;
}

QCoro::Task<PostOutcome> InputMethodPoster::post(PostingTarget /*target*/, QString text, TaskScope scope) {
    if (!isReady()) {
        co_return PostOutcome::refused;
    }
    method_->commit(text.toUtf8());
    const Completion<bool> taken;
    const Handle served = connection_.afterServer([taken] { taken.complete(true); });
    const Handle timeout = clock_.after(roundTrip, [taken] { taken.complete(false); });
    const Handle lost = connection_.onLost([taken] { taken.complete(false); });
    connection_.flush();
    const bool isTaken = co_await taken.wait(scope);
    // A field that went away meanwhile may have got it or not.
    co_return isTaken&& isReady() ? PostOutcome::posted : PostOutcome::unknown;
}

} // namespace lorvane

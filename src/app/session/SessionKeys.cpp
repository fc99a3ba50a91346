// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionKeys.h"

#include <algorithm>

namespace lorvane {

namespace {

template <typename Port>
const Road<Port>* firstOpen(const std::vector<Road<Port>>& roads) {
    const auto found =
        std::find_if(roads.begin(), roads.end(), [](const auto& road) { return road.isOpen(); });
    return found == roads.end() ? nullptr : &*found;
}

} // namespace

EditingKeys* SessionEditingKeys::current() {
    if (isXInFront_()) {
        return &ofX_;
    }
    const auto* const road = firstOpen(roads_);
    return road == nullptr ? nullptr : road->port;
}

std::uint32_t SessionEditingKeys::modifierFlags() {
    EditingKeys* const keys = current();
    return keys == nullptr ? 0 : keys->modifierFlags();
}

bool SessionEditingKeys::canPost() {
    EditingKeys* const keys = current();
    return keys != nullptr && keys->canPost();
}

void SessionEditingKeys::press(EditingKey key) {
    if (EditingKeys* const keys = current()) {
        keys->press(key);
    }
}

bool SessionEditingKeys::isPending() {
    return ofX_.isPending() ||
           std::any_of(roads_.begin(), roads_.end(), [](const auto& road) { return road.port->isPending(); });
}

bool SessionPasteKeys::canPost() const { return ofX_.isOpen() || firstOpen(roads_) != nullptr; }

bool SessionPasteKeys::readsPrimary(PasteRoute route) {
    if (isXInFront_()) {
        return ofX_.port->readsPrimary(route);
    }
    const auto* const road = firstOpen(roads_);
    return road == nullptr ? PasteKeys::readsPrimary(route) : road->port->readsPrimary(route);
}

QCoro::Task<KeysOutcome> SessionPasteKeys::post(Aim aim, TaskScope scope) {
    const auto take = [this, aim] {
        const PasteRoute route = aim(); // which may lend the clipboard anew
        if (onKeys) {
            onKeys();
        }
        return route;
    };
    const Aim atTheKeys(take, [aim] { return aim.hasEffect(); });
    if (isXInFront_()) {
        const KeysOutcome outcome = co_await ofX_.port->post(atTheKeys, scope);
        co_return outcome;
    }
    for (const Road<PasteKeys>& road : roads_) {
        if (!road.isOpen()) {
            continue;
        }
        const KeysOutcome outcome = co_await road.port->post(atTheKeys, scope);
        if (outcome == KeysOutcome::posted) {
            co_return outcome;
        }
        if (outcome == KeysOutcome::unknown) {
            log_.diagLog(QStringLiteral("[tirra-paste] no answer whether keys went out by ") + road.name);
            co_return outcome;
        }
        log_.diagLog(QStringLiteral("[tirra-paste] no keys went out by ") + road.name);
    }
    co_return KeysOutcome::notPosted;
}

QCoro::Task<bool> GatedPoster::canPost(PostingTarget target, TaskScope scope) {
    if (!isOpen_()) {
        co_return false;
    }
    const bool offered = co_await poster_.canPost(std::move(target), std::move(scope));
    co_return offered;
}

QCoro::Task<PostOutcome> GatedPoster::post(PostingTarget target, QString text, TaskScope scope) {
    return poster_.post(std::move(target), std::move(text), std::move(scope));
}

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/MacHistoryStore.h"

#include <utility>

namespace lorvane {

namespace {

constexpr Duration persistDelay = std::chrono::milliseconds(250);

} // namespace

MacHistoryStore::MacHistoryStore(Clock& clock, StateFile& file) : clock_(clock), file_(file) { load(); }

MacHistoryStore::~MacHistoryStore() = default;

void MacHistoryStore::load() {
    const StateFile::Content content = file_.read();
    if (std::holds_alternative<StateFile::Absent>(content)) {
        return;
    }
    const auto* const bytes = std::get_if<QByteArray>(&content);
    auto backup = bytes != nullptr ? decodeBackup(*bytes) : std::nullopt;
    if (!backup) {
        predecessor_ = StateFile::Predecessor::setAside;
        return;
    }
    items_ = std::move(backup->history);
    deletedIDs_ = std::move(backup->deleted);
    revision_ = 1;
}

void MacHistoryStore::add(HistoryItem item) {
    items_.prepend(std::move(item));
    finishChange();
}

void MacHistoryStore::updateText(const QUuid& id, const QString& text) {
    if (items_.update(id, [&](HistoryItem& item) { item.text = text; })) {
        finishChange();
    }
}

void MacHistoryStore::setCategory(const QUuid& id, const std::optional<QString>& category) {
    if (items_.update(id, [&](HistoryItem& item) { item.category = category; })) {
        finishChange();
    }
}

void MacHistoryStore::remove(const QUuid& id) { remove(QSet<QUuid>{id}); }

void MacHistoryStore::remove(const QSet<QUuid>& ids) {
    if (ids.isEmpty()) {
        return;
    }
    items_.remove(ids);
    deletedIDs_.unite(ids);
    finishChange(ids.size());
}

void MacHistoryStore::finishChange(qint64 assignments) {
    revision_ += assignments;
    // An observer may change the items in turn, so each is told a list that stays as it is.
    const HistoryList told = items_;
    assigned_.emit(told);
    persist();
    if (changed) {
        changed();
    }
}

void MacHistoryStore::persist() {
    unwritten_ = std::make_shared<const Backup>(Backup{FileDate::of(clock_.wallNow()), items_, deletedIDs_});
    if (submitted_) {
        submitted_->store(true);
    }
    pendingPersist_ = clock_.after(persistDelay, [this] { submit(std::exchange(unwritten_, nullptr)); });
}

void MacHistoryStore::writeNow() {
    pendingPersist_.reset();
    if (const auto snapshot = std::exchange(unwritten_, nullptr)) {
        submit(snapshot);
    }
    persistQueue_.drain();
}

void MacHistoryStore::submit(const std::shared_ptr<const Backup>& snapshot) {
    submitted_ = std::make_shared<std::atomic<bool>>(false);
    persistQueue_.submit([this, snapshot, cancelled = submitted_] {
        if (cancelled->load()) {
            return;
        }
        const auto bytes = encodeBackup(*snapshot);
        if (bytes && file_.replace(*bytes, predecessor_)) {
            predecessor_ = StateFile::Predecessor::overwritten;
        }
    });
}

} // namespace lorvane

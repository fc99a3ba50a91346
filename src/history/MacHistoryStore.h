// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "history/Backup.h"
#include "history/StateFile.h"

#include <atomic>

namespace lorvane {

/// The one owner of all finished dictations: in memory, mirrored to a file 0.25 s after the last change of a
/// burst. What was changed less than 0.25 s before the program ends is lost. A file that does not decode
/// yields an empty history; the first write sets it aside. Nothing here fails and nothing is reported: a
/// write that does not succeed is followed by the next one, which holds everything again. Main thread; files
/// are encoded and written on a thread of its own.
class MacHistoryStore {
 public:
    /// Loads the file. `clock` and `file` outlive the store.
    MacHistoryStore(Clock& clock, StateFile& file);
    ~MacHistoryStore();
    MacHistoryStore(const MacHistoryStore&) = delete;
    MacHistoryStore& operator=(const MacHistoryStore&) = delete;

    /// In the order of the file with later ones at the front: the newest first, as a rule.
    [[nodiscard]] const HistoryList& items() const { return items_; }
    /// Raised by each assignment of the items, so that a reader can tell whether what it made of them is
    /// stale.
    [[nodiscard]] qint64 revision() const { return revision_; }
    [[nodiscard]] const QSet<QUuid>& deletedIDs() const { return deletedIDs_; }
    /// Told of each assignment of the items.
    [[nodiscard]] Handle subscribe(std::function<void(const HistoryList& items)> observer) {
        return assigned_.subscribe(std::move(observer));
    }
    /// Called at the end of each change that was made here.
    std::function<void()> changed;

    /// At the front, whatever its date.
    void add(HistoryItem item);
    /// Of the first item with the id; nothing at all happens when there is none.
    void updateText(const QUuid& id, const QString& text);
    void setCategory(const QUuid& id, const std::optional<QString>& category);
    /// Removes every item with the id, and keeps the id so that no other device brings it back; also when no
    /// item has it.
    void remove(const QUuid& id);
    /// The same for each id, in one change; the revision rises by one for each.
    void remove(const QSet<QUuid>& ids);
    /// Writes what waits to be written, and waits for it: for an end that the user has not asked for.
    void writeNow();

 private:
    using Cancelled = std::shared_ptr<std::atomic<bool>>;

    void load();
    void finishChange(qint64 assignments = 1);
    void persist();
    void submit(const std::shared_ptr<const Backup>& snapshot);

    Clock& clock_;
    StateFile& file_;
    HistoryList items_;
    qint64 revision_ = 0;
    QSet<QUuid> deletedIDs_;
    Signal<HistoryList> assigned_;
    /// What the pending write will write.
    std::shared_ptr<const Backup> unwritten_;
    Handle pendingPersist_;
    // Of the write that was submitted last; it stops one that has not begun.
    Cancelled submitted_;
    // After the load it is touched on the queue alone.
    StateFile::Predecessor predecessor_ = StateFile::Predecessor::overwritten;
    // The last member: its end waits for the write under way, which uses the others.
    SerialQueue persistQueue_;
};

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryItem.h"

#include <QSet>

#include <functional>
#include <iterator>
#include <memory>
#include <vector>

namespace lorvane {

/// Items in their order, as a value whose copies share what they have in common: a copy costs one pointer for
/// every 256 items, a change copies the 256 items around it. So a whole history can be handed to another
/// thread as it stands. Each copy belongs to one thread.
class HistoryList {
 public:
    class const_iterator;
    static constexpr std::size_t chunkSize = 256;

    HistoryList() = default;
    explicit HistoryList(std::vector<HistoryItem> items) { append(std::move(items)); }

    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool isEmpty() const { return size_ == 0; }
    [[nodiscard]] const_iterator begin() const;
    [[nodiscard]] const_iterator end() const;
    /// The first item with the id; valid until the list changes.
    [[nodiscard]] const HistoryItem* find(const QUuid& id) const;

    /// Cheapest with `chunkSize` items at a time.
    void append(std::vector<HistoryItem> items);
    void prepend(HistoryItem item);
    /// Lets `change` work on the first item with the id; false when there is none.
    bool update(const QUuid& id, const std::function<void(HistoryItem&)>& change);
    /// Removes every item with one of the ids.
    void remove(const QSet<QUuid>& ids);

    bool operator==(const HistoryList& other) const;

 private:
    // Never empty and never changed: another list may have it on another thread.
    using Chunk = std::vector<HistoryItem>;
    using Chunks = std::vector<std::shared_ptr<const Chunk>>;

    struct Place {
        std::size_t chunk;
        std::size_t item;
    };
    [[nodiscard]] std::optional<Place> placeOf(const QUuid& id) const;

    Chunks chunks_;
    std::size_t size_ = 0;
};

/// Goes through one list, which stays as it is meanwhile.
class HistoryList::const_iterator {
 public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = HistoryItem;
    using difference_type = std::ptrdiff_t;
    using pointer = const HistoryItem*;
    using reference = const HistoryItem&;

    const_iterator() = default;
    reference operator*() const { return (**chunk_)[item_]; }
    pointer operator->() const { return &**this; }
    const_iterator& operator++() {
        if (++item_ == (*chunk_)->size()) {
            ++chunk_;
            item_ = 0;
        }
        return *this;
    }
    const_iterator operator++(int) {
        const_iterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const const_iterator&) const = default;

 private:
    friend class HistoryList;
    explicit const_iterator(Chunks::const_iterator chunk) : chunk_(chunk) {}

    Chunks::const_iterator chunk_;
    std::size_t item_ = 0;
};

inline HistoryList::const_iterator HistoryList::begin() const { return const_iterator(chunks_.begin()); }
inline HistoryList::const_iterator HistoryList::end() const { return const_iterator(chunks_.end()); }

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryList.h"

#include <algorithm>

namespace lorvane {

void HistoryList::append(std::vector<HistoryItem> items) {
    size_ += items.size();
    if (items.empty()) {
        return;
    }
    if (items.size() <= chunkSize) {
        chunks_.push_back(std::make_shared<const Chunk>(std::move(items)));
        return;
    }
    for (auto from = items.begin(); from != items.end();) {
        const auto to = from + std::min<std::ptrdiff_t>(chunkSize, items.end() - from);
        chunks_.push_back(
            std::make_shared<const Chunk>(std::make_move_iterator(from), std::make_move_iterator(to)));
        from = to;
    }
}

void HistoryList::prepend(HistoryItem item) {
    auto front = std::make_shared<Chunk>();
    const bool joins = !chunks_.empty() && chunks_.front()->size() < chunkSize;
    front->reserve(joins ? chunks_.front()->size() + 1 : 1);
    front->push_back(std::move(item));
    if (joins) {
        front->insert(front->end(), chunks_.front()->begin(), chunks_.front()->end());
        chunks_.front() = std::move(front);
    } else {
        chunks_.insert(chunks_.begin(), std::move(front));
    }
    ++size_;
}

std::optional<HistoryList::Place> HistoryList::placeOf(const QUuid& id) const {
    for (std::size_t chunk = 0; chunk < chunks_.size(); ++chunk) {
        const Chunk& items = *chunks_[chunk];
        const auto found = std::ranges::find(items, id, &HistoryItem::id);
        if (found != items.end()) {
            return Place{chunk, static_cast<std::size_t>(found - items.begin())};
        }
    }
    return std::nullopt;
}

const HistoryItem* HistoryList::find(const QUuid& id) const {
    const auto place = placeOf(id);
    return place ? &(*chunks_[place->chunk])[place->item] : nullptr;
}

bool HistoryList::update(const QUuid& id, const std::function<void(HistoryItem&)>& change) {
    const auto place = placeOf(id);
    if (!place) {
        return false;
    }
    auto changed = std::make_shared<Chunk>(*chunks_[place->chunk]);
    change((*changed)[place->item]);
    chunks_[place->chunk] = std::move(changed);
    return true;
}

void HistoryList::remove(const QSet<QUuid>& ids) {
    // One id, the usual case, is compared several times faster than it is looked up.
    const QUuid only = ids.size() == 1 ? *ids.begin() : QUuid();
    const auto goes = [&](const HistoryItem& item) {
        return ids.size() == 1 ? item.id == only : ids.contains(item.id);
    };
    for (auto& chunk : chunks_) {
        if (std::ranges::any_of(*chunk, goes)) {
            auto left = std::make_shared<Chunk>();
            left->reserve(chunk->size());
            std::ranges::remove_copy_if(*chunk, std::back_inserter(*left), goes);
            size_ -= chunk->size() - left->size();
            chunk = std::move(left);
        }
    }
    std::erase_if(chunks_, [](const auto& chunk) { return chunk->empty(); });
}

bool HistoryList::operator==(const HistoryList& other) const {
    return size_ == other.size_ && std::equal(begin(), end(), other.begin());
}

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"
#include "base/Signal.h"

#include <map>

namespace lorvane {

/// Preferences that are gone with the test.
class MemoryPreferenceStore final : public PreferenceStore {
 public:
    [[nodiscard]] QJsonValue value(const QString& key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? QJsonValue(QJsonValue::Undefined) : found->second;
    }
    void setValue(const QString& key, const QJsonValue& value) override {
        if (this->value(key) == value) {
            return;
        }
        if (value.isUndefined()) {
            values_.erase(key);
        } else {
            values_[key] = value;
        }
        changed_.emit(key);
    }
    /// An edit from outside: all values are there before anybody is told of the first.
    void edit(const std::map<QString, QJsonValue>& values) {
        for (const auto& [key, value] : values) {
            values_[key] = value;
        }
        for (const auto& entry : values) {
            changed_.emit(entry.first);
        }
    }
    [[nodiscard]] Handle subscribe(std::function<void(const QString& key)> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    std::map<QString, QJsonValue> values_;
    Signal<QString> changed_;
};

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace lorvane {

/// Where preferences are kept: one value a key, natural JSON types. `value` may be called from any thread,
/// the rest on the main thread. A change from outside the program is told like one from inside.
class PreferenceStore {
 public:
    virtual ~PreferenceStore() = default;

    /// Undefined when the key is absent.
    [[nodiscard]] virtual QJsonValue value(const QString& key) const = 0;
    /// An undefined value removes the key. Storing what is there already tells nobody.
    virtual void setValue(const QString& key, const QJsonValue& value) = 0;
    [[nodiscard]] virtual Handle subscribe(std::function<void(const QString& key)> changed) = 0;
};

/// A key of the catalogue: its type, what an absent key reads as, and who writes it.
template <typename T>
struct PreferenceKey {
    QLatin1String name;
    T fallback;
    QLatin1String writtenBy;
};

namespace detail {
std::optional<QString> fromJson(const QJsonValue& value, const QString&);
std::optional<bool> fromJson(const QJsonValue& value, bool);
std::optional<int> fromJson(const QJsonValue& value, int);
std::optional<double> fromJson(const QJsonValue& value, double);
std::optional<QStringList> fromJson(const QJsonValue& value, const QStringList&);
std::optional<QByteArray> fromJson(const QJsonValue& value, const QByteArray&);
QJsonValue toJson(const QString& value);
QJsonValue toJson(bool value);
QJsonValue toJson(int value);
QJsonValue toJson(double value);
QJsonValue toJson(const QStringList& value);
/// Binary data stands as base64 text.
QJsonValue toJson(const QByteArray& value);
} // namespace detail

/// Typed access to the preferences. Read at the moment of use; nothing is kept. A stored value of another
/// type counts as absent.
class Preferences {
 public:
    explicit Preferences(PreferenceStore& store) : store_(store) {}

    /// The stored value, or nothing when the key is absent: tells absence from false, zero and empty.
    template <typename T>
    [[nodiscard]] std::optional<T> stored(const PreferenceKey<T>& key) const {
        return detail::fromJson(store_.value(key.name), key.fallback);
    }
    template <typename T>
    [[nodiscard]] T get(const PreferenceKey<T>& key) const {
        return stored(key).value_or(key.fallback);
    }
    template <typename T>
    void set(const PreferenceKey<T>& key, const T& value) {
        store_.setValue(key.name, detail::toJson(value));
    }
    template <typename T>
    void remove(const PreferenceKey<T>& key) {
        store_.setValue(key.name, QJsonValue(QJsonValue::Undefined));
    }
    template <typename T>
    [[nodiscard]] Handle subscribe(const PreferenceKey<T>& key, std::function<void()> changed) {
        return store_.subscribe(
            [name = QString(key.name), changed = std::move(changed)](const QString& which) {
                if (which == name) {
                    changed();
                }
            });
    }

 private:
    PreferenceStore& store_;
};

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/BindingTable.h"

#include <QJsonArray>

#include <utility>

namespace lorvane {

QString errorIn(const QJsonDocument& answer) {
    const QJsonArray results = answer.array();
    for (const auto& result : results) {
        const QJsonObject one = result.toObject();
        if (!one[QLatin1String("success")].toBool()) {
            const QString error = one[QLatin1String("error")].toString();
            return error.isEmpty() ? QStringLiteral("no reason given") : error;
        }
    }
    return answer.isArray() ? QString() : QStringLiteral("no answer to commands");
}

void BindingTable::want(KeyBindings bindings) {
    wanted_ = std::move(bindings);
    apply();
}

void BindingTable::modeEntered(const QString& mode) {
    mode_ = mode;
    apply();
}

void BindingTable::leaveOtherModes() {
    const auto entering = [](QString mode) {
        mode.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
            .replace(QLatin1Char('"'), QLatin1String("\\\""));
        return QStringLiteral("mode \"%1\"").arg(mode);
    };
    QStringList commands;
    for (auto& [mode, made] : made_) {
        if (mode == mode_ || made.empty() || mode.contains(QLatin1Char(';'))) {
            continue;
        }
        commands.append(entering(mode));
        for (const KeyBinding& binding : std::exchange(made, {})) {
            commands.append(binding.removeCommand());
        }
    }
    if (!commands.isEmpty() && socket_.isConnected()) {
        commands.append(entering(mode_));
        socket_.run(commands);
    }
}

void BindingTable::forgotten() {
    made_.clear();
    apply();
}

void BindingTable::abandon() {
    made_.clear();
    wanted_.clear();
}

void BindingTable::apply() {
    if (!socket_.isConnected()) {
        return;
    }
    KeyBindings& made = made_[mode_];
    QStringList remove;
    QStringList add;
    for (const KeyBinding& binding : made) {
        if (!wanted_.contains(binding)) {
            remove.append(binding.removeCommand());
        }
    }
    for (const KeyBinding& binding : wanted_) {
        if (!made.contains(binding)) {
            add.append(binding.addCommand());
        }
    }
    made = wanted_;
    socket_.run(remove);
    if (!add.isEmpty()) {
        refusal_.clear();
    }
    socket_.run(add, [this](const QJsonDocument& answer) {
        if (refusal_.isEmpty()) {
            refusal_ = errorIn(answer);
        }
    });
}

} // namespace lorvane

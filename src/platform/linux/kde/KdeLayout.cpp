// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdeLayout.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace lorvane {

namespace {

const auto service = QStringLiteral("org.kde.keyboard");
const auto object = QStringLiteral("/Layouts");
const auto interface = QStringLiteral("org.kde.KeyboardLayouts");

} // namespace

KdeLayout::KdeLayout(QDBusConnection session) : session_(std::move(session)) {
    session_.connect(service, object, interface, QStringLiteral("layoutChanged"), this,
                     SLOT(onLayoutChanged(uint)));
    session_.connect(service, object, interface, QStringLiteral("layoutListChanged"), this, SLOT(askGroup()));
    auto* const watcher =
        new QDBusServiceWatcher(service, session_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &KdeLayout::askGroup);
    askGroup();
}

void KdeLayout::askGroup() {
    auto question = QDBusMessage::createMethodCall(service, object, interface, QStringLiteral("getLayout"));
    question.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(session_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> answer = *watcher;
        group_ = answer.isError() ? 0 : answer.value();
    });
}

} // namespace lorvane

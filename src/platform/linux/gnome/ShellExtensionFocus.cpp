// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/ShellExtensionFocus.h"

#include "platform/linux/gnome/ShellExtension.h"

namespace lorvane {

ShellExtensionFocus::ShellExtensionFocus(QDBusConnection session, const QString& programName)
    : session_(std::move(session)), extension_(session_, shellExtension::service, [this] { ownerChanged(); }),
      program_(session_, programName, [this] { ownerChanged(); }) {
    session_.connect(shellExtension::service, shellExtension::object, shellExtension::interface,
                     QStringLiteral("Focus"), this, SLOT(focusMoved(QString, QString, uint)));
}

ShellExtensionFocus::~ShellExtensionFocus() {
    if (canWatch()) {
        session_.send(shellExtension::call(QStringLiteral("UnwatchFocus")));
    }
}

bool ShellExtensionFocus::canWatch() const {
    return extension_.isOwned() && program_.owner() == session_.baseService();
}

// The answer tells nothing: what has the focus comes as a signal, the first one right after the call.
void ShellExtensionFocus::ownerChanged() {
    active_.reset();
    if (canWatch()) {
        session_.send(shellExtension::call(QStringLiteral("WatchFocus")));
    }
}

void ShellExtensionFocus::focusMoved(const QString& windowClass, const QString& sandboxedApplication,
                                     uint process) {
    const WindowIdentity told{sandboxedApplication.isEmpty() ? windowClass : sandboxedApplication,
                              static_cast<std::int64_t>(process)};
    active_ = told == WindowIdentity() ? std::nullopt : std::optional(told);
}

} // namespace lorvane

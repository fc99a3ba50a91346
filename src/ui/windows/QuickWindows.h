// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/windows/Appearance.h"
#include "ui/windows/HomeModel.h"
#include "ui/windows/ShellWindow.h"

#include <memory>

class QQmlEngine;

namespace lorvane {

/// Windows of Qt Quick. The engine is there only while one of them is. Main thread.
class QuickWindows final : public WindowFactory {
 public:
    /// `makeHome`: what the home window shows, made with the window.
    QuickWindows(Appearance& appearance, std::function<std::unique_ptr<HomeModel>()> makeHome);

    [[nodiscard]] std::unique_ptr<ShellWindow> make(WindowKind kind, const QString& context,
                                                    std::function<void()> closed) override;

 private:
    [[nodiscard]] std::shared_ptr<QQmlEngine> engine();

    Appearance& appearance_;
    std::function<std::unique_ptr<HomeModel>()> makeHome_;
    std::weak_ptr<QQmlEngine> engine_;
};

} // namespace lorvane

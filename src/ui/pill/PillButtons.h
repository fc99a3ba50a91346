// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/pill/PillColours.h"
#include "ui/pill/PillIcons.h"

#include <QAbstractButton>

#include <functional>
#include <optional>

namespace lorvane {

/// A control of the pill: a symbol or a few letters on a capsule that lights up under the pointer. Never
/// takes the keyboard's focus.
class PillButton final : public QAbstractButton {
 public:
    PillButton(QWidget* parent, const PillColours& colours);

    void setSymbol(PillIcon icon, double size);
    void setLetters(const QString& letters);
    /// What it does, for the tip and for assistive technology; `value` is what it shows.
    void describe(const QString& what, const QString& value);
    /// How far it has come up with the capsule.
    void setAppearance(double appearance);
    /// The pointer has rested on it for a moment, and has left.
    std::function<void()> onTip;
    std::function<void()> onLeft;

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

 private:
    const PillColours& colours_;
    std::optional<PillIcon> icon_;
    double iconSize_ = 0;
    double appearance_ = 1;
};

} // namespace lorvane

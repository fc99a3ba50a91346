// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

namespace lorvane {

/// One object of one application on the accessibility bus. The bus name is the unique one, which is never
/// given out again; the path is the application's own and stays with the object for its life.
struct AccessibleRef {
    QString bus;
    QString path;

    [[nodiscard]] bool isNull() const { return bus.isEmpty() || path.endsWith(QLatin1String("/null")); }
    [[nodiscard]] QString identity() const { return bus + path; }
    friend bool operator==(const AccessibleRef&, const AccessibleRef&) = default;
};

/// Names and numbers of the AT-SPI interface (at-spi2-core, xml/ and atspi-constants.h).
namespace atspi {

inline const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
inline const QString registryBus = QStringLiteral("org.a11y.atspi.Registry");
inline const QString registryPath = QStringLiteral("/org/a11y/atspi/registry");
inline const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
inline const QString applicationInterface = QStringLiteral("org.a11y.atspi.Application");
inline const QString textInterface = QStringLiteral("org.a11y.atspi.Text");
inline const QString editableTextInterface = QStringLiteral("org.a11y.atspi.EditableText");
inline const QString objectEvents = QStringLiteral("org.a11y.atspi.Event.Object");
inline const QString windowEvents = QStringLiteral("org.a11y.atspi.Event.Window");

constexpr std::uint32_t rolePassword = 40;
constexpr std::uint32_t roleTerminal = 60;
constexpr std::uint32_t roleDocumentWeb = 95;

/// Bits of a state set, as numbered by the interface.
constexpr unsigned stateActive = 1;
constexpr unsigned stateDefunct = 6;
constexpr unsigned stateEditable = 7;
constexpr unsigned stateFocused = 12;
constexpr unsigned stateMultiLine = 17;
constexpr unsigned stateShowing = 25;
constexpr unsigned stateSingleLine = 26;
constexpr unsigned stateVisible = 30;

} // namespace atspi

/// The states of one object at one moment.
class AccessibleStates {
 public:
    AccessibleStates() = default;
    explicit AccessibleStates(std::uint64_t bits) : bits_(bits) {}
    [[nodiscard]] bool has(unsigned state) const { return ((bits_ >> state) & 1U) != 0; }
    /// On the screen as far as the application tells: GTK 4.8 never says "showing" of what is inside a
    /// window.
    [[nodiscard]] bool isSeen() const { return has(atspi::stateShowing) || has(atspi::stateVisible); }

 private:
    std::uint64_t bits_ = 0;
};

} // namespace lorvane

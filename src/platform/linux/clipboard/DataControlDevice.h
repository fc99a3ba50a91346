// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/clipboard/FileDescriptor.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace lorvane {

/// The compositor's two clipboards.
enum class WaylandSelection { clipboard, primary };

/// Something that another program offers on a clipboard, for as long as it does.
class ForeignOffer {
 public:
    virtual ~ForeignOffer() = default;
    [[nodiscard]] virtual const QStringList& types() const = 0;
    /// Asks its owner to write the type into the pipe.
    virtual void receive(const QString& type, const FileDescriptor& writeEnd) = 0;
};

/// The clipboards of a seat, for a program that needs no focus for it: the protocols ext_data_control_v1 and
/// wlr_data_control_unstable_v1, which are alike. Made anew when the seat or the protocol's own object goes
/// and comes again; what we had on a clipboard is lost then. Main thread.
class DataControlDevice {
 public:
    struct Source {
        QStringList types;
        /// Somebody asks for one of the types.
        std::function<void(const QString& type, FileDescriptor writeEnd)> send;
        /// Somebody else has taken the clipboard. Called once, and not when a later source of ours takes it.
        std::function<void()> cancelled;
    };

    /// By the better protocol that is offered; null without one. The connection knows its globals already.
    [[nodiscard]] static std::unique_ptr<DataControlDevice> open(WaylandConnection& connection,
                                                                 WaylandSeat& seat);
    virtual ~DataControlDevice() = default;

    virtual void offer(WaylandSelection selection, Source source) = 0;
    /// Leaves the clipboard empty.
    virtual void clear(WaylandSelection selection) = 0;
    /// What is on the clipboard as the compositor last told, our own source among it; null when it is empty.
    [[nodiscard]] virtual std::shared_ptr<ForeignOffer> current(WaylandSelection selection) const = 0;
    /// Told when `current` is another one.
    [[nodiscard]] virtual Handle onChange(std::function<void(WaylandSelection)> changed) = 0;
    /// False while there is none: nothing is read and nothing arrives.
    [[nodiscard]] virtual bool isAlive() const = 0;
    [[nodiscard]] virtual bool hasPrimary() const = 0;
};

} // namespace lorvane

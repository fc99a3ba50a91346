// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopAdapters.h"

#include "app/Stores.h"
#include "platform/linux/av/SwrPCMConverter.h"

#include <QLocale>

namespace lorvane {

DesktopAdapters::DesktopAdapters(const Foundation& foundation, const QDBusConnection& session)
    : accessibilitySwitch(session), display(foundation.log), capabilities(capabilitiesOf(display)),
      workspace(display, DesktopEntries(DesktopEntries::standardFolders(), QLocale::system().name())),
      keyEvents(display, foundation, [this] { return workspace.isOwnProcessInFront(); }),
      extraKey(display, foundation), pasteKeys(display, foundation.clock), editingKeys(display),
      keyPoster(display, foundation.clock,
                [this](const RunningApplication& application) { return settleTimes.of(application); }),
      pasteboard(X11Pasteboard::open(foundation.clock)), accessibilityBus(foundation.clock, session),
      fields(accessibilityBus, accessibilitySwitch, workspace, foundation.clock),
      insertion(accessibilityBus, fields, foundation.clock),
      accessibility(
          foundation, accessibilityBus, accessibilitySwitch,
          [this] { return display.isAlive() && capabilities.canPostKeys(); }, session),
      sound(foundation.clock), inputs(sound), engines(sound, SwrPCMConverter::make), chime(sound),
      codec(LoadedTakeCodec::standardModule(), foundation.log), http(foundation.clock),
      secrets(foundation.clock), historyFile(dataFolder() + QStringLiteral("/tirra-history.json")),
      history(foundation.clock, historyFile), journal(history, foundation.preferences) {}

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/X11Session.h"

#include "app/session/EngineInPreferences.h"
#include "app/session/NoPasteboard.h"

#include <QCoreApplication>
#include <QLocale>

namespace lorvane {

X11Session::X11Session(const Foundation& foundation, X11Connection& display)
    : display_(display), capabilities_(capabilitiesOf(display)),
      workspace_(display, DesktopEntries(DesktopEntries::standardFolders(), QLocale::system().name())),
      keyEvents_(display, foundation, [this] { return workspace_.isOwnProcessInFront(); }),
      extraKey_(display, foundation), layout_(display), pasteKeys_(display, foundation.clock, layout_),
      editingKeys_(display),
      inputMethod_(foundation.clock, foundation.log, engineInPreferences(foundation.preferences)),
      keyPoster_(display, foundation.clock, layout_,
                 [this](const RunningApplication& application) { return settleTimes_.of(application); }),
      typedKeys_(keyPoster_, inputMethod_), pasteboard_(X11Pasteboard::open(foundation.clock)),
      ownKeys_(keyEvents_) {
    if (!pasteboard_) {
        pasteboard_ = std::make_unique<NoPasteboard>(foundation.log);
    }
}

void X11Session::watchOwnWindows() { QCoreApplication::instance()->installNativeEventFilter(&ownKeys_); }

} // namespace lorvane

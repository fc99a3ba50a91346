// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Dictation.h"

namespace lorvane {

Dictation::Dictation(const Foundation& foundation, DesktopAdapters& desktop, DesktopPresence& presence)
    : http(desktop.http, foundation.clock), api(http, desktop.secrets, foundation.preferences, desktop.cloud),
      recorder(foundation, desktop.engines, desktop.inputs), encoder(foundation, desktop.codec),
      parts(foundation, api, encoder), capture(foundation, recorder, parts),
      screen(foundation.clock, *presence.pill, presence.windows),
      status(foundation.clock, screen, desktop.accessibility), keys(foundation, desktop.session->keyEvents()),
      insertion(foundation, desktop.session->pasteboard(), desktop.session->pasteKeys(), desktop.fields,
                desktop.session->workspace()),
      typing(foundation,
             TypingDesktop{desktop.session->workspace(), desktop.accessibility, desktop.fields,
                           desktop.session->editingKeys(), desktop.posters()},
             insertion),
      landing(foundation, status, desktop.accessibility, typing, insertion, desktop.chime),
      delivery(foundation, api, status, landing, desktop.journal, desktop.session->workspace()),
      controller(foundation, status, screen, keys, capture, delivery) {}

} // namespace lorvane

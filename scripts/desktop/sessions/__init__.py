# SPDX-License-Identifier: GPL-3.0-or-later
"""The kinds of session that a virtual desktop can be."""
from desktop.sessions.gnome import Gnome
from desktop.sessions.kwin import Kwin
from desktop.sessions.sway import Sway
from desktop.sessions.x11 import X11

SESSIONS = {"x11": X11, "sway": Sway, "kwin": Kwin, "gnome": Gnome}

// SPDX-License-Identifier: GPL-3.0-or-later
/* exported init */
'use strict';

const {Clutter, Gio, GLib, Meta, Shell} = imports.gi;
const Main = imports.ui.main;

function init() {
    return new ShellKeys();
}

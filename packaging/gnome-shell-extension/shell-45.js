// SPDX-License-Identifier: GPL-3.0-or-later
import Clutter from 'gi://Clutter';
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Meta from 'gi://Meta';
import Shell from 'gi://Shell';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';
import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';

export default class KeysExtension extends Extension {
    enable() {
        this._keys = new ShellKeys();
        this._keys.enable();
    }

    disable() {
        this._keys.disable();
        this._keys = null;
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later

// Tells Lorvane when a key goes down or up, wherever the focus is, and whose window has the keyboard, and nobody else.
//
// The shell offers extensions no way to see the keys that go to a window. But it tells its idle monitor of every input
// event before anything else is done with it, and while it does, the event is the current one. So a watch for "the user
// is active" sees each event once, takes nothing from anyone, and needs no timer. Such a watch ends when it has fired,
// and is set again. While nobody watches there is none.

const PROGRAM = 'com.ostrand.tirra';
const SERVICE = 'com.ostrand.tirra.ShellKeys';
const OBJECT = '/com/ostrand/tirra/ShellKeys';
// Keys are numbered as by Linux input events. `kept` are keys that nobody else gets meanwhile. Focus is told when the
// watch begins and when another window gets the keyboard; all of it is empty while none has it.
const INTERFACE = `<node>
  <interface name="com.ostrand.tirra.ShellKeys1">
    <method name="Watch">
      <arg type="au" direction="in" name="keys"/>
      <arg type="au" direction="in" name="kept"/>
    </method>
    <method name="Unwatch"/>
    <method name="IsDown">
      <arg type="u" direction="in" name="key"/>
      <arg type="b" direction="out" name="down"/>
    </method>
    <signal name="Key">
      <arg type="u" name="key"/>
      <arg type="b" name="down"/>
      <arg type="u" name="time"/>
      <arg type="b" name="virtual"/>
    </signal>
    <method name="WatchFocus"/>
    <method name="UnwatchFocus"/>
    <signal name="Focus">
      <arg type="s" name="window_class"/>
      <arg type="s" name="sandboxed_application"/>
      <arg type="u" name="process"/>
    </signal>
  </interface>
</node>`;

// The window system counts keys from 8 on.
const FIRST_KEY = 8;
// What a key that nobody asked for is called, so that nothing that is typed can be told from it.
const OTHER_KEY = 0;
const {SHIFT_MASK, CONTROL_MASK, MOD1_MASK, MOD4_MASK, MOD5_MASK} = Clutter.ModifierType;
// Pause, Menu, ScrollLock and F13 to F24: all that may be held besides modifiers.
const EXTRA_KEYS = new Set([119, 127, 70, ...Array.from({length: 12}, (_none, index) => 183 + index)]);
const ESCAPE = 1;
// Modifiers, both sides, and the bits of the state that each may set. The right Alt may be AltGr.
const MODIFIERS = new Map([
    [42, SHIFT_MASK], [54, SHIFT_MASK], [29, CONTROL_MASK], [97, CONTROL_MASK],
    [56, MOD1_MASK], [100, MOD1_MASK | MOD5_MASK], [125, MOD4_MASK], [126, MOD4_MASK],
]);

// One that asked to be told, and is once the bus has said that it has the program's name.
class Listener {
    constructor(sender, end) {
        this.sender = sender;
        // Undefined until the bus has said so, and what is told meanwhile is sent then.
        this.isProgram = undefined;
        this._untold = [];
        this._end = end;
        this._names = [
            watchName(sender, null, end),
            // It may take the name a moment later.
            watchName(PROGRAM, owner => this._know(owner), () => this._know(null)),
        ];
    }

    follow(before) {
        // It may have taken the name since it was last asked for.
        this.isProgram = before.isProgram || undefined;
        this._untold = before._untold;
    }

    tell(signal, told) {
        if (this.isProgram === undefined)
            this._untold.push([signal, told]);
        else
            this._send(signal, told);
    }

    end() {
        this._names.forEach(name => Gio.bus_unwatch_name(name));
    }

    _know(owner) {
        this.isProgram = owner === this.sender;
        const untold = this._untold;
        this._untold = [];
        untold.forEach(([signal, told]) => this._send(signal, told));
        if (owner && !this.isProgram)
            this._end();
    }

    _send(signal, told) {
        if (this.isProgram)
            Gio.DBus.session.emit_signal(this.sender, OBJECT, 'com.ostrand.tirra.ShellKeys1', signal, told);
    }
}

class KeyWatch {
    constructor(listener, keys, kept) {
        this.listener = listener;
        this.down = new Set();
        this._keys = new Set(keys);
        this._monitor = global.backend.get_core_idle_monitor();
        this._grabs = kept.map(key => this._keep(key)).filter(grab => grab !== Meta.KeyBindingAction.NONE);
        this._awaitInput();
    }

    // A key that is held while its user asks for another one too goes on being held.
    follow(before) {
        this.down = before.down;
        this.listener.follow(before.listener);
    }

    end() {
        this.listener.end();
        this._monitor.remove_watch(this._active);
        for (const grab of this._grabs) {
            Main.wm.allowKeybinding(Meta.external_binding_name_for_action(grab), Shell.ActionMode.NONE);
            global.display.ungrab_accelerator(grab);
        }
    }

    isDown(key) {
        const bits = MODIFIERS.get(key);
        const isHeld = bits === undefined || (global.get_pointer()[2] & bits) !== 0;
        return isHeld && this.down.has(key);
    }

    // With no other modifier; it still comes past here first.
    _keep(key) {
        const grab = global.display.grab_accelerator(
            `0x${(key + FIRST_KEY).toString(16)}`, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
        if (grab !== Meta.KeyBindingAction.NONE)
            Main.wm.allowKeybinding(Meta.external_binding_name_for_action(grab), Shell.ActionMode.ALL);
        return grab;
    }

    _awaitInput() {
        this._active = this._monitor.add_user_active_watch(() => {
            this._awaitInput();
            this._look(Clutter.get_current_event());
        });
    }

    _look(event) {
        const type = event?.type();
        if (type !== Clutter.EventType.KEY_PRESS && type !== Clutter.EventType.KEY_RELEASE)
            return;
        const flags = event.get_flags();
        // What an input method gives back has come past before.
        if (flags & (Clutter.EventFlags.FLAG_REPEATED | Clutter.EventFlags.FLAG_INPUT_METHOD))
            return;
        this._move(event.get_key_code() - FIRST_KEY, type === Clutter.EventType.KEY_PRESS, event);
    }

    _move(key, isDown, event) {
        if (!this._keys.has(key) && !MODIFIERS.has(key)) {
            if (isDown)
                this._tell(OTHER_KEY, true, event);
            return;
        }
        if (isDown)
            this.down.add(key);
        else
            this.down.delete(key);
        this._tell(key, isDown, event);
    }

    _tell(key, isDown, event) {
        this.listener.tell('Key',
            new GLib.Variant('(ubub)', [key, isDown, event.get_time(), isVirtual(event)]));
    }
}

class FocusWatch {
    constructor(listener) {
        this.listener = listener;
        this._moved = global.display.connect('notify::focus-window', () => this._tell());
        this._tell();
    }

    end() {
        this.listener.end();
        global.display.disconnect(this._moved);
    }

    _tell() {
        const window = global.display.focus_window;
        const told = [textOf(() => window?.get_wm_class()), textOf(() => window?.get_sandboxed_app_id()),
            Math.max(window?.get_pid() ?? 0, 0)];
        this.listener.tell('Focus', new GLib.Variant('(ssu)', told));
    }
}

// What an application calls itself may be no text at all.
function textOf(read) {
    try {
        return read() ?? '';
    } catch (error) {
        return '';
    }
}

function isHoldKey(key) {
    return key === ESCAPE || MODIFIERS.has(key) || EXTRA_KEYS.has(key);
}

// A keyboard of another program, such as the one on the screen, has no device.
function isVirtual(event) {
    return !event.get_source_device()?.get_device_node();
}

class ShellKeys {
    enable() {
        this._keys = null;
        this._focus = null;
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, OBJECT);
        this._name = Gio.bus_own_name_on_connection(Gio.DBus.session, SERVICE, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        this._endKeys();
        this._endFocus();
        Gio.bus_unown_name(this._name);
        this._object.unexport();
        this._object = null;
    }

    WatchAsync([keys, kept], invocation) {
        if (!Clutter.get_current_event) {
            this._refuse(invocation, 'NotSupported', 'this version of the shell does not show the keys');
        } else if (this._isAllowed(this._keys, invocation)) {
            // Whoever has the name may be somebody else, and is not told what is typed either.
            this._beginKeys(invocation.get_sender(), keys.filter(isHoldKey), kept.filter(key => EXTRA_KEYS.has(key)));
            invocation.return_value(null);
        }
    }

    UnwatchAsync(_parameters, invocation) {
        if (isBy(this._keys, invocation))
            this._endKeys();
        invocation.return_value(null);
    }

    IsDownAsync([key], invocation) {
        if (isBy(this._keys, invocation) && this._keys.listener.isProgram)
            invocation.return_value(new GLib.Variant('(b)', [this._keys.isDown(key)]));
        else
            this._refuse(invocation, 'AccessDenied', 'no watch of yours is running');
    }

    WatchFocusAsync(_parameters, invocation) {
        if (!this._isAllowed(this._focus, invocation))
            return;
        this._endFocus();
        this._focus = new FocusWatch(new Listener(invocation.get_sender(), () => this._endFocus()));
        invocation.return_value(null);
    }

    UnwatchFocusAsync(_parameters, invocation) {
        if (isBy(this._focus, invocation))
            this._endFocus();
        invocation.return_value(null);
    }

    _beginKeys(sender, keys, kept) {
        const before = this._keys?.listener.sender === sender ? this._keys : null;
        // First, since a key that is kept already cannot be kept once more.
        this._endKeys();
        this._keys = new KeyWatch(new Listener(sender, () => this._endKeys()), keys, kept);
        if (before)
            this._keys.follow(before);
    }

    _endKeys() {
        this._keys?.end();
        this._keys = null;
    }

    _endFocus() {
        this._focus?.end();
        this._focus = null;
    }

    // Unless the watch is the program's, and another one asks.
    _isAllowed(watch, invocation) {
        if (!watch?.listener.isProgram || isBy(watch, invocation))
            return true;
        this._refuse(invocation, 'AccessDenied', `${PROGRAM} alone is told`);
        return false;
    }

    _refuse(invocation, error, message) {
        invocation.return_dbus_error(`org.freedesktop.DBus.Error.${error}`, message);
    }
}

function isBy(watch, invocation) {
    return watch?.listener.sender === invocation.get_sender();
}

function watchName(name, appeared, vanished) {
    return Gio.bus_watch_name_on_connection(Gio.DBus.session, name, Gio.BusNameWatcherFlags.NONE,
        appeared && ((_bus, _name, owner) => appeared(owner)), vanished);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <memory>
#include <vector>

namespace lorvane {

// X key codes (evdev) of the keys that the program knows, and of some that tests need besides.
namespace keycode {
inline constexpr int escape = 9;
inline constexpr int backspace = 22;
inline constexpr int letterQ = 24;
inline constexpr int letterA = 38;
inline constexpr int letterZ = 52;
inline constexpr int letterV = 55;
inline constexpr int enter = 36;
inline constexpr int leftControl = 37;
inline constexpr int leftShift = 50;
inline constexpr int rightShift = 62;
inline constexpr int leftAlt = 64;
inline constexpr int space = 65;
inline constexpr int rightControl = 105;
inline constexpr int rightAlt = 108;
inline constexpr int home = 110;
inline constexpr int end = 115;
inline constexpr int deleteForward = 119;
inline constexpr int pause = 127;
inline constexpr int rightSuper = 134;
inline constexpr int menu = 135;
} // namespace keycode

// Keys as a user's hand presses them: the events carry the server's ordinary keyboard as their source and not
// the synthetic one, which the program ignores. Needs a display whose keyboard takes such events (Xvfb does)
// or the hands of a Wayland session. Not for use from several threads. Every call has reached the server when
// it returns.
class PhysicalKeyboard {
 public:
    // Throws std::runtime_error when there is no such keyboard.
    PhysicalKeyboard();
    // Releases what is still held.
    ~PhysicalKeyboard();
    PhysicalKeyboard(const PhysicalKeyboard&) = delete;
    PhysicalKeyboard& operator=(const PhysicalKeyboard&) = delete;

    void press(int keyCode);
    void release(int keyCode);
    void tap(int keyCode);
    // Presses in the order given and releases in the opposite one.
    void chord(const std::vector<int>& keyCodes);
    // The same as a hand does it, with a moment before the last one and before they go up. What a desktop
    // tells of a modifier alone is otherwise not what a user makes it tell, and GNOME Shell, which asks the
    // input method about each key, delivers one or another key of a faster chord without its modifiers.
    void command(const std::vector<int>& keyCodes);
    // The time in between is kept by the server, so no thread sleeps for it; returns once the release has
    // happened.
    void hold(int keyCode, std::chrono::milliseconds time);
    // Leaves what is held down as it is when this object goes.
    void letGo() { held_.clear(); }
    // What the server holds down now, from any keyboard.
    bool isDown(int keyCode) const;

    struct Connection; // a kind of keyboard
 private:
    std::unique_ptr<Connection> connection_;
    std::vector<int> held_;
};

} // namespace lorvane

// SPDX-License-Identifier: GPL-3.0-or-later
// Presses keys of this display as a user's hand does, by X key code.
#include "support/PhysicalKeyboard.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>

#include <sys/wait.h>
#include <unistd.h>

using lorvane::PhysicalKeyboard;

namespace {

constexpr int misuse = 2;

int usage() {
    std::fputs("usage: lorvane-key tap KEY...              one after the other\n"
               "       lorvane-key chord KEY...            together\n"
               "       lorvane-key hold KEY MILLISECONDS\n"
               "       lorvane-key while KEY COMMAND...    held until the command ends; its exit status\n"
               "       lorvane-key press|release KEY\n"
               "KEY is an X key code: 105 is right Ctrl.\n",
               stderr);
    return misuse;
}

std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < 0)
        return std::nullopt;
    return value;
}

std::optional<std::vector<int>> keys(int count, char** texts) {
    std::vector<int> found;
    for (int i = 0; i < count; ++i) {
        const auto key = number(texts[i]);
        if (!key || *key < 8 || *key > 255)
            return std::nullopt;
        found.push_back(*key);
    }
    return found;
}

int runCommand(char** command) {
    const pid_t child = fork();
    if (child == 0) {
        execvp(command[0], command);
        std::fprintf(stderr, "lorvane-key: %s: %s\n", command[0], std::strerror(errno));
        _exit(127);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        ;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int act(std::string_view verb, int count, char** rest) {
    const bool takesList = verb == "tap" || verb == "chord";
    const auto codes = keys(takesList ? count : 1, rest);
    if (!codes)
        return usage();
    PhysicalKeyboard keyboard;
    if (verb == "tap") {
        for (const int code : *codes)
            keyboard.tap(code);
    } else if (verb == "chord") {
        keyboard.chord(*codes);
    } else if (verb == "hold" && count == 2 && number(rest[1])) {
        keyboard.hold(codes->front(), std::chrono::milliseconds(*number(rest[1])));
    } else if (verb == "while" && count > 1) {
        keyboard.press(codes->front());
        return runCommand(rest + 1);
    } else if (verb == "release" && count == 1) {
        keyboard.release(codes->front());
    } else if (verb == "press" && count == 1) {
        keyboard.press(codes->front());
        keyboard.letGo();
    } else {
        return usage();
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        return usage();
    try {
        return act(argv[1], argc - 2, argv + 2);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lorvane-key: %s\n", error.what());
        return 1;
    }
}

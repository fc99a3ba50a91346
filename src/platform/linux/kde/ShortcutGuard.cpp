// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/ShortcutGuard.h"

#include <QByteArray>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace lorvane {

namespace {

// The waiting part is a child of the first shell's, which ends at once, so that nobody here has to reap it. A
// call would start the service where it is not running, and keep the compositor from its name: so it is
// looked for first. A program that was started anew after a kill lets go of what was left by itself, and has
// taken shortcuts of its own since.
constexpr const char* script = R"(
exec 3<&0 </dev/null >/dev/null 2>&1
(
  trap '' HUP INT TERM
  if read -r _ <&3; then exit; fi
  component=$1; program=$2; self=$3; shift 3
  owner() {
    set -- $(dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / \
             org.freedesktop.DBus.GetNameOwner "string:$1")
    echo "$1"
  }
  for name; do
    case $(owner org.kde.kglobalaccel) in '') exit ;; esac
    case $(owner "$program") in ''|"$self") ;; *) exit ;; esac
    dbus-send --session --print-reply --dest=org.kde.kglobalaccel /kglobalaccel \
      org.kde.KGlobalAccel.unregister "string:$component" "string:$name"
  done
) &
)";

class SpawnActions {
 public:
    SpawnActions() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID);
    }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    ~SpawnActions() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    bool shell(int input, char* const* arguments) {
        pid_t child = 0;
        posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        if (posix_spawn(&child, "/bin/sh", &actions_, &attributes_, arguments, environ) != 0) {
            return false;
        }
        int status = -1;
        pid_t ended = -1;
        do {
            ended = waitpid(child, &status, 0);
        } while (ended < 0 && errno == EINTR);
        return ended == child && status == 0;
    }

 private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

ShortcutGuard::ShortcutGuard(const Owner& owner) {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    std::vector<QByteArray> words{"sh",
                                  "-c",
                                  script,
                                  "sh",
                                  owner.component.toUtf8(),
                                  owner.programName.toUtf8(),
                                  owner.uniqueName.toUtf8()};
    for (const QString& name : owner.names) {
        words.push_back(name.toUtf8());
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (QByteArray& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    SpawnActions actions;
    const bool started = actions.shell(ends[0], arguments.data());
    close(ends[0]);
    if (started) {
        pipe_ = ends[1];
    } else {
        close(ends[1]);
    }
}

ShortcutGuard::~ShortcutGuard() {
    if (pipe_ >= 0) {
        const std::array<char, 1> word{'\n'};
        const bool told = write(pipe_, word.data(), word.size()) == static_cast<ssize_t>(word.size());
        (void)told; // a shell that has ended needs no word; one that hears none does its work
        close(pipe_);
    }
}

} // namespace lorvane

# SPDX-License-Identifier: GPL-3.0-or-later
"""Process families: whoever descends from us stays ours, however it daemonises, and is ended with us."""
import ctypes
import os
import signal
import time

PR_SET_PDEATHSIG = 1
PR_SET_DUMPABLE = 4
PR_SET_CHILD_SUBREAPER = 36
_libc = ctypes.CDLL(None, use_errno=True)


def adopt_orphans():
    """Orphaned descendants become children of this process instead of init's."""
    if _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def die_with_parent(sig, parent):
    """This process gets sig when its parent dies; at once if that has happened already."""
    _libc.prctl(PR_SET_PDEATHSIG, sig, 0, 0, 0)
    if os.getppid() != parent:
        os.kill(os.getpid(), sig)


def hear_all_signals():
    """What a process blocks, its children would not hear either: a bus then waits for ever for those that it starts."""
    signal.pthread_sigmask(signal.SIG_SETMASK, ())


def become(user):
    """This process is that user's from now on, and its children too."""
    os.setgroups([])
    os.setresgid(user.pw_gid, user.pw_gid, user.pw_gid)
    os.setresuid(user.pw_uid, user.pw_uid, user.pw_uid)
    _libc.prctl(PR_SET_DUMPABLE, 1, 0, 0, 0)  # a process that changes its user may not be looked at otherwise
    os.environ.update({"USER": user.pw_name, "LOGNAME": user.pw_name, "SHELL": "/bin/sh"})


def descendants(root):
    """Process ids below root, with the name of each."""
    children = {}
    names = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/stat", encoding="utf-8", errors="replace") as stat:
                text = stat.read()
        except OSError:
            continue
        name = text[text.index("(") + 1 : text.rindex(")")]
        parent = int(text[text.rindex(")") + 2 :].split()[1])
        children.setdefault(parent, []).append(int(entry))
        names[int(entry)] = name
    found = {}
    waiting = [root]
    while waiting:
        for pid in children.get(waiting.pop(), []):
            found[pid] = names[pid]
            waiting.append(pid)
    return found


def _signal(pids, sig):
    for pid in pids:
        try:
            os.kill(pid, sig)
        except ProcessLookupError:
            pass


def _reap_until(finished, seconds):
    """Collects ended children until finished() or the time is over; true when finished."""
    end = time.monotonic() + seconds
    while True:
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            return True
        if finished():
            return True
        if time.monotonic() >= end:
            return False
        signal.sigtimedwait({signal.SIGCHLD}, 0.02)


def end_descendants(last_names):
    """Ends every descendant: asked first, then killed. Those with one of the names go after all others, and have longer:
    a compositor that is killed leaves the lock of its X display behind."""
    me = os.getpid()

    def others():
        return [pid for pid, name in descendants(me).items() if name not in last_names]

    for remaining, grace in ((others, 2.0), (lambda: list(descendants(me)), 10.0)):
        _signal(remaining(), signal.SIGTERM)
        _signal(remaining(), signal.SIGCONT)  # a stopped process would not hear the request
        if not _reap_until(lambda: not remaining(), grace):
            _kill(remaining)


def _kill(remaining):
    while pids := remaining():
        _signal(pids, signal.SIGKILL)
        _reap_until(lambda: not remaining(), 0.2)

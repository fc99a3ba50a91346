# SPDX-License-Identifier: GPL-3.0-or-later
"""One process guards the desktop, another runs it: whichever is killed, the other ends every process that is left."""
import fcntl
import os
import pwd
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from desktop import processes
from desktop.services import IBUS_PROGRAMS, Desktop, Failure, missing
from desktop.sessions import SESSIONS

_PREFIX = "lorvane-desktop-"
_USER = "nobody"  # runs the desktops that root may not run
_KEPT = ("PATH", "USER", "LOGNAME", "TERM", "SHELL", "TZ", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS",
         "LSAN_OPTIONS", "LD_LIBRARY_PATH")
_ENDING = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)


class _Ended(Exception):
    def __init__(self, sig):
        super().__init__(sig)
        self.signal = sig


def run(options):
    """Makes the desktop, runs the command in it and returns its exit status (128 + signal when it was killed)."""
    session = SESSIONS[options.session](options)
    programs = {**session.programs(), **(IBUS_PROGRAMS if options.input_method else {})}
    if packages := missing(programs):
        return _complain(f"missing; install with: apt-get install {' '.join(packages)}", 127)
    _remove_leftovers()
    folder = tempfile.mkdtemp(prefix=_PREFIX, dir="/tmp")
    lock = os.open(folder, os.O_RDONLY)
    fcntl.flock(lock, fcntl.LOCK_EX)
    user = None
    if os.geteuid() == 0 and not session.runs_as_root:
        user = pwd.getpwnam(_USER)
        os.chown(folder, user.pw_uid, user.pw_gid)
    processes.adopt_orphans()
    guard = os.getpid()
    signal.pthread_sigmask(signal.SIG_BLOCK, {*_ENDING, signal.SIGCHLD})
    child = os.fork()
    if child == 0:
        if user:
            processes.become(user)
        processes.die_with_parent(signal.SIGTERM, guard)
        os._exit(_run_desktop(session, options, folder, guard))
    status = _wait_for(child)
    processes.end_descendants(session.ends_last)
    if options.pictures:
        status = _keep_pictures(folder, options.pictures) or status
    shutil.rmtree(folder, ignore_errors=True)
    return status


def _keep_pictures(folder, wanted):
    """The user of the desktop may not write where its caller may."""
    try:
        shutil.copytree(f"{folder}/pictures", wanted, dirs_exist_ok=True)
    except (OSError, shutil.Error) as error:
        return _complain(f"the pictures cannot be kept: {error}", 125)
    return 0


def _complain(text, status):
    print(f"virtual-desktop: {text}", file=sys.stderr)
    return status


def _remove_leftovers():
    """Folders whose desktop was killed together with its guard: nobody holds their lock any more."""
    for name in os.listdir("/tmp"):
        if not name.startswith(_PREFIX):
            continue
        try:
            lock = os.open(f"/tmp/{name}", os.O_RDONLY)
        except OSError:
            continue
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            if time.time() - os.fstat(lock).st_mtime > 60:  # one that is just being made is not locked yet
                shutil.rmtree(f"/tmp/{name}", ignore_errors=True)
        except OSError:
            pass
        finally:
            os.close(lock)


def _wait_for(pid):
    """The exit status of a child; what ends us is passed on to it."""
    while True:
        ended, status = os.waitpid(pid, os.WNOHANG)
        if ended:
            code = os.waitstatus_to_exitcode(status)
            return code if code >= 0 else 128 - code
        sig = signal.sigwait({*_ENDING, signal.SIGCHLD})
        if sig != signal.SIGCHLD:
            os.kill(pid, sig)


def _environment(session, folder):
    environment = {name: os.environ[name] for name in _KEPT if name in os.environ}
    environment.update({name: value for name, value in os.environ.items() if name.startswith("LORVANE_")})
    environment.pop("LORVANE_HANDS", None)  # of a desktop around this one
    folders = {"HOME": "home", "XDG_RUNTIME_DIR": "run", "XDG_CONFIG_HOME": "home/.config", "TMPDIR": "tmp",
               "XDG_DATA_HOME": "home/.local/share", "XDG_STATE_HOME": "home/.local/state",
               "XDG_CACHE_HOME": "home/.cache"}
    for name, inner in folders.items():
        environment[name] = f"{folder}/{inner}"
        os.makedirs(environment[name], mode=0o700)
    for inner in ("logs", "pictures"):
        os.mkdir(f"{folder}/{inner}")
    environment.update({
        "LORVANE_DESKTOP": folder, "LORVANE_PICTURES": f"{folder}/pictures", "LC_ALL": "C.UTF-8",
        "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/run/bus",
        "PULSE_SERVER": f"unix:{folder}/run/pulse/native",
        "GTK_USE_PORTAL": "0", "GVFS_DISABLE_FUSE": "1", **session.environment(folder),
    })
    return environment


def _run_desktop(session, options, folder, guard):
    started = time.monotonic()
    processes.adopt_orphans()

    def end(sig, _frame):
        raise _Ended(sig)

    for sig in _ENDING:
        signal.signal(sig, end)
    status = 1
    try:
        signal.pthread_sigmask(signal.SIG_UNBLOCK, _ENDING)
        desktop = Desktop(folder, _environment(session, folder))
        if options.input_method:
            desktop.choose_ibus()
        session.bring_up(desktop)
        if options.input_method:
            desktop.start_ibus()
        if options.verbose:
            print(f"virtual-desktop: up in {time.monotonic() - started:.2f} s", file=sys.stderr, flush=True)
        status = _run_command(options.command, desktop.environment)
    except Failure as failure:
        status = _complain(failure, 125)
    except _Ended as ended:
        status = 128 + ended.signal
    finally:
        signal.pthread_sigmask(signal.SIG_BLOCK, _ENDING)
        processes.end_descendants(session.ends_last)
        if os.getppid() != guard:  # else it looks after the folder
            shutil.rmtree(folder, ignore_errors=True)
        sys.stderr.flush()
    return status


def _run_command(command, environment):
    try:
        process = subprocess.Popen(command, env=environment, preexec_fn=processes.hear_all_signals)
    except OSError as error:
        return _complain(f"{command[0]}: {error.strerror}", 127)
    try:
        code = process.wait()
    except _Ended as ended:
        process.send_signal(ended.signal)
        raise
    return code if code >= 0 else 128 - code

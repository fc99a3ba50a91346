# SPDX-License-Identifier: GPL-3.0-or-later
"""Starts the program on the display of its user, in the background: real_use.py BIN OUTPUT"""
import os
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))

from desktop.program import Failure, Program, log_file, skip_introduction  # noqa: E402


def main():
    program = Program(*sys.argv[1:3])
    if program.status():
        print("lorvane runs already; `lorvane quit` ends it")
        return
    skip_introduction()
    try:
        program.start()
        program.wait_until_ready()
    except Failure as failure:
        sys.exit(f"run: {failure}\n{program.what_was_seen()}\n`{program.executable} doctor` says what to mend")
    print(f"lorvane runs in the background (process {program.process.pid}).\n"
          "Hold right Ctrl in any application, speak, and let go: the text lands where the caret is.\n"
          f"{program.executable} status|doctor|quit talks to it; its log is {log_file()}")


if __name__ == "__main__":
    main()

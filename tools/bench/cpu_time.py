#!/usr/bin/python3
"""Usage: cpu_time.py FILE COMMAND…

Runs COMMAND and keeps in FILE the processor time of all its descendants that have ended, in microseconds. COMMAND
finds the name of FILE in its environment (TAVREL_CPU_TIME). The exit code is COMMAND's. Wine does not tell the
processor time of another process, but Linux tells it to the process that collects the ended ones.
"""
import ctypes
import os
import subprocess
import sys

PR_SET_CHILD_SUBREAPER = 36  # linux/prctl.h: orphaned descendants become children of this process

ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
path = os.environ["TAVREL_CPU_TIME"] = sys.argv[1]
file = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC)
command = subprocess.Popen(sys.argv[2:]).pid
total = 0.0
while True:
    ended, status, usage = os.wait4(-1, 0)
    total += usage.ru_utime + usage.ru_stime
    # One write of a fixed length: a reader never sees half a number.
    os.pwrite(file, b"%20d\n" % round(total * 1e6), 0)
    if ended == command:
        sys.exit(os.waitstatus_to_exitcode(status))

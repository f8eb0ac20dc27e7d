"""Sandboxes for faulty programs: namespaces of their own in which `session` carries out one request."""

import json
import os
import pathlib
import subprocess
import sys
import threading

from mutation import layout

SESSION = pathlib.Path(__file__).with_name("session.py")
NAMESPACES = ["unshare", "--mount", "--pid", "--net", "--ipc", "--fork", "--kill-child"]
IS_ROOT = os.geteuid() == 0
# Others get the rights to mount in a user namespace. In a second one tests run as the user who started the tool.
AS_ROOT = [] if IS_ROOT else ["--user", "--map-root-user"]
AS_USER = [] if IS_ROOT else ["unshare", "--user", f"--map-user={os.getuid()}", f"--map-group={os.getgid()}"]

_running = set()
_lock = threading.Lock()


class Unavailable(Exception):
    """There is no sandbox; the message says why."""


def _reply(process, request):
    """Sends the request; returns what the sandbox prints on standard output and standard error."""
    with _lock:
        _running.add(process)
    try:
        # Standard input stays open until the reply is there: the sandbox ends with it.
        process.stdin.write(json.dumps(request) + "\n")
        process.stdin.flush()
        errors = []
        reader = threading.Thread(target=lambda: errors.append(process.stderr.read()))
        reader.start()
        reply = process.stdout.read()
        reader.join()
        return reply, errors[0]
    except BrokenPipeError:
        return "", process.stderr.read()
    finally:
        process.kill()
        with _lock:
            _running.discard(process)


def ask(method, request):
    """Calls a method of `session.Session` in a sandbox of its own; returns its result. Throws Unavailable."""
    request = {"ask": method, "prefix": AS_USER, "workspace": str(layout.WORKSPACE), "scratch": str(layout.SCRATCH), **request}
    with subprocess.Popen([*NAMESPACES, *AS_ROOT, sys.executable, "-IBS", str(SESSION)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, start_new_session=True) as process:
        reply, errors = _reply(process, request)
    try:
        reply = json.loads(reply)
    except ValueError:
        raise Unavailable(f"the sandbox ended: {errors.strip() or 'no message'}") from None
    if "problem" in reply:
        raise Unavailable(reply["problem"])
    return reply["result"]


def end_all():
    """Ends the running sandboxes with all of their processes."""
    with _lock:
        for process in _running:
            process.kill()

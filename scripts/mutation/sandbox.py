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
AS_USER = ["--user", "--map-root-user"]

_running = set()
_lock = threading.Lock()


class Unavailable(Exception):
    """This machine grants no sandbox; the message says why."""


def _command():
    as_user = AS_USER if os.geteuid() != 0 else []
    return [*NAMESPACES, *as_user, sys.executable, "-IBS", str(SESSION)]


def ask(request):
    """Carries out a request in a sandbox of its own; returns the results. Throws Unavailable."""
    request = {"workspace": str(layout.WORKSPACE), "scratch": str(layout.SCRATCH), **request}
    with subprocess.Popen(_command(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          start_new_session=True) as process:
        with _lock:
            _running.add(process)
        try:
            process.stdin.write(json.dumps(request) + "\n")
            process.stdin.flush()
            errors = []
            reader = threading.Thread(target=lambda: errors.append(process.stderr.read()))
            reader.start()
            response = process.stdout.read()
            reader.join()
        except BrokenPipeError:
            response, errors = "", [process.stderr.read()]
        finally:
            process.kill()
            with _lock:
                _running.discard(process)
    try:
        response = json.loads(response)
    except ValueError:
        raise Unavailable(f"the sandbox ended: {errors[0].strip() or 'no message'}") from None
    if "problem" in response:
        raise Unavailable(response["problem"])
    return response["result"]


def end_all():
    """Ends the running sandboxes with all of their processes."""
    with _lock:
        for process in _running:
            process.kill()

"""The first process of a sandbox: plants one fault, builds what tests need, and runs them.

Reads a request as one line of JSON from standard input and prints the results as one line. It ends, and all processes of the
sandbox with it, when standard input is closed.
"""

import json
import os
import pathlib
import resource
import select
import signal
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from mutation import cases, isolation, trace  # noqa: E402, beside this file

MEMORY_LIMIT = 2 << 30  # of all processes of a program together
PROCESS_LIMIT = 500
OUTPUT_LIMIT = 16 << 20
BUILD_SECONDS = 600
LOOK_SECONDS = 0.1  # between two looks at memory and processes
PAGE = resource.getpagesize()


def others():
    """Returns the processes of the sandbox besides this one."""
    return [int(name) for name in os.listdir("/proc") if name.isdigit() and name != "1"]


def excess():
    """Returns which limit the running processes exceed together, or None."""
    processes = others()
    if len(processes) > PROCESS_LIMIT:
        return "processes"
    pages = 0
    for process in processes:
        try:
            with open(f"/proc/{process}/statm", encoding="ascii") as file:
                resident, shared = file.read().split()[1:3]
        except OSError:
            continue
        pages += int(resident) - int(shared)
    return "memory" if pages * PAGE > MEMORY_LIMIT else None


def restore_signals():
    """Gives every signal its default effect: this interpreter ignores SIGPIPE, and the process that started it may ignore others."""
    for number in signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP}:
        try:
            signal.signal(number, signal.SIG_DFL)
        except OSError:  # the C library's own
            continue
    signal.pthread_sigmask(signal.SIG_SETMASK, ())


def start(command, directory, environment):
    """Starts a program in a session of its own; returns its process id and the reading end of its output."""
    output, inner = os.pipe()
    process = os.fork()
    if process == 0:
        try:
            os.setsid()
            restore_signals()
            os.dup2(os.open(os.devnull, os.O_RDONLY), 0)
            os.dup2(inner, 1)
            os.dup2(inner, 2)
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            pathlib.Path("/proc/self/oom_score_adj").write_text("1000", encoding="ascii")
            os.chdir(directory)
            os.execvpe(command[0], command, {**os.environ, **environment})
        except OSError as error:
            os.write(2, f"{command[0]}: {error}\n".encode())
        finally:
            os._exit(127)
    os.close(inner)
    os.set_blocking(output, False)
    return process, output


def end_others():
    """Ends and reaps every other process of the sandbox."""
    while others():
        try:
            os.kill(-1, signal.SIGKILL)
        except ProcessLookupError:
            pass
        try:
            os.waitpid(-1, 0)
        except ChildProcessError:
            pass


def reap(process):
    """Reaps what has ended; returns the exit status of the process, or minus its signal, or None while it runs."""
    found = None
    while True:
        try:
            ended, status = os.waitpid(-1, os.WNOHANG)
        except ChildProcessError:
            return found
        if ended == 0:
            return found
        if ended == process:
            found = os.waitstatus_to_exitcode(status)


def receive(output, received):
    """Appends what can be read; returns whether more may follow."""
    while len(received) <= OUTPUT_LIMIT:
        try:
            part = os.read(output, 1 << 16)
        except BlockingIOError:
            return True
        if not part:
            return False
        received += part
    return False


def run(command, directory, environment, seconds):
    """Runs a program to its end or to the first limit that it exceeds, and ends what it leaves behind.

    Returns how it ended ("passed", "failed", "crashed" or the exceeded limit), its duration and its output.
    """
    began = looked = time.monotonic()
    process, output = start(command, directory, environment)
    exited = os.pidfd_open(process)
    watched = select.poll()
    watched.register(output, select.POLLIN)
    watched.register(exited, select.POLLIN)
    watched.register(sys.stdin.fileno(), 0)
    received, status, end = bytearray(), None, None
    while status is None and end is None:
        for descriptor, _ in watched.poll(LOOK_SECONDS * 1000):
            if descriptor == sys.stdin.fileno():
                os._exit(1)
            if descriptor == output and not receive(output, received):
                watched.unregister(output)
        status = reap(process)
        now = time.monotonic()
        if len(received) > OUTPUT_LIMIT:
            end = "output"
        elif now - began > seconds:
            end = "time"
        elif now - looked > LOOK_SECONDS:
            looked, end = now, excess()
    took = time.monotonic() - began
    end_others()
    receive(output, received)
    os.close(output)
    os.close(exited)
    end = end or ("passed" if status == 0 else "failed" if status > 0 else "crashed")
    return {"end": end, "seconds": round(took, 3), "output": received[-OUTPUT_LIMIT:].decode(errors="replace")}


class Session:
    """One request: see `campaign` and `learning` for what they ask."""

    def __init__(self, request):
        self.request = request

    def _build(self, targets):
        return run(["ninja", "-j1", *targets], self.request["build"], {"CCACHE_DISABLE": "1"}, BUILD_SECONDS)["end"] == "passed"

    def _objects(self):
        return [pathlib.Path(self.request["build"], name).read_bytes() for name in self.request["objects"]]

    def _plant(self):
        """Writes the changed sources and compiles them; returns why there is no fault to be noticed, or None."""
        before = self._objects()
        for name, text in self.request["sources"].items():
            pathlib.Path(name).write_text(text, encoding="utf-8")
        if not self._build(self.request["compiled"]):
            return "unbuildable"
        return "unchanged" if before and before == self._objects() else None

    def _run(self, program, *options):
        command = [*self.request["prefix"], *cases.command(program), *(options if program["filters"] is not None else ())]
        return run(command, program["directory"], program["environment"], program["seconds"])

    def _batch(self, batch):
        """Runs the programs of a batch; returns the result of the first that does not pass, or None."""
        if not self._build(batch["targets"]):
            return {"outcome": "unbuildable"}
        for program in batch["runs"]:
            result = self._run(program, "--gtest_fail_fast")
            if result["end"] == "time":  # another look, as the machine may have been busy
                result = self._run(program, "--gtest_fail_fast")
            if result["end"] != "passed":
                return {"outcome": "noticed", "end": result["end"], "by": cases.noticing(program, result["output"])[0]}
        return None

    def fault(self):
        """Returns the outcome of the planted fault, and the test that noticed it: nothing is run after the first."""
        reason = self._plant()
        if reason:
            return {"outcome": reason}
        results = (self._batch(batch) for batch in self.request["batches"])
        return next((result for result in results if result), {"outcome": "survived"})

    def failing(self):
        """Returns the labels of all cases that do not pass with the planted faults."""
        self._plant()
        return [label for batch in self.request["batches"] if self._build(batch["targets"])
                for program in batch["runs"] for label in self._failing(program)]

    def _failing(self, program):
        """Returns the labels of the cases of a run that do not pass; goes on behind each that ends the program."""
        failed = []
        while program["filters"] != []:
            result = self._run(program)
            if result["end"] == "passed":
                break
            labels = cases.noticing(program, result["output"])
            failed += labels
            if program["filters"] is None:
                break
            passed = cases.durations(result["output"])
            program["filters"] = [label for label in program["filters"] if label not in labels and label not in passed]
        return failed

    def learning(self):
        """Returns the result of every run, with what it executed where the request names a file of hits."""
        results = []
        for program in self.request["runs"]:
            hits = self.request.get("hits")
            if hits:
                pathlib.Path(hits).write_bytes(bytes(self.request["size"]))
                os.chmod(hits, 0o666)
            result = self._run(program)
            if hits:
                passed = result["end"] == "passed"
                result["hits"] = hex(trace.numbers(pathlib.Path(hits).read_bytes())) if passed else None
            results.append(result)
        return results


def main():
    request = json.loads(sys.stdin.readline())
    try:
        isolation.isolate(request["workspace"], request["scratch"])
    except OSError as error:
        print(json.dumps({"problem": str(error)}))
        return
    print(json.dumps({"result": getattr(Session(request), request["ask"])()}))


if __name__ == "__main__":
    main()

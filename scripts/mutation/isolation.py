"""Mounts of a sandbox: everything is read-only but a throw-away layer over the workspace and private /tmp, /dev and /run."""

import ctypes
import os
import pathlib

MS_RDONLY, MS_NOSUID, MS_NODEV, MS_NOEXEC, MS_REMOUNT, MS_BIND, MS_REC = 1, 2, 4, 8, 32, 4096, 16384
KEPT = {"ro": MS_RDONLY, "nosuid": MS_NOSUID, "nodev": MS_NODEV, "noexec": MS_NOEXEC, "noatime": 1 << 10, "nodiratime": 1 << 11,
        "relatime": 1 << 21}
LAYER_SIZE = "3g"  # bounds what a faulty program can write
DEVICES = ("null", "zero", "full", "random", "urandom", "tty")
PROTECTED = ("sys", "sysrq-trigger", "irq", "bus", "fs")  # in /proc
PR_CAPBSET_DROP = 24
DROPPED = (16, 17, 22, 25, 34)  # capabilities: modules, raw I/O, reboot, clock, kernel log
C_LIBRARY = ctypes.CDLL(None, use_errno=True)


def mount(source, target, kind=None, flags=0, data=None):
    """Calls mount(2). Throws OSError with the target."""
    arguments = [os.fsencode(argument) if argument is not None else None for argument in (source, target, kind)]
    if C_LIBRARY.mount(*arguments, ctypes.c_ulong(flags), os.fsencode(data) if data else None) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"mount: {os.strerror(error)}", str(target))


def bind(source, target):
    """Makes a directory or file visible at another place, what is mounted in it included."""
    mount(source, target, flags=MS_BIND | MS_REC)


def _set_read_only(place, options):
    kept = sum(KEPT.get(option, 0) for option in options)
    mount(None, place, flags=MS_REMOUNT | MS_BIND | MS_RDONLY | kept)


def _make_others_read_only(scratch):
    with open("/proc/self/mountinfo", encoding="utf-8") as lines:
        mounts = [line.split() for line in lines]
    for fields in mounts:
        place = fields[4].encode().decode("unicode_escape")
        if place != scratch and not place.startswith(scratch + "/") and os.path.exists(place):
            _set_read_only(place, fields[5].split(","))


def _make_devices(place):
    for name in DEVICES:
        (place / name).touch()
        bind(f"/dev/{name}", place / name)
    for name, target in (("fd", "/proc/self/fd"), ("stdin", "fd/0"), ("stdout", "fd/1"), ("stderr", "fd/2"), ("ptmx", "pts/ptmx")):
        (place / name).symlink_to(target)
    for name in ("pts", "shm"):
        (place / name).mkdir()
    (place / "shm").chmod(0o1777)
    mount("devpts", place / "pts", "devpts", MS_NOSUID | MS_NOEXEC, "newinstance,ptmxmode=0666,mode=620")


def _mount_proc():
    mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC)
    for name in PROTECTED:
        if os.path.exists(f"/proc/{name}"):
            bind(f"/proc/{name}", f"/proc/{name}")
            _set_read_only(f"/proc/{name}", ("nosuid", "nodev", "noexec"))


def isolate(workspace, scratch):
    """Rearranges the mounts of this process, which must have a mount and a process namespace of its own.

    `scratch` is an empty directory in the workspace, an absolute path. Throws OSError.
    """
    mount("tmpfs", scratch, "tmpfs", MS_NOSUID | MS_NODEV, f"mode=755,size={LAYER_SIZE}")
    layer = pathlib.Path(scratch)
    for name in ("upper", "work", "merged", "tmp", "dev", "run"):
        (layer / name).mkdir()
    (layer / "tmp").chmod(0o1777)
    mount("overlay", layer / "merged", "overlay", 0, f"lowerdir={workspace},upperdir={layer}/upper,workdir={layer}/work")
    _make_devices(layer / "dev")
    _make_others_read_only(scratch)
    bind(layer / "dev", "/dev")
    bind(layer / "run", "/run")  # without the sockets of services
    if workspace.startswith("/tmp/"):
        inside = layer / "tmp" / os.path.relpath(workspace, "/tmp")
        inside.mkdir(parents=True)
        bind(layer / "merged", inside)
        bind(layer / "tmp", "/tmp")
    else:
        bind(layer / "tmp", "/tmp")
        bind(layer / "merged", workspace)  # last, as it hides the layer
    _mount_proc()
    os.chdir("/")
    for capability in DROPPED:
        C_LIBRARY.prctl(PR_CAPBSET_DROP, capability, 0, 0, 0)

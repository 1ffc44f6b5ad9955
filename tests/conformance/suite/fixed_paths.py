"""The program's fixed paths, given to it without touching the machine.

A process with a mount namespace of its own (and a user namespace, when it is not root's) sees, in
the place of each folder in which the program looks, a link to a folder below its current directory.
What else the machine has beside these folders is still there, by links to where it is seen as well.
"""

import atexit
import ctypes
import os
import tempfile

# Folders, as src/job/fixed_paths.cpp has them, and in each the file or folder that is looked up.
FOLDERS = {
    "/usr/local/lib/PXLQlp": "fcbe",
    "/etc/opt/PXLQwrmtk/wrmtk": "wrmtkenv",
    "/etc/lp": "g1gaiji",
    "/var/opt/PXLQwrmtk/wrmtk": "wrmtk64log.txt",
    "/etc/opt/KOVAje/lib": "libfal.so.1",
}
BELOW = "sandbox"

NEW_NAMESPACE = 0x00020000
NEW_USER = 0x10000000
BIND = 4096
RECURSIVE = 16384
PRIVATE = 1 << 18
DETACH = 2


def call(name: str, *arguments) -> None:
    libc = ctypes.CDLL(None, use_errno=True)
    if getattr(libc, name)(*arguments) != 0:
        number = ctypes.get_errno()
        raise OSError(number, f"{name}: {os.strerror(number)}")


def mount(source: str, target: str, kind: str, flags: int = 0) -> None:
    call(
        "mount", os.fsencode(source), os.fsencode(target), os.fsencode(kind),
        ctypes.c_ulong(flags), None,
    )


def write(path: str, text: str) -> None:
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def leave_namespace() -> None:
    user, group = os.getuid(), os.getgid()
    if user == 0:
        try:
            call("unshare", NEW_NAMESPACE)
            return
        except OSError:
            pass
    call("unshare", NEW_USER | NEW_NAMESPACE)
    write("/proc/self/setgroups", "deny")
    write("/proc/self/uid_map", f"{user} {user} 1")
    write("/proc/self/gid_map", f"{group} {group} 1")


class Replacement:
    """A folder that is there already, with another one in its place that has what it has."""

    def __init__(self, folder: str, stand: str):
        # Where what it has is still seen.
        self.seen = os.path.join(stand, folder.strip("/").replace("/", "-"))
        self.folder = folder
        os.mkdir(self.seen)
        mount(folder, self.seen, "none", BIND | RECURSIVE)
        mount("none", folder, "tmpfs")
        for name in os.listdir(self.seen):
            os.symlink(os.path.join(self.seen, name), os.path.join(folder, name))


def link_to_current_directory(path: str, stand: str, replaced: dict[str, Replacement]) -> None:
    """Puts a link in the place of a folder, which need not be there."""
    parent = path
    while True:
        parent = os.path.dirname(parent)
        # A folder in one that is replaced already is a link to the old one: replace that, too.
        above = next((one for one in replaced if parent.startswith(one + "/")), None)
        if parent in replaced:
            break
        if above is not None:
            if os.path.islink(parent):
                old = os.path.realpath(parent)
                os.remove(parent)
                os.mkdir(parent)
                for name in os.listdir(old):
                    os.symlink(os.path.join(old, name), os.path.join(parent, name))
                break
            if os.path.isdir(parent):
                break
        elif os.path.isdir(parent):
            replaced[parent] = Replacement(os.path.realpath(parent), stand)
            break
    rest = os.path.relpath(path, parent).split("/")
    for name in rest[:-1]:
        parent = os.path.join(parent, name)
        os.makedirs(parent, exist_ok=True)
    link = os.path.join(parent, rest[-1])
    if os.path.lexists(link):
        os.remove(link)
    os.symlink("/proc/self/cwd/" + BELOW + path, link)


def leave(stand: str) -> None:
    """Removes the folder, which is an empty one outside of the namespace."""
    try:
        call("umount2", os.fsencode(stand), DETACH)
    except OSError:
        pass
    try:
        os.rmdir(stand)
    except OSError:
        pass


def enter() -> str:
    """From now on the fixed paths of this process, and of all that it starts, lead below
    `sandbox/` of their current directory. To be called before any thread is started.

    @return why that is not possible, "" when it has been done.
    """
    try:
        leave_namespace()
        mount("none", "/", "none", RECURSIVE | PRIVATE)
        stand = tempfile.mkdtemp(prefix="conformance-paths-")
        atexit.register(leave, stand)
        mount("none", stand, "tmpfs")
        os.chmod(stand, 0o755)
        replaced: dict[str, Replacement] = {}
        # The shortest first, so that nothing is put below a link.
        for path in sorted(FOLDERS, key=len):
            link_to_current_directory(path, stand, replaced)
    except OSError as error:
        return f"no namespace for the fixed paths: {error}"
    return ""


def machine_has() -> list[str]:
    """Files of the machine that a program without a namespace finds at its fixed paths."""
    paths = [os.path.join(folder, name) for folder, name in FOLDERS.items()]
    return [path for path in paths if os.path.lexists(path)]

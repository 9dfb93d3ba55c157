"""How much memory there is, as Linux tells."""

from __future__ import annotations

import resource
from pathlib import Path

_SHARE = 16  # of the memory, one part is left to others

_PROCESS = Path("/proc/self/statm")
_MACHINE = Path("/proc/meminfo")
_GROUP = Path("/sys/fs/cgroup")  # a container's own


def resident_bytes() -> int:
    """Return how much this process holds."""
    return int(_PROCESS.read_text().split()[1]) * resource.getpagesize()


def is_memory_scarce(machine: Path = _MACHINE, group: Path = _GROUP) -> bool:
    """Whether less than a sixteenth is left of the machine's, or a container's."""
    return any(
        available * _SHARE < whole
        for whole, available in (_of_machine(machine), _of_group(group))
    )


def _of_machine(machine: Path) -> tuple[int, int]:
    """Return all bytes and those that can be had; nothing, where nobody tells."""
    if not machine.exists():
        return 0, 0
    lines = dict(line.split(":") for line in machine.read_text().splitlines())
    whole, available = (
        1024 * int(lines[name].split()[0]) for name in ("MemTotal", "MemAvailable")
    )
    return whole, available


def _of_group(group: Path) -> tuple[int, int]:
    """Return the same of a container; nothing, where it has no limit."""
    try:
        most = (group / "memory.max").read_text().strip()
        if most == "max":
            return 0, 0
        held = int((group / "memory.current").read_text())
        lines = (group / "memory.stat").read_text().splitlines()
    except OSError:
        return 0, 0
    # What the kernel keeps of files goes when it is needed.
    freed = dict(line.split() for line in lines).get("inactive_file", "0")
    return int(most), int(most) - held + int(freed)

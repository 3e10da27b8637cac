"""What a process takes of the system, as proc(5) tells."""

import os
import pathlib

MORE_MEMORY = 2 << 20  # bytes; what pieces in use keep of a page differs from run to run


class Footprint:
    def __init__(self, pid):
        process = pathlib.Path(f"/proc/{pid}")
        self.memory = self._anonymous(process)  # of its own, without what it maps from files
        self.descriptors = len(os.listdir(process / "fd"))
        tasks = list((process / "task").iterdir())
        self.threads = len(tasks)
        self.children = sum(len((task / "children").read_text().split()) for task in tasks)

    @staticmethod
    def _anonymous(process):
        for line in (process / "smaps_rollup").read_text().splitlines():
            if line.startswith("Anonymous:"):
                return int(line.split()[1]) * 1024
        raise AssertionError("the system does not tell the memory")

    def above(self, start):
        """Returns what is more than at the start."""
        limits = {"memory": start.memory + MORE_MEMORY, "descriptors": start.descriptors, "threads": start.threads,
                  "children": start.children}
        return [f"{getattr(self, name)} {name} where {limit} are allowed" for name, limit in limits.items()
                if getattr(self, name) > limit]

    def __str__(self):
        return (f"{self.memory / (1 << 20):.2f} MiB, {self.descriptors} descriptors, {self.threads} threads, "
                f"{self.children} children")

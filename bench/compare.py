#!/usr/bin/env python3
"""Runs the readers in turn, each read in a process of its own, and prints tables of the figures."""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass

from limits import print_limits

TOOLS = pathlib.Path(__file__).resolve().parent.parent / "tools"
READERS = {"xml": ["quillet", "libplist", "pugixml", "plain"],
           "binary": ["quillet", "libplist", "plain"]}
NAMES = {"quillet": "Quillet", "libplist": "libplist", "pugixml": "pugixml", "plain": "plain read"}
# If clock time exceeds processor time by this factor, the machine was busy with other work.
BUSY_RATIO = 1.25


@dataclass
class Measurement:
    clock: float  # milliseconds
    processor: float  # milliseconds
    messages: int
    digest: str
    peak: float  # MiB


def parse_arguments():
    parser = argparse.ArgumentParser(prog="bench/run", description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--accounts", type=int, default=10)
    parser.add_argument("--files", type=int, default=50, help="of each account")
    parser.add_argument("--messages", type=int, default=400, help="of each file")
    parser.add_argument("--format", choices=["xml", "binary", "both"], default="both")
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--any-speed", action="store_true",
                        help="do not fail where something is slower than it is meant to be")
    return parser.parse_args()


class Bench:
    def __init__(self, build):
        self.program = build / "bin" / "quillet-bench"
        self.stores = build / "bench-stores"

    def make_store(self, name, file_format, *size):
        """Makes a new container. Its dates count back from now, so an old one would not do."""
        folder = self.stores / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        subprocess.run([self.program, "make", folder, file_format, *map(str, size)], check=True)
        return folder

    def read(self, reader, *containers, command="read"):
        output = subprocess.run([self.program, command, reader, *containers], check=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
        clock, processor, messages, digest, peak = output.split()
        return Measurement(float(clock), float(processor), int(messages), digest, int(peak) / 1024)


def size_of(container):
    files = [file for file in (container).rglob("*") if file.is_file() and "Today" in file.parts]
    return len(files), sum(file.stat().st_size for file in files)


def take_turns(bench, readers, container, empty, rounds):
    taken = {reader: [] for reader in readers}
    for turn in range(rounds):
        shift = turn % len(readers)  # so no reader always follows the same one
        for reader in readers[shift:] + readers[:shift]:
            taken[reader].append(bench.read(reader, container, empty))
    work = {(m.messages, m.digest) for reader in readers if reader != "plain"
            for m in taken[reader]}
    if len(work) != 1:
        sys.exit(f"The readers did not read the same: {work}")
    return taken


def print_table(taken):
    def median(reader, field):
        return statistics.median(getattr(m, field) for m in taken[reader])

    print(f"{'reader':<12}{'median ms':>11}{'minimum ms':>12}{'processor ms':>14}"
          f"{'to Quillet':>12}{'to plain':>10}{'peak MiB':>10}")
    for reader, measurements in taken.items():
        clock = median(reader, "clock")
        print(f"{NAMES[reader]:<12}{clock:>11.1f}{min(m.clock for m in measurements):>12.1f}"
              f"{median(reader, 'processor'):>14.1f}"
              f"{clock / median('quillet', 'clock'):>11.2f}x"
              f"{clock / median('plain', 'clock'):>9.2f}x"
              f"{max(m.peak for m in measurements):>10.1f}")
    if median("libplist", "clock") > BUSY_RATIO * median("libplist", "processor"):
        print("The machine was busy with other work.")
    print()


def measure_first_frame(build, container):
    """Returns the panel program's milliseconds from start to first painted frame and peak MiB."""
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", QUILLET_CONTAINER=str(container),
                       DBUS_SESSION_BUS_ADDRESS="disabled:")
    probe = [build / "bin" / "quillet-startup-probe", repr(time.monotonic())]
    line = subprocess.run(probe, env=environment, check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True).stdout.split()
    return float(line[0]), int(line[1]) / 1024


def print_start(build, stores, rounds):
    demo = (stores / "demo").resolve()
    shutil.rmtree(demo, ignore_errors=True)
    demo.mkdir(parents=True)
    subprocess.run([TOOLS / "make_demo_mail.sh", demo], check=True)
    subprocess.run([TOOLS / "demo_host.sh", demo, "it.tarno.quillet", "--once"], check=True)
    frames = [measure_first_frame(build, demo / "container") for _ in range(rounds)]
    print(f"Start of quillet-today to first painted frame (offscreen, demo container): median "
          f"{statistics.median(f[0] for f in frames):.1f} ms, minimum {min(frames)[0]:.1f} ms, "
          f"peak {max(f[1] for f in frames):.1f} MiB")


def main():
    arguments = parse_arguments()
    bench = Bench(arguments.build)
    size = (arguments.accounts, arguments.files, arguments.messages)
    empty = bench.make_store("empty", "xml", 0, 0, 0)
    formats = ["xml", "binary"] if arguments.format == "both" else [arguments.format]
    for file_format in formats:
        container = bench.make_store(file_format, file_format, *size)
        files, length = size_of(container)
        print(f"{size[0] * size[1] * size[2]:,} messages, {file_format}: {length / 1e6:.1f} MB in "
              f"{files} files, {arguments.rounds} rounds")
        print_table(take_turns(bench, READERS[file_format], container, empty, arguments.rounds))
    first = [bench.read("quillet", empty) for _ in range(arguments.rounds)]
    again = [bench.read("quillet", empty, empty) for _ in range(arguments.rounds)]
    print(f"Empty store: first read of a process {statistics.median(m.clock for m in first):.3f} "
          f"ms, later ones {statistics.median(m.clock for m in again):.3f} ms")
    print_start(arguments.build, bench.stores, arguments.rounds)
    if not print_limits(bench, empty, min(arguments.rounds, 3)) and not arguments.any_speed:
        sys.exit("A hostile file costs more than it may.")


if __name__ == "__main__":
    main()

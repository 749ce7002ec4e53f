#!/usr/bin/env python3
"""Refuses calls of the agent in turn, one after the other and from one on, and judges what becomes of it.

Each method is run once as a program, whose calls are refused from its beginning, and served, where the agent
goes on afterwards. A run is clean when the agent neither crashes nor hangs, gives a code that it documents and
says why it failed, answers correctly when it says that it did, and keeps what it had said that it keeps.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

from board import ANY, KINDS, Board, Call
from clients import run_server
from scenarios import CODES, scenarios
from served import show_served, torture_served
from systems import system

LIMIT = 60  # seconds for one run
Run = collections.namedtuple("Run", "code output errors")


def run_agent(options, scenario, folder, board):
    """None when the agent does not end."""
    if scenario.connects:
        served = run_server(options, scenario, folder, board, LIMIT)
        return served and Run(*served)
    command = [*options.system.agent, *scenario.command(folder, options.system)]
    try:
        done = subprocess.run(command, env=options.system.environment(board), stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=LIMIT, check=False)
    except subprocess.TimeoutExpired:
        return None
    return Run(done.returncode, done.stdout, done.stderr)


def is_success(scenario, run):
    if run is None or run.code != 0:
        return False
    return not scenario.connects or (run.output != b"" and json.loads(run.output)["code"] == 0)


def judge(system_, scenario, folder, run, expected):
    """Returns what is wrong: a pair of a class and an explanation; None for a clean run."""
    if run is None:
        return "hang", f"no end within {LIMIT} s"
    if system_.has_crashed(run.code) or b"Sanitizer" in run.errors:
        return "crash", f"code {run.code}: {run.errors[-300:]!r}"
    if run.code not in CODES or (run.code != 0 and not run.errors.strip()):
        return "unclear", f"code {run.code}, message {run.errors!r}"
    if run.code == 0 and scenario.connects and not is_success(scenario, run):
        said = json.loads(run.output)["message"] if run.output else run.errors.strip()
        return None if said else ("unclear", f"{run.output!r}, and nothing says why")
    if run.code == 0 and not scenario.agrees(run.output, expected):
        return "wrong", f"{run.output[:300]!r} {run.errors[:300]!r}"
    faults = scenario.check(folder, run.code) if scenario.check else []
    return ("loss", "; ".join(faults)) if faults else None


class Process:
    """Runs one scenario as a program, each time in a new directory."""

    def __init__(self, options, scenario, work):
        self.options, self.scenario, self.work = options, scenario, work
        # The paths in the answers must be the same in every run: the directory keeps its name.
        self.folder = os.path.join(work, "run")
        self.board = Board(os.path.join(work, "board"))
        clean = self.run("spawn", Call(ANY), False)  # counts as it will be done then
        if clean is None or clean.code != 0:
            raise RuntimeError(f"{scenario.name} fails when nothing is refused: {clean}")
        if self.board.made("memory") == 0:
            raise RuntimeError("no call is counted: the library is not in front of the agent's")
        self.expected = clean.output
        self.counts = {kind: self.board.made(kind) for kind in KINDS}

    def run(self, kind, call, for_ever, shows=False, notes=False):
        """Once more where nothing was begun: Wine now and then starts no process."""
        for _ in range(3):
            shutil.rmtree(self.folder, ignore_errors=True)
            os.makedirs(self.folder, mode=0o700)
            if self.scenario.prepare:
                self.scenario.prepare(self.folder)
            self.board.order(kind, call, for_ever, shows, notes)
            run = run_agent(self.options, self.scenario, self.folder, self.board)
            if self.board.made("memory"):
                break
        return run

    def places(self, kind):
        """Returns where each call of the kind is made; 0 when nobody asks for it."""
        if self.counts[kind] == 0 or not self.options.all:
            return [0] * self.counts[kind]
        self.run(kind, Call(ANY), False, notes=True)
        return self.board.places(kind)

    def torture(self, kind, calls, for_ever, report):
        for call in calls:
            run = self.run(kind, call, for_ever)
            fault = judge(self.options.system, self.scenario, self.folder, run, self.expected)
            if self.board.refused == 0 and not fault:
                report.miss(kind)
                continue
            report(self.scenario.name, kind, for_ever, call, fault, is_success(self.scenario, run))


def sample(count, options, salt):
    """Returns some numbers of `count`, the first and the last among them."""
    if count <= options.sample:
        return list(range(1, count + 1))
    chosen = random.Random(f"{options.seed} {salt}").sample(range(2, count), max(options.sample - 2, 0))
    return sorted([1, count, *chosen])[: max(options.sample, 1)]


def choose(places, options, salt, known):
    """Returns the calls to refuse: each, the first of each call stack that is not known with a sample of the
    others, or a sample."""
    if options.every:
        return [Call(number) for number in range(1, len(places) + 1)]
    calls = [Call(number) for number in sample(len(places), options, salt)]
    if not options.all:
        return calls
    first = {}
    for number, place in enumerate(places, 1):
        first.setdefault(place, number)
    new = {number: Call(number, place) for place, number in first.items() if place not in known}
    known.update(first)
    return [*new.values(), *(call for call in calls if call.number not in new)]


class Table:
    """Counts the runs by method and kind, and keeps an example of every fault."""

    CLASSES = ["crash", "hang", "loss", "wrong", "unclear", "leak"]

    def __init__(self):
        self.runs = collections.defaultdict(collections.Counter)
        self.count = 0
        self.missed = collections.Counter()
        self.known = collections.defaultdict(set)  # call stacks that have their turn
        self.stacks = collections.defaultdict(set)  # those that have had it
        self.faults = []

    def miss(self, kind):
        """Takes an order that no call was reached by: threads took another turn."""
        self.missed[kind] += 1

    def __call__(self, name, kind, for_ever, call, fault, is_success):
        counter = self.runs[name, kind]
        counter["runs"] += 1
        self.count += 1
        if self.count % 1000 == 0:
            print(f"{self.count} runs, now {name}, {kind}", file=sys.stderr, flush=True)
        if call.place:
            self.stacks[kind].add(call.place)
        counter[fault[0] if fault else "success" if is_success else "failed"] += 1
        if fault:
            order = f"{kind} {call.number}{' and all after it' if for_ever else ''}"
            self.faults.append(f"{fault[0]}: {name}: {order}: {fault[1]}")
            print(self.faults[-1], file=sys.stderr, flush=True)

    def give_up(self, error):
        """Takes a method that fails when nothing is refused."""
        self.faults.append(f"given up: {error}")
        print(self.faults[-1], file=sys.stderr, flush=True)

    def sums(self, select):
        total = collections.Counter()
        for key, counter in self.runs.items():
            if select(*key):
                total += counter
        return total

    def print(self):
        columns = ["runs", "success", "failed", *self.CLASSES]
        print("| calls refused | call stacks | " + " | ".join(columns) + " |\n| --- | ---: |" + " ---: |" * len(columns))
        for label, select in [*((kind, lambda _n, k, kind=kind: k == kind) for kind in KINDS),
                              ("all", lambda _n, _k: True)]:
            total = self.sums(select)
            stacks = sum(len(places) for kind, places in self.stacks.items() if label in (kind, "all"))
            print(f"| {label} | {stacks or '-'} | " + " | ".join(str(total[column]) for column in columns) + " |")
        print(f"\nNo call reached: {dict(self.missed)}")
        print("\n| method | " + " | ".join(columns) + " |\n| --- |" + " ---: |" * len(columns))
        for name in dict.fromkeys(key[0] for key in self.runs):
            total = self.sums(lambda n, _k, name=name: n == name)
            print(f"| {name} | " + " | ".join(str(total[column]) for column in columns) + " |")


def torture_process(options, scenario, table, order):
    begin = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="torture-") as work:
        process = Process(options, scenario, work)
        for kind in order.kinds:
            places = process.places(kind)
            for for_ever in (False, True):
                known = table.known["process", kind, for_ever]
                calls = choose(places, options, f"{scenario.name} {kind} {for_ever}", known)
                process.torture(kind, order.in_time(calls), for_ever, table)
            if places and order.is_over():
                break
    print(f"{scenario.name}: {time.monotonic() - begin:.0f} s", file=sys.stderr, flush=True)


class Order:
    """When a method has to be done, of all that share the time, and with which kind of calls it begins."""

    def __init__(self, options, index, count):
        self.end = time.monotonic() + options.most * (index + 1) / count if options.most else None
        self.least = options.sample
        first = index % len(options.kinds)
        self.kinds = options.kinds[first:] + options.kinds[:first]

    def is_over(self):
        return self.end is not None and time.monotonic() > self.end

    def in_time(self, calls):
        """Yields the calls until the time is over, but at least as many as a sample has."""
        for index, call in enumerate(calls):
            if index >= self.least and self.is_over():
                return
            yield call


def show(options):
    """Runs one call alone and shows where it was refused."""
    kind, call = options.show.split(":")
    for_ever = call.endswith("+")
    scenario = next(each for each in scenarios() if each.name == options.only)
    with tempfile.TemporaryDirectory(prefix="torture-") as work:
        if options.forms == ["served"]:
            return show_served(options, scenario, work, (kind, Call(int(call.rstrip("+"))), for_ever))
        process = Process(options, scenario, work)
        run = process.run(kind, Call(int(call.rstrip("+"))), for_ever, shows=True)
        print(options.system.places(run.errors.decode(errors="replace")) if run else "hang",
              run.output if run else "", judge(options.system, scenario, process.folder, run, process.expected))


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--agent", required=True, help="the program")
    by = parser.add_mutually_exclusive_group(required=True)
    by.add_argument("--refusal", help="the library that refuses its calls")
    by.add_argument("--launcher", help="for an agent of Windows, what starts it: wine .../quillon_refuser.exe")
    parser.add_argument("--all", action="store_true", help="""refuse each call stack of a kind, with the method that
                        comes to it first, and of each method a sample""")
    parser.add_argument("--every", action="store_true", help="refuse each call, which takes hours")
    parser.add_argument("--sample", type=int, default=30, help="calls of one kind and method (default %(default)s)")
    parser.add_argument("--seed", default="1", help="another seed takes another sample")
    parser.add_argument("--only", help="this method alone")
    parser.add_argument("--kinds", type=lambda text: text.split(","), default=KINDS, help=", ".join(KINDS))
    parser.add_argument("--forms", type=lambda text: text.split(","), default=["process", "served"])
    parser.add_argument("--jobs", type=int, default=2, help="runs at once (default %(default)s)")
    parser.add_argument("--most", type=float, default=None, help="seconds that the methods share; of each at least one kind of calls is refused")
    parser.add_argument("--show", help="KIND:CALL or KIND:CALL+: run this alone and show the place of the call")
    return parser.parse_args()


def main():
    options = parse()
    options.system = system(options)
    if options.show:
        return show(options)
    table = Table()
    chosen = [each for each in scenarios() if options.only in (None, each.name) and each.runs_on(options.system)]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        runs = []
        if "process" in options.forms:
            runs += [(torture_process, options, each, table) for each in chosen if each.as_process]
        if "served" in options.forms:
            runs += [(torture_served, options, each, choose, table) for each in chosen if each.served]
        futures = [pool.submit(*run, Order(options, index, len(runs))) for index, run in enumerate(runs)]
        for future in concurrent.futures.as_completed(futures):
            try:
                future.result()
            except RuntimeError as error:
                table.give_up(error)
    table.print()
    return 1 if table.faults else 0


if __name__ == "__main__":
    sys.exit(main())

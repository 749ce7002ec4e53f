#!/usr/bin/env python3
"""Has one serving agent answer calls of all methods for long, and compares what it holds with the beginning.

Meanwhile a day passes on the agent's clock: it logs, rolls its log over, follows events and keeps rows, which
go when they are an hour old.
"""

import argparse
import collections
import os
import sys
import tempfile
import time

from scenarios import scenarios
from served import Agent
from systems import Native

MEMORY = 1 << 20  # bytes that the blocks of memory may grow
RESIDENT = 4 << 20  # bytes that the resident memory may grow: the heap keeps what is free between blocks that live
AHEAD = 4  # calls that are asked for before the first is answered
HEAVY = {"Wmi.Query": 50, "Wmi.Invoke": 200, "Processes.List": 5, "EventLog.Follow": 50, "Content.Download": 20, "Commands.Run": 4,
         "Commands.Table": 4, "Store.Save served": 10}  # one in so many rounds
DAY, HOUR = 86_400, 3_600  # seconds on the agent's clock
LOOKS = 20  # at the resident memory, of which the least counts: calls that run take megabytes for a while
CHANNEL = 10_000  # events that the simulated channel holds at most
Figures = collections.namedtuple("Figures", "descriptors threads blocks bytes resident files")
EXPIRE = 100  # rounds between two looks for rows that are too old, as a module would have it


def resident(pid):
    with open(f"/proc/{pid}/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")


class Soak:
    def __init__(self, options, folder):
        self.folder = folder
        self.chosen = [each for each in scenarios() if each.served]
        for scenario in self.chosen:
            if scenario.prepare:
                scenario.prepare(folder)
        self.log = os.path.join(folder, "agent.log")
        self.agent = Agent(options, folder, ["--config", f"{folder}/agent.json", "--log", self.log, "--level", "debug"])
        self.number = self.waiting = self.failures = self.kept = 0
        self.begin, self.hours, self.rolled = time.monotonic(), collections.deque(), set()
        self.resident = collections.deque(maxlen=LOOKS)

    def take(self):
        answer = self.agent.answer()
        if not answer:
            raise SystemExit(f"soak: no answer: {answer}")
        self.waiting -= 1
        if answer["code"] != 0:
            self.failures += 1
            print(f"soak: {answer}"[:300], file=sys.stderr)

    def ask(self, request):
        self.agent.ask(request)
        self.waiting += 1
        if self.waiting >= AHEAD:
            self.take()

    def pass_time(self, part):
        """Sets the agent's clock to that part of a day past the beginning."""
        self.agent.board.put_ahead(part * DAY - (time.monotonic() - self.begin))
        self.hours.append((part * DAY, self.number))
        self.resident.append(resident(self.agent.process.pid))
        while self.hours[0][0] < part * DAY - HOUR:
            self.kept = self.hours.popleft()[1]
        for name in os.listdir(self.folder):
            if name.startswith("agent.log."):
                self.rolled.add(os.stat(os.path.join(self.folder, name)).st_mtime_ns)

    def round(self, count):
        for scenario in self.chosen:
            if count % HEAVY.get(scenario.name, 1) == 0:
                self.number += 1
                self.ask(scenario.request(self.folder, self.agent.system, self.number))
        if count % EXPIRE == 0 and count > 0:
            self.number += 1
            old = f"DELETE FROM served WHERE CAST(Output AS INTEGER) <= {self.kept}"
            self.ask({"id": self.number, "method": "Store.Query", "parameters": {"database": "torture", "sql": old}})
        while self.waiting:
            self.take()

    def fill_channel(self):
        """Logs so many events that none of those that come takes more memory."""
        follow = next(each for each in self.chosen if each.name == "EventLog.Follow")
        for _ in range(CHANNEL):
            self.number += 1
            self.ask(follow.request(self.folder, self.agent.system, self.number))

    def figures(self, most=None):
        self.resident.append(resident(self.agent.process.pid))
        held = self.agent.figures(most)
        return Figures(*held, self.agent.board.live_bytes, min(self.resident), len(os.listdir(self.folder)))


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--agent", required=True)
    parser.add_argument("--refusal", required=True, help="the library that counts blocks of memory and their bytes")
    parser.add_argument("--calls", type=int, default=100_000)
    parser.add_argument("--minutes", type=float, default=20, help="the end, whatever was called")
    parser.add_argument("--warm-up", type=float, default=0.1, help="part of the calls before the first look")
    options = parser.parse_args()
    if options.calls <= 0 or options.minutes <= 0:
        parser.error("calls and minutes must be positive")
    return options


def main():
    options = parse()
    options.system = Native(options)
    with tempfile.TemporaryDirectory(prefix="soak-") as folder:
        soak = Soak(options, folder)
        begin, first, rounds, part = soak.begin, None, 0, 0
        if options.calls > 2 * CHANNEL:
            soak.fill_channel()
        while part < 1:
            soak.round(rounds)
            rounds += 1
            part = min(max(soak.number / options.calls, (time.monotonic() - begin) / (60 * options.minutes)), 1)
            if rounds % EXPIRE == 0 or part == 1:
                soak.pass_time(part)
            if first is None and part >= options.warm_up:
                first = soak.figures()
                print(first, "after", soak.number, flush=True)
        last = soak.figures(first.threads if first else None)
        print(last, "after", soak.number, "calls in", round(time.monotonic() - begin), "s,", soak.failures, "failed,",
              len(soak.rolled), "roll-overs,", round(soak.hours[-1][0] / HOUR, 1), "hours on the agent's clock")
        if last.threads > first.threads:
            print("threads:", *soak.agent.threads())
        grown = [last.descriptors > first.descriptors + 1, last.threads > first.threads, last.bytes > first.bytes + MEMORY,
                 last.resident > first.resident + RESIDENT, last.files > first.files + 6]
        return 1 if any(grown) or soak.failures or soak.agent.end() != 0 else 0


if __name__ == "__main__":
    sys.exit(main())

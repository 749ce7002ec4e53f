#!/usr/bin/env python3
"""Has one serving agent answer calls of all methods for long, and compares what it holds with the beginning."""

import argparse
import os
import sys
import tempfile
import time

from scenarios import scenarios
from served import Agent

MEMORY = 1 << 20  # bytes that the resident memory may grow
AHEAD = 4  # calls that are asked for before the first is answered
HEAVY = {"Wmi.Query": 50, "Wmi.Invoke": 200, "Processes.List": 5, "EventLog.Follow": 50, "Content.Download": 20, "Commands.Run": 4,
         "Commands.Table": 4, "Store.Save served": 10}  # one in so many rounds
PRUNE = 1000  # rounds after which the rows of the store go, as a module would have it


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
        self.number = self.waiting = self.failures = 0

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

    def round(self, count):
        for scenario in self.chosen:
            if count % HEAVY.get(scenario.name, 1) == 0:
                self.number += 1
                self.ask(scenario.request(self.folder, self.number))
        if count % PRUNE == 0:
            self.number += 1
            self.ask({"id": self.number, "method": "Store.Query",
                      "parameters": {"database": "torture", "sql": "DELETE FROM served"}})
        while self.waiting:
            self.take()

    def figures(self):
        return (*self.agent.figures(), resident(self.agent.process.pid), len(os.listdir(self.folder)))


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--agent", required=True)
    parser.add_argument("--refusal", required=True, help="the library that counts blocks of memory")
    parser.add_argument("--calls", type=int, default=100_000)
    parser.add_argument("--minutes", type=float, default=20, help="the end, whatever was called")
    parser.add_argument("--warm-up", type=float, default=0.1, help="part of the calls before the first look")
    return parser.parse_args()


def main():
    options = parse()
    with tempfile.TemporaryDirectory(prefix="soak-") as folder:
        soak = Soak(options, folder)
        begin, first, rounds = time.monotonic(), None, 0
        while soak.number < options.calls and time.monotonic() < begin + 60 * options.minutes:
            soak.round(rounds)
            rounds += 1
            part = max(soak.number / options.calls, (time.monotonic() - begin) / (60 * options.minutes))
            if first is None and part >= options.warm_up:
                first = soak.figures()
                print("descriptors, threads, blocks, resident bytes, files:", first, "after", soak.number, flush=True)
        last = soak.figures()
        print("descriptors, threads, blocks, resident bytes, files:", last, "after", soak.number, "calls in",
              round(time.monotonic() - begin), "s,", soak.failures, "failed")
        grown = [last[0] > first[0] + 1, last[1] > first[1], last[3] > first[3] + MEMORY, last[4] > first[4] + 6]
        return 1 if any(grown) or soak.failures or soak.agent.end() != 0 else 0


if __name__ == "__main__":
    sys.exit(main())

"""Refuses calls of an agent that serves, and goes on: an answer for every request, and nothing left behind."""

import json
import os
import queue
import subprocess
import tempfile
import threading
import time

from board import Board
from scenarios import served_rows

ANSWER_LIMIT = 30  # seconds
WITHOUT_MEMORY = 0.5  # seconds after which calls are let through again when there was no answer
WARM_UP = 12  # calls until what is made once is made
LEFT_BEHIND = 60  # blocks that caches may hold more
DRAIN = 1  # descriptor that the drain of pipes makes when it is needed first, and keeps


class Broken(Exception):
    """Nothing is refused, and yet a call fails."""


class Agent:
    """One serving agent with its board."""

    def __init__(self, options, folder, extra):
        self.board = Board(os.path.join(folder, "board"))
        self.errors = open(os.path.join(folder, "errors"), "wb")
        self.system = options.system
        command = [*self.system.agent, "serve", "--data", self.system.path(folder), *extra]
        self.process = subprocess.Popen(command, env=self.system.environment(self.board), stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=self.errors)
        self.lines = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.put(line)
        self.lines.put(None)

    def ask(self, request):
        """Says nothing of an agent that has ended: there will be no answer."""
        try:
            self._say(request)
        except OSError:
            pass

    def _say(self, request):
        self.process.stdin.write((json.dumps(request) + "\n").encode())
        self.process.stdin.flush()

    def answer(self, limit=ANSWER_LIMIT):
        """Returns the answer; None when there is none in time, and False when the agent has ended."""
        try:
            line = self.lines.get(timeout=limit)
        except queue.Empty:
            return None
        return False if line is None else json.loads(line)

    def call(self, request):
        self.ask(request)
        return self.answer()

    def figures(self):
        """Descriptors, threads, and blocks of memory, once they do not change any more."""
        before = None
        for _ in range(100):
            now = *self.system.held(self.process, self.board), self.board.live
            if now == before:
                break
            before = now
            time.sleep(0.02)
        return now

    def said_why(self, code):
        """A client that the agent cannot read from, or answer, is the end of one that serves nobody else."""
        with open(self.errors.name, "rb") as errors:
            text = errors.read()
        return (code == 0 and b"Standard input" in text) or (code == 1 and b"Standard output" in text)

    def end(self):
        """Returns the code of its end; None when it had to be killed."""
        try:
            self.process.stdin.close()
            self.process.wait(ANSWER_LIMIT)
        except (OSError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
            return None
        finally:
            self.errors.close()
            self.board.close()
        return self.process.returncode


class Torture:
    """One method, one kind of calls, once or from one on."""

    def __init__(self, options, scenario, folder):
        self.options, self.scenario, self.folder = options, scenario, folder
        self.number, self.acknowledged, self.expected = 0, [], None
        if scenario.prepare:
            scenario.prepare(folder)
        self.start()

    def start(self):
        extra = self.scenario.extra(self.folder, self.options.system)
        self.agent = Agent(self.options, self.folder, extra)
        for _ in range(WARM_UP):
            answer = self.clean_call()
        self.expected = json.dumps(answer["table"])
        first = self.agent.figures()
        for _ in range(WARM_UP):
            self.clean_call()
        self.before, self.counted = self.agent.figures(), self.number
        # A channel of the event log grows by what is logged to it.
        self.growth = max(0, self.before[2] - first[2]) / WARM_UP

    def request(self):
        self.number += 1
        return self.scenario.request(self.folder, self.options.system, self.number)

    def clean_call(self):
        request = self.request()
        answer = self.agent.call(request)
        if not answer or answer["code"] != 0:
            raise Broken(f"{self.scenario.name} fails when nothing is refused: {answer}")
        self.note(request, answer)
        return answer

    def note(self, request, answer):
        if answer and answer["code"] == 0:
            self.acknowledged.append(request["id"])

    def count(self, kind):
        """Returns how many calls of the kind one request takes."""
        self.agent.board.order(kind, 1 << 60, False)  # a call that is never reached
        self.clean_call()
        return self.agent.board.made(kind)

    def run(self, kind, call, for_ever, shows=False):
        request = self.request()
        board = self.agent.board
        board.order(kind, call, for_ever, shows)
        self.agent.ask(request)
        answer = self.agent.answer(WITHOUT_MEMORY if for_ever else ANSWER_LIMIT)
        board.lift()
        if answer is None and for_ever:  # it need not be able to answer before
            answer = self.agent.answer()
        self.note(request, answer)
        return request, answer

    def judge(self, request, answer):
        if answer is None:
            return "hang", "no answer"
        if answer is False:
            code = self.agent.process.wait()
            return None if self.agent.said_why(code) else ("crash", f"the agent has ended with {code}")
        if answer["id"] != request["id"]:
            return "wrong", f"answered {answer} to {request}"
        if answer["code"] != 0 and not answer["message"]:
            return "unclear", str(answer)
        if answer["code"] == 0 and not self.scenario.agrees(json.dumps(answer["table"]), self.expected):
            return "wrong", str(answer)[:400]
        return None

    def has_left(self):
        """The refused read may be that of the next request, which comes after the answer."""
        try:
            return self.agent.said_why(self.agent.process.wait(ANSWER_LIMIT))
        except subprocess.TimeoutExpired:
            return False

    def restart(self):
        self.agent.process.kill()
        self.agent.end()
        self.start()

    def left_behind(self):
        for _ in range(WARM_UP):
            self.clean_call()
        after = self.agent.figures()
        names = ("descriptors", "threads", "blocks of memory")
        allowed = (DRAIN, self.options.system.pool, LEFT_BEHIND + self.growth * (self.number - self.counted))
        return [f"{name}: {now} instead of {then}" for name, then, now, more in
                zip(names, self.before, after, allowed) if now > then + more]


def torture_kind(torture, kind, calls, for_ever, report):
    name = torture.scenario.name
    for call in calls:
        request, answer = torture.run(kind, call, for_ever)
        fault = torture.judge(request, answer)
        report(name, kind, for_ever, call, fault, bool(answer) and answer["code"] == 0)
        if not answer:
            torture.restart()
    try:
        left = torture.left_behind()
    except Broken as error:
        left = [] if torture.has_left() else [str(error)]
        if not left:
            torture.restart()
    if left:
        report(name, kind, for_ever, calls, ("leak", ", ".join(left)), False)
        torture.restart()


def torture_served(options, scenario, sample, report, order):
    with tempfile.TemporaryDirectory(prefix="torture-") as folder:
        torture = Torture(options, scenario, folder)
        for kind in order.kinds:
            count = torture.count(kind)
            for for_ever in (False, True):
                calls = sample(count, options, f"served {scenario.name} {kind} {for_ever}")
                if calls:
                    torture_kind(torture, kind, calls, for_ever, report)
            if count > 0 and order.is_over():
                break
        if torture.agent.end() != 0:
            report(scenario.name, "memory", False, 0, ("hang", "does not end"), False)
        if scenario.name.endswith("served"):
            faults = served_rows(folder, torture.acknowledged)
            if faults:
                report(scenario.name, "write", False, 0, ("loss", "; ".join(faults)), False)


def show_served(options, scenario, folder, order):
    """Runs one call alone and shows where it was refused."""
    torture = Torture(options, scenario, folder)
    request, answer = torture.run(*order, shows=True)
    print(answer, torture.judge(request, answer))
    with open(torture.agent.errors.name, encoding="utf-8", errors="replace") as errors:
        print(options.system.places(errors.read()))
    torture.agent.end()

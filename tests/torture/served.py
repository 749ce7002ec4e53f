"""Refuses calls of an agent that serves, and goes on: an answer for every request, and nothing left behind."""

import json
import os
import queue
import subprocess
import sys
import tempfile
import threading
import time

from board import ANY, Board, Call
from scenarios import served_rows

ANSWER_LIMIT = 30  # seconds
WITHOUT = 0.1  # seconds, and three times what a call takes, after which calls are let through when there is no answer
SAYS_WITHIN = 5  # seconds after which nothing is expected to be said any more
ENDS_WITHIN = 10  # seconds for what goes on in the background
WARM_UP = 12  # calls until what is made once is made
LEFT_BEHIND = 60  # blocks that caches may hold more


class Broken(RuntimeError):
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
        self.seen = 0
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

    def figures(self, most=None):
        """Descriptors, threads, and blocks of memory, once they do not change any more. Threads beyond the most
        that there should be are given time to end: what they do in the background may just be ending."""
        before, end = None, time.monotonic() + ENDS_WITHIN
        while time.monotonic() < end:
            now = *self.system.held(self.process, self.board), self.board.live
            if now == before and (most is None or now[1] <= most):
                break
            before = now
            time.sleep(0.02)
        return now

    def threads(self):
        return self.system.threads(self.process)

    def listen(self):
        """From here on said() tells."""
        self.seen = os.path.getsize(self.errors.name)

    def said(self):
        """Returns what the agent has said on standard error; it may come later than the end of a connection."""
        end = time.monotonic() + SAYS_WITHIN
        with open(self.errors.name, encoding="utf-8", errors="replace") as errors:
            errors.seek(self.seen)
            text = errors.read()
            while not text.endswith("\n") and time.monotonic() < end:
                time.sleep(0.01)
                text += errors.read()
        return text.strip()

    def said_why(self, code):
        """A client that the agent cannot read from, or answer, is the end of one that serves nobody else."""
        with open(self.errors.name, "rb") as errors:
            text = errors.read()
        return code == 1 and (b"Standard input" in text or b"Standard output" in text)

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


class ListeningAgent(Agent):
    """Serves at a Unix socket or a named pipe; each request has a connection of its own."""

    def __init__(self, options, folder, extra):
        super().__init__(options, folder, ["--listen", options.system.address(folder), *extra])
        self.client, self.request = options.system.client(folder), None

    def ask(self, request):
        self.request = request
        self.listen()

    def answer(self, limit=ANSWER_LIMIT):
        """A connection that is closed is a failure, whose message is what the agent says about it."""
        bytes_read = self.client.exchange(self.request, self.process, limit)
        if bytes_read:
            return json.loads(bytes_read)
        if bytes_read is None or self.process.poll() is not None:
            return None if self.process.poll() is None else False
        self.board.lift()  # to say why may take what is refused
        return {"id": self.request["id"], "code": 3, "message": self.said()}

    def end(self):
        self.client.close()
        self.system.end(self.process, self.board)
        return super().end()


class Torture:
    """One method, one kind of calls, once or from one on."""

    def __init__(self, options, scenario, folder):
        self.options, self.scenario, self.folder = options, scenario, folder
        self.number, self.acknowledged, self.expected = 0, [], None
        if scenario.prepare:
            scenario.prepare(folder)
        self.start()

    def start(self):
        kind = ListeningAgent if self.scenario.connects else Agent
        self.agent = kind(self.options, self.folder, self.scenario.extra(self.folder, self.options.system))
        for _ in range(WARM_UP):
            begin = time.monotonic()
            answer = self.clean_call()
        self.patience = WITHOUT + 3 * (time.monotonic() - begin)
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

    def places(self, kind):
        """Returns where the calls of the kind are made that one request takes; 0 when nobody asks for it."""
        self.agent.board.order(kind, Call(ANY), notes=self.options.all)
        self.clean_call()
        return self.agent.board.places(kind)

    def run(self, kind, call, for_ever, shows=False):
        request = self.request()
        board = self.agent.board
        board.order(kind, call, for_ever, shows)
        self.agent.ask(request)
        answer = self.agent.answer(self.patience if for_ever else ANSWER_LIMIT)
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
        handles, threads = self.options.system.spare
        after = self.agent.figures(self.before[1] + threads)
        names = ("descriptors", "threads", "blocks of memory")
        allowed = (handles, threads, LEFT_BEHIND + self.growth * (self.number - self.counted))
        left = [f"{name}: {now} instead of {then}" for name, then, now, more in
                zip(names, self.before, after, allowed) if now > then + more]
        return left + self.agent.threads() if after[1] > self.before[1] + threads else left


def torture_kind(torture, kind, calls, for_ever, report, order):
    name = torture.scenario.name
    for call in order.in_time(calls):
        request, answer = torture.run(kind, call, for_ever)
        fault = torture.judge(request, answer)
        if torture.agent.board.refused == 0 and answer and not fault:
            report.miss(kind)
            continue
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
        report(name, kind, for_ever, calls[-1], ("leak", ", ".join(left)), False)
        torture.restart()


def torture_served(options, scenario, choose, report, order):
    begin = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="torture-") as folder:
        torture = Torture(options, scenario, folder)
        for kind in order.kinds:
            places = torture.places(kind)
            for for_ever in (False, True):
                known = report.known["served", kind, for_ever]
                calls = choose(places, options, f"served {scenario.name} {kind} {for_ever}", known)
                if calls:
                    torture_kind(torture, kind, calls, for_ever, report, order)
            if places and order.is_over():
                break
        if torture.agent.end() != 0:
            report(scenario.name, "memory", False, Call(0), ("hang", "does not end"), False)
        print(f"{scenario.name}, served: {time.monotonic() - begin:.0f} s", file=sys.stderr, flush=True)
        if scenario.name.endswith("served"):
            faults = served_rows(folder, torture.acknowledged)
            if faults:
                report(scenario.name, "write", False, Call(0), ("loss", "; ".join(faults)), False)


def show_served(options, scenario, folder, order):
    """Runs one call alone and shows where it was refused."""
    torture = Torture(options, scenario, folder)
    request, answer = torture.run(*order, shows=True)
    print(answer, torture.judge(request, answer))
    with open(torture.agent.errors.name, encoding="utf-8", errors="replace") as errors:
        print(options.system.places(errors.read()))
    torture.agent.end()

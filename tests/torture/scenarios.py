"""What the agent is had to do while calls are refused, and what must hold afterwards."""

import hashlib
import json
import os
import sqlite3

OLD, NEW = b"old content\n", b"new content\n" * 3000
LOG_LINE = b"2026-01-01 00:00:00.000 [ 1] INFO  - an old line of the log\n"
# Codes that the agent documents for a call that fails.
CODES = {0, 1, 2, 3, 6, 7}


class Scenario:
    """One method. `fixed`: the answer of a call that succeeds is always the same. `connects`: each request has a
    connection of its own. `wine`: it can be run under Wine. `nullable`: the columns that are null, as the method
    documents, where something cannot be told."""

    def __init__(self, method, parameters="", fixed=True, options="", prepare=None, check=None, served=True,
                 connects=False, wine=True, nullable=()):
        self.name, self.parameters, self.fixed, self.options = method, parameters, fixed, options
        self.prepare, self.check, self.served, self.connects = prepare, check, served, connects
        self.wine, self.nullable = wine, nullable
        self.as_process = not method.endswith("served")

    def agrees(self, answer, expected):
        """Compares two answers in JSON."""
        if not self.fixed or answer == expected:
            return True
        answer, expected = json.loads(answer), json.loads(expected)
        for row, known in zip(answer, expected):
            for column in self.nullable:
                row[column] = known[column] if row[column] is None else row[column]
        return answer == expected

    def runs_on(self, system):
        return self.wine or system.name != "Windows"

    def extra(self, folder, system):
        return self.options.replace("{dir}", system.path(folder)).split()

    def pairs(self, folder, system):
        """The parameters; they are parted by '|'."""
        text = self.parameters.replace("{dir}", system.path(folder)).replace("{url}", system.url(folder))
        for word, meaning in system.words.items():
            text = text.replace("{" + word + "}", meaning)
        return [part.split("=", 1) for part in text.split("|") if part]

    def command(self, folder, system):
        extra = ["--data", system.path(folder), *self.extra(folder, system)]
        if self.connects:
            return ["serve", "--listen", system.address(folder), *extra]
        method = self.name.split(" ")[0]
        return ["run", method, *("=".join(pair) for pair in self.pairs(folder, system)), "--format", "json",
                *extra]

    def request(self, folder, system, number):
        pairs = self.pairs(folder, system)
        return {"id": number, "method": self.name.split(" ")[0],
                "parameters": {name: value.replace("{number}", str(number)) for name, value in pairs}}


def _write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    os.utime(path, (0, 1_700_000_000))  # the same in every run


def _read(path):
    with open(path, "rb") as file:
        return file.read()


def _texts(folder):
    _write(f"{folder}/texts/a.txt", "first\nsécond\n".encode())
    _write(f"{folder}/texts/b.txt", "first\nsécond\n".encode("utf-16"))


def _content(folder):
    _write(f"{folder}/agent.json", b'{"wayfarEnabled": true}')
    lines = []
    for name in ("one.bin", "sub\\two.bin"):
        path = name.replace("\\", "/")
        _write(f"{folder}/source/{path}", NEW)
        _write(f"{folder}/target/{path}", OLD)
        lines.append(f'"{name}" ln={len(NEW)} dt=0x1d2 CRC={hashlib.sha256(NEW).hexdigest()}\n')
    _write(f"{folder}/list.lst", ("".join(lines) + "; List Complete - 1\n").encode())


def _is_whole(folder, code):
    """A file is its old self or its new one, and the new one when the call said so."""
    faults = []
    for name in ("one.bin", "sub/two.bin"):
        content = _read(f"{folder}/target/{name}")
        if content != NEW and (content != OLD or code == 0):
            faults.append(f"{name} has {len(content)} bytes after code {code}")
    return faults


def _rows(folder, table):
    path = f"{folder}/Stores"
    if not os.path.isdir(path):
        return [], "ok"
    names = [name for name in os.listdir(path) if not name.endswith(("-wal", "-shm", "-journal", ".lock"))]
    for name in names:
        with sqlite3.connect(f"{path}/{name}", timeout=30) as database:
            if database.execute("SELECT 1 FROM sqlite_master WHERE name = ?", (table,)).fetchone():
                fault = database.execute("PRAGMA integrity_check").fetchone()[0]
                return [row[0] for row in database.execute(f'SELECT Output FROM "{table}"')], fault
    return [], "ok"


def _is_saved(folder, code):
    """The rows of the call are there as a whole or not at all, and there when the call said so."""
    rows, fault = _rows(folder, "kept")
    if fault != "ok":
        return [f"the database is damaged: {fault}"]
    if rows not in ([], ["one", "two"]) or (code == 0 and not rows):
        return [f"after code {code} the table holds {rows}"]
    return []


def _full_log(folder):
    _write(f"{folder}/agent.log", LOG_LINE * (5_300_000 // len(LOG_LINE)))


def _is_log_kept(folder, _code):
    """The lines of before are in the log or in its backups."""
    kept = sum(_read(f"{folder}/{name}").count(LOG_LINE) for name in os.listdir(folder)
               if name.startswith("agent.log"))
    expected = 5_300_000 // len(LOG_LINE)
    return [] if kept == expected else [f"{expected - kept} of {expected} lines of the log are gone"]


def _certificate(folder):
    source = os.path.join(os.path.dirname(__file__), "../../fuzz/corpus/Certificate/leaf.pem")
    _write(f"{folder}/certificates/leaf.pem", _read(source))


def served_rows(folder, acknowledged):
    """Compares what a served store holds with the numbers of the calls that were answered with success."""
    rows, fault = _rows(folder, "served")
    faults = [] if fault == "ok" else [f"the database is damaged: {fault}"]
    missing = set(map(str, acknowledged)) - set(map(str, rows))
    return faults + ([f"{len(missing)} acknowledged rows are gone"] if missing else [])


def scenarios():
    return [
        Scenario("Commands.Run", "command=cmd /c echo one&& echo two|lines=true"),
        Scenario("Commands.Table", "command=cmd /c echo a 1&& echo b 2|columns=NAME NUMBER:integer"),
        Scenario("Store.Save", "database=torture|table=kept|command=cmd /c echo one&& echo two", check=_is_saved,
                 served=False),
        Scenario("Store.Save served", "database=torture|table=served|command=cmd /c echo {number}", fixed=False),
        Scenario("Store.List", fixed=False),
        Scenario("Wmi.Query", "wql=SELECT Name, ProcessId FROM Win32_Process WHERE {process}"),
        Scenario("Wmi.Invoke", "wql=SELECT * FROM Win32_Process WHERE {process}|method=GetOwner"),
        Scenario("Content.Download", "listUrl={url}/list.lst|folderUrl={url}/source|folder={dir}/target",
                 options="--config {dir}/agent.json", prepare=_content, check=_is_whole),
        Scenario("Content.ReadList", "path={dir}/list.lst", prepare=_content),
        Scenario("Files.Find", "path={dir}/texts/*.txt", prepare=_texts, nullable=("Size", "Modified")),
        Scenario("Files.Encoding", "path={dir}/texts/*.txt", prepare=_texts, fixed=False),
        Scenario("Files.Read", "path={dir}/texts/b.txt|lines=true", prepare=_texts),
        Scenario("Certificates.List", "folder={dir}/certificates", prepare=_certificate, fixed=False),
        Scenario("Network.Resolve", "host=localhost|timeout=5"),
        Scenario("Network.Adapters"),
        Scenario("Network.InRange", "address=10.0.0.5|ranges=10.0.0.1-10.0.0.9,fe80::/10"),
        Scenario("Processes.List", "{pid}", fixed=False),
        Scenario("EventLog.Query", "channel=Quillon|max=10", fixed=False, wine=False),
        Scenario("EventLog.Follow", "channel=Quillon|seconds=0", fixed=False, wine=False),
        Scenario("Audit.Hold", "subcategory=0cce922b-69ae-11d9-bed3-505054503030|seconds=0", wine=False),
        Scenario("System.Info", fixed=False),
        Scenario("System.Metrics", fixed=False),
        Scenario("Network.Resolve over connections", "host=localhost|timeout=5", connects=True),
        Scenario("Commands.Run with a log", "command=cmd /c echo one", options="--log {dir}/agent.log --level trace",
                 prepare=_full_log, check=_is_log_kept, served=False, fixed=False),
        Scenario("Commands.Run with JSON log", "command=cmd /c echo one", prepare=_full_log, check=_is_log_kept,
                 options="--log {dir}/agent.log --log-format json --level trace", served=False, fixed=False),
    ]

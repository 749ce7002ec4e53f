"""How the agent is started with its calls refused: natively on Linux, or with the launcher of Windows."""

import os
import shutil
import subprocess

from clients import PipeClient, SocketClient


class Native:
    """The library stands in front of the C library's (Refusal.cpp)."""

    name = "Linux"
    start_limit = 1  # seconds after which calls are let through again when an agent does not answer after its start
    spare = 0, 0  # handles and threads that the system keeps for the process as long as it likes
    words = {"process": "ProcessId = 1", "pid": "pid=1"}

    def __init__(self, options):
        self.agent = [options.agent]
        self.refusal = os.path.abspath(options.refusal)

    def environment(self, board):
        return {**os.environ, "TZ": "UTC", "LD_PRELOAD": self.refusal, "REFUSE_FILE": self.path(board.path)}

    def path(self, path):
        return path

    def url(self, path):
        return "file://" + path

    def address(self, folder):
        """Returns where the agent serves."""
        return f"{folder}/socket"

    def client(self, folder):
        return SocketClient(self.address(folder))

    def end(self, process, _board):
        process.terminate()

    def has_crashed(self, code):
        return code < 0

    def places(self, text):
        return text

    def held(self, process, _board):
        place = f"/proc/{process.pid}"
        return len(os.listdir(f"{place}/fd")), len(os.listdir(f"{place}/task"))

    def threads(self, process):
        """Returns the names of its threads, each with what it waits for."""
        texts = []
        for thread in sorted(os.listdir(f"/proc/{process.pid}/task"), key=int):
            place = f"/proc/{process.pid}/task/{thread}"
            with open(f"{place}/comm", encoding="utf-8") as comm, open(f"{place}/wchan", encoding="ascii") as wchan:
                texts.append(f"{comm.read().strip()} ({wchan.read()})")
        return texts


class Windows(Native):
    """The launcher (win32/Launcher.cpp) has the agent load the library, and says what the agent holds."""

    name = "Windows"
    start_limit = 5
    spare = 6, 2
    words = {"process": "Name = 'services.exe'", "pid": ""}
    CRASHED, NOT_STARTED = 100, 101

    def __init__(self, options):
        *emulator, launcher = options.launcher.split()
        self.agent = [*emulator, launcher, self.path(os.path.abspath(options.agent))]
        self.asks = [*emulator, os.path.join(os.path.dirname(launcher), "quillon_pipe_client.exe")]

    def environment(self, board):
        return {**os.environ, "TZ": "UTC", "REFUSE_FILE": self.path(board.path)}

    def path(self, path):
        return path if os.name == "nt" else "Z:" + path.replace("/", "\\")

    def url(self, path):
        return "file:///" + self.path(path).replace("\\", "/")

    def address(self, folder):
        return "\\\\.\\pipe\\" + folder.strip("/").replace("/", "-")

    def client(self, folder):
        return PipeClient([*self.asks, self.address(folder)])

    def end(self, _process, board):
        board.end()

    def has_crashed(self, code):
        if code == self.NOT_STARTED:
            raise RuntimeError("the launcher cannot start the agent")
        return code == self.CRASHED

    def places(self, text):
        """Puts the functions in the place of the addresses."""
        addr2line = shutil.which("x86_64-w64-mingw32-addr2line")
        lines = []
        for line in text.splitlines():
            words = line.split()
            if addr2line and len(words) == 3 and words[0] == "at" and words[1].startswith("Z:"):
                module = words[1][2:].replace("\\", "/")
                line = subprocess.run([addr2line, "-Cfpe", module, words[2]], capture_output=True, text=True,
                                      check=False).stdout.strip()
            lines.append(line)
        return "\n".join(lines)

    def held(self, _process, board):
        return board.held()

    def threads(self, _process):
        """Nobody outside Wine can name them."""
        return []


def system(options):
    return Windows(options) if options.launcher else Native(options)

"""Asks an agent that serves at a Unix socket or a named pipe."""

import json
import os
import queue
import socket
import subprocess
import threading
import time


class SocketClient:
    """Each request has a connection of its own."""

    def __init__(self, path):
        self.path = path

    def exchange(self, request, process, limit):
        """Returns the answer, b"" when the agent closes the connection or has ended, and None when there is none in
        time."""
        end = time.monotonic() + limit
        while process.poll() is None and time.monotonic() < end:
            with socket.socket(socket.AF_UNIX) as client:
                client.settimeout(max(end - time.monotonic(), 0.01))
                try:
                    client.connect(self.path)
                except OSError:  # nobody listens yet
                    time.sleep(0.005)
                    continue
                return _converse(client, request)
        return None if process.poll() is None else b""

    def close(self):
        pass


class PipeClient:
    """As SocketClient. A program for Windows (win32/PipeClient.cpp) connects: no other can under Wine."""

    def __init__(self, command):
        self.command, self.program = command, None

    def _start(self):
        self.program = subprocess.Popen(self.command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.lines = queue.Queue()
        threading.Thread(target=_pass_on, args=(self.program.stdout, self.lines), daemon=True).start()

    def exchange(self, request, process, limit):
        if self.program is None:
            self._start()
        self.program.stdin.write((json.dumps(request) + "\n").encode())
        self.program.stdin.flush()
        end = time.monotonic() + limit
        while time.monotonic() < end:
            has_ended = process.poll() is not None  # asked first: the answer may have come before
            try:
                return self.lines.get(timeout=0.05).strip()
            except queue.Empty:
                if has_ended:
                    break
        self.close()  # it still waits for the agent
        return None if process.poll() is None else b""

    def close(self):
        if self.program is None:
            return
        self.program.kill()
        self.program.wait()
        self.program.stdin.close()
        self.program = None


def _pass_on(stream, lines):
    for line in stream:
        lines.put(line)
    stream.close()


def _converse(client, request):
    answer = b""
    try:
        client.sendall((json.dumps(request) + "\n").encode())
        while not answer.endswith(b"\n"):
            piece = client.recv(1 << 16)
            if not piece:
                return b""
            answer += piece
    except TimeoutError:
        return None
    except OSError:
        return b""
    return answer


def run_server(options, scenario, folder, board, limit):
    """Returns the code of the agent's end, its answer and its errors; None when it does not end."""
    system = options.system
    client, request = system.client(folder), scenario.request(folder, system, 1)
    with open(os.path.join(folder, "errors"), "w+b") as errors:
        process = subprocess.Popen([*system.agent, *scenario.command(folder, system)], stdin=subprocess.DEVNULL,
                                   env=system.environment(board), stdout=subprocess.DEVNULL, stderr=errors)
        try:
            answer = client.exchange(request, process, system.start_limit)
            board.lift()
            if answer is None:
                answer = client.exchange(request, process, limit)
            if process.poll() is None:
                system.end(process, board)
            process.wait(limit)
        except subprocess.TimeoutExpired:
            return None
        finally:
            client.close()
            process.kill()
            process.wait()
        errors.seek(0)
        return None if answer is None else (process.returncode, answer, errors.read())

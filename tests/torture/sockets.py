"""Asks an agent that serves at a Unix socket."""

import json
import os
import socket
import subprocess
import time

WITHOUT = 1  # seconds after which calls are let through again when there was no answer


def exchange(path, request, process, limit):
    """Returns the answer, b"" when the agent closes the connection or has ended, and None when there is none in time."""
    end = time.monotonic() + limit
    while process.poll() is None and time.monotonic() < end:
        with socket.socket(socket.AF_UNIX) as client:
            client.settimeout(max(end - time.monotonic(), 0.01))
            try:
                client.connect(path)
            except OSError:  # nobody listens yet
                time.sleep(0.005)
                continue
            return _converse(client, request)
    return None if process.poll() is None else b""


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
    path, request = os.path.join(folder, "socket"), scenario.request(folder, system, 1)
    with open(os.path.join(folder, "errors"), "w+b") as errors:
        process = subprocess.Popen([*system.agent, *scenario.command(folder, system)], stdin=subprocess.DEVNULL,
                                   env=system.environment(board), stdout=subprocess.DEVNULL, stderr=errors)
        try:
            answer = exchange(path, request, process, WITHOUT)
            board.lift()
            if answer is None:
                answer = exchange(path, request, process, limit)
            if process.poll() is None:
                process.terminate()
            process.wait(limit)
        except subprocess.TimeoutExpired:
            return None
        finally:
            process.kill()
            process.wait()
        errors.seek(0)
        return None if answer is None else (process.returncode, answer, errors.read())

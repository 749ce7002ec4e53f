"""The orders and counts that lie between the driver and a process whose calls are refused (Board.h)."""

import collections
import mmap
import struct
import time

KINDS = ["memory", "open", "read", "write", "rename", "fsync", "mkdir", "spawn", "thread", "socket", "look-up later",
         "look-up memory", "look-up system", "clock"]
(_REFUSED, _LIVE, _LIVE_BYTES, _KIND, _CALL, _PLACE, _FOR_EVER, _SHOWS, _NOTES, _AHEAD, _HANDLES, _THREADS, _ASKED,
 _ANSWERED, _ENDS, _PLACES) = range(len(KINDS), len(KINDS) + 16)
MOST_PLACES = 1 << 16
SIZE = 8 * (_PLACES + MOST_PLACES)
ANY = 1 << 60  # a call that no run reaches
Call = collections.namedtuple("Call", "number place", defaults=[0])


class Board:
    def __init__(self, path):
        self.path = path
        with open(path, "wb") as file:
            file.write(bytes(SIZE))
        with open(path, "r+b") as file:
            self._map = mmap.mmap(file.fileno(), SIZE)

    def _get(self, index):
        return struct.unpack_from("<q", self._map, 8 * index)[0]

    def _set(self, index, value):
        struct.pack_into("<q", self._map, 8 * index, value)

    def order(self, kind, call, for_ever=False, shows=False, notes=False):
        """Counts anew, and has calls of the kind refused from now on."""
        self.lift()
        for index in range(len(KINDS)):
            self._set(index, 0)
        for index in (_REFUSED, _ENDS):  # a process that has ended by itself was not asked any more
            self._set(index, 0)
        self._set(_KIND, KINDS.index(kind))
        self._set(_FOR_EVER, int(for_ever))
        self._set(_SHOWS, int(shows))
        self._set(_NOTES, int(notes))
        self._set(_PLACE, call.place)
        self._set(_CALL, call.number)

    def lift(self):
        self._set(_CALL, 0)

    def put_ahead(self, seconds):
        """Has the process's clock of the day go ahead."""
        self._set(_AHEAD, int(seconds))

    def made(self, kind):
        return self._get(KINDS.index(kind))

    def places(self, kind):
        """Returns what tells the call stacks of the calls apart, when they were noted."""
        return [self._get(_PLACES + index) for index in range(min(self.made(kind), MOST_PLACES))]

    @property
    def refused(self):
        return self._get(_REFUSED)

    @property
    def live(self):
        return self._get(_LIVE)

    @property
    def live_bytes(self):
        return self._get(_LIVE_BYTES)

    def held(self):
        """Asks the launcher for the numbers of handles and threads."""
        question = self._get(_ASKED) + 1
        self._set(_ASKED, question)
        for _ in range(500):
            if self._get(_ANSWERED) == question:
                break
            time.sleep(0.02)
        return self._get(_HANDLES), self._get(_THREADS)

    def end(self):
        """Has the launcher ask the process to end."""
        self._set(_ENDS, 1)

    def close(self):
        self._map.close()

"""A print scheduler at a distance, or one that misbehaves: a proxy in front of a real one's socket."""

import contextlib
import queue
import socket
import threading
import time
from pathlib import Path

REFUSAL = (b"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\n"
           b"Content-Length: 0\r\nConnection: close\r\n\r\n")
# The beginnings of requests: version 2.0 and the operation (RFC 8010, section 3.1.1), or a file.
PRINT_JOB, GET_JOBS, A_PPD = b"\x02\x00\x00\x02\x00", b"\x02\x00\x00\x0a\x00", b"GET /printers/"
# What the module asks of a queue, and GTK, whose own print back end waits for slow answers, does not.
A_QUEUE = b"printer-make-and-model"
ANYTHING = (A_QUEUE, GET_JOBS, PRINT_JOB, A_PPD)


class FarScheduler:
    """Listens on `port`. Bytes take `delay` seconds each way.

    Once the file `trigger` is there, a connection changes by the requests that go by on it: with one of `frozen`
    it stands still, with one of `refused` a password is wanted, and with one of `slowed` its answers arrive at a
    byte a second from there on.
    """

    def __init__(self, path, trigger, delay=0.0, slowed=(), frozen=(), refused=()):
        self.path, self.trigger, self.delay = path, Path(trigger), delay
        self.slowed, self.frozen, self.refused = slowed, frozen, refused
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.serve, daemon=True).start()

    def close(self):
        self.listener.close()

    def serve(self):
        while True:
            try:
                client = self.listener.accept()[0]
            except OSError:
                return
            server = socket.socket(socket.AF_UNIX)
            server.connect(self.path)
            state = {"frozen": False, "slowed": False}
            for source, target, is_answer in ((client, server, False), (server, client, True)):
                line = queue.SimpleQueue()
                threading.Thread(target=self.read, args=(source, line, is_answer, state, client), daemon=True).start()
                threading.Thread(target=self.write, args=(target, line, is_answer, state), daemon=True).start()

    def read(self, source, line, is_answer, state, client):
        while True:
            try:
                data = source.recv(65536)
            except OSError:
                data = b""
            if data and not is_answer and self.trigger.exists():
                state["frozen"] |= any(request in data for request in self.frozen)
                state["slowed"] |= any(request in data for request in self.slowed)
                if any(request in data for request in self.refused):
                    with contextlib.suppress(OSError):  # the client may have gone
                        client.sendall(REFUSAL)
                        client.shutdown(socket.SHUT_RDWR)
                    data = b""
            line.put((time.monotonic() + self.delay, data))
            if not data:
                return

    def write(self, target, line, is_answer, state):
        while True:
            due, data = line.get()
            time.sleep(max(0.0, due - time.monotonic()))
            if state["frozen"]:
                return
            try:
                if not data:
                    target.shutdown(socket.SHUT_WR)
                    return
                if not (is_answer and state["slowed"]):
                    target.sendall(data)
                    continue
                for byte in data:
                    target.sendall(bytes([byte]))
                    time.sleep(1)
            except OSError:
                return

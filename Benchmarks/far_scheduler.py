"""A print scheduler at a distance, or one that misbehaves: a proxy in front of a real one's socket."""

import queue
import socket
import threading
import time
from pathlib import Path

REFUSAL = (b"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\n"
           b"Content-Length: 0\r\nConnection: close\r\n\r\n")
# The beginnings of requests: version 2.0 and the operation (RFC 8010, section 3.1.1), or a file.
PRINT_JOB, GET_JOBS, A_PPD = b"\x02\x00\x00\x02\x00", b"\x02\x00\x00\x0a\x00", b"GET /printers/"
ANY = b""


class FarScheduler:
    """Listens on `port`. Bytes take `delay` seconds each way.

    Once the file `trigger` is there: a connection on which one of the beginnings in `frozen` goes by stands
    still, one with a beginning in `refused` is asked for a password, and answers arrive at `rate` bytes a second.
    """

    def __init__(self, path, trigger, delay=0.0, rate=None, frozen=(), refused=()):
        self.path, self.trigger, self.delay, self.rate = path, Path(trigger), delay, rate
        self.frozen, self.refused = frozen, refused
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
            frozen = threading.Event()
            for source, target, is_answer in ((client, server, False), (server, client, True)):
                line = queue.SimpleQueue()
                threading.Thread(target=self.read, args=(source, line, is_answer, frozen, client), daemon=True).start()
                threading.Thread(target=self.write, args=(target, line, is_answer, frozen), daemon=True).start()

    def read(self, source, line, is_answer, frozen, client):
        while True:
            try:
                data = source.recv(65536)
            except OSError:
                data = b""
            if data and not is_answer and self.trigger.exists():
                if any(beginning in data for beginning in self.frozen):
                    frozen.set()
                if any(beginning in data for beginning in self.refused):
                    client.sendall(REFUSAL)
                    client.shutdown(socket.SHUT_RDWR)
                    data = b""
            line.put((time.monotonic() + self.delay, data))
            if not data:
                return

    def write(self, target, line, is_answer, frozen):
        while True:
            due, data = line.get()
            time.sleep(max(0.0, due - time.monotonic()))
            if frozen.is_set():
                return
            try:
                if not data:
                    target.shutdown(socket.SHUT_WR)
                    return
                if not (is_answer and self.rate and self.trigger.exists()):
                    target.sendall(data)
                    continue
                for byte in data:
                    target.sendall(bytes([byte]))
                    time.sleep(1 / self.rate)
            except OSError:
                return

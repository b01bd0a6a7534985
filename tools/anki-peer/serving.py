"""How the local servers here run the way the tests and benchmarks drive them:
each prints "listening on HOST:PORT" once ready and serves until SIGTERM,
SIGINT or the end of standard input (the parent went away).

OneAtATimeServer serves HTTP the way the AnkiConnect add-on does inside
Anki: one thread that looks at its sockets on a 25 ms timer (so every
request waits for the next tick, as with the add-on); a request runs only
once all of it has arrived, runs to its end while every other client waits,
gets its whole reply, and then its connection is closed.
"""

import os
import selectors
import signal
import socket
import threading
import time

TICK = 0.025  # seconds between two looks at the sockets
CLIENT_TIMEOUT = 10.0  # seconds a client has to send its whole request
MAX_HEAD = 64 * 1024  # request line and headers; more is not a client of ours
SEND_TIMEOUT = 10.0  # seconds to hand a reply to a client that reads slowly


def stop_signal():
    """An event set on SIGTERM, SIGINT or when standard input ends."""
    stop = threading.Event()
    for sig in (signal.SIGTERM, signal.SIGINT):
        signal.signal(sig, lambda *_: stop.set())

    def watch_stdin():
        try:
            while os.read(0, 4096):
                pass
        except OSError:
            pass
        stop.set()

    threading.Thread(target=watch_stdin, daemon=True).start()
    return stop


def announce(address):
    host, port = address[:2]
    print(f"listening on {host}:{port}", flush=True)


class Request:
    def __init__(self, method, path, headers, body):
        self.method = method
        self.path = path
        self.headers = headers  # lower-cased names
        self.body = body


class _Client:
    def __init__(self, sock, now):
        self.sock = sock
        self.since = now
        self.data = bytearray()
        self.ended = False  # the client shut its side: nothing more comes
        self.request = None
        self.broken = False

    def read(self):
        try:
            while True:
                chunk = self.sock.recv(65536)
                if not chunk:
                    self.ended = True
                    break
                self.data += chunk
        except BlockingIOError:
            pass
        except OSError:
            self.broken = True
        if self.request is None and not self.broken:
            self._parse()

    def _parse(self):
        end = self.data.find(b"\r\n\r\n")
        if end < 0:
            self.broken = len(self.data) > MAX_HEAD
            return
        lines = bytes(self.data[:end]).decode("latin-1").split("\r\n")
        parts = lines[0].split()
        if len(parts) < 2:
            self.broken = True
            return
        headers = {}
        for line in lines[1:]:
            name, colon, value = line.partition(":")
            if colon:
                headers[name.strip().lower()] = value.strip()
        try:
            length = int(headers.get("content-length") or 0)
        except ValueError:
            length = -1
        if length < 0:
            self.broken = True
            return
        start = end + 4
        if len(self.data) - start >= length:
            self.request = Request(parts[0].upper(), parts[1], headers,
                                   bytes(self.data[start:start + length]))


class OneAtATimeServer:
    """handle(request) returns (payload bytes, content type); it runs on the
    serving thread, so nothing else is served while it runs."""

    def __init__(self, host, port, handle, client_timeout=CLIENT_TIMEOUT,
                 log=None):
        self.listener = socket.create_server((host, port), backlog=128)
        self.listener.setblocking(False)
        self.server_address = self.listener.getsockname()
        self.handle = handle
        self.client_timeout = client_timeout
        self.log = log or (lambda message: None)
        self.selector = selectors.DefaultSelector()
        self.selector.register(self.listener, selectors.EVENT_READ)
        self.clients = []  # in the order they connected

    def serve(self, stop):
        # A timer like the add-on's: a tick that comes late (a long action)
        # runs at once, and the next is due a whole interval later.
        due = time.monotonic()
        while not stop.is_set():
            due += TICK
            wait = due - time.monotonic()
            if wait > 0:
                stop.wait(wait)
            else:
                due = time.monotonic()
            self.tick(self.selector.select(0))
        for client in self.clients:
            self._forget(client)
        self.clients = []

    def close(self):
        self.selector.close()
        self.listener.close()

    def tick(self, events):
        readable = {key.fileobj for key, _ in events}
        if self.listener in readable:
            self._accept()
            readable.update(c.sock for c in self.clients)
        for client in self.clients:
            if client.sock in readable:
                client.read()
        now = time.monotonic()
        for client in list(self.clients):
            if client.request is not None:
                self._serve(client)
            elif client.broken or client.ended \
                    or now - client.since > self.client_timeout:
                self.log("dropped a client whose request did not complete")
                self._drop(client)

    def _accept(self):
        while True:
            try:
                sock, _ = self.listener.accept()
            except (BlockingIOError, InterruptedError):
                return
            except OSError as e:  # e.g. out of descriptors: try next tick
                self.log(f"accept failed: {e}")
                return
            sock.setblocking(False)
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self.selector.register(sock, selectors.EVENT_READ)
            self.clients.append(_Client(sock, time.monotonic()))

    def _serve(self, client):
        self.selector.unregister(client.sock)
        try:
            payload, content_type = self.handle(client.request)
        except Exception as e:  # noqa: BLE001 - the loop must go on
            self.log(f"request failed: {e!r}")
            payload, content_type = b"", "text/plain"
        head = (f"HTTP/1.1 200 OK\r\n"
                f"Content-Type: {content_type}\r\n"
                f"Content-Length: {len(payload)}\r\n\r\n").encode()
        try:
            client.sock.settimeout(SEND_TIMEOUT)
            client.sock.sendall(head + payload)
        except OSError:
            pass  # the client gave up; the action has run all the same
        self.clients.remove(client)
        client.sock.close()

    def _drop(self, client):
        self.clients.remove(client)
        self._forget(client)

    def _forget(self, client):
        try:
            self.selector.unregister(client.sock)
        except (KeyError, ValueError):
            pass
        client.sock.close()


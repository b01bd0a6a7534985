#!/usr/bin/env python3
"""Answers in the different shapes HTTP/1.1 allows, by path, for the tests of
our HTTP client.

    http_shapes_server.py [--tls PEM]

Prints "listening on 127.0.0.1:PORT"; exits when stdin closes. With --tls it
speaks https, with the key and certificate in PEM. Paths: /length
(Content-Length), /chunked, /until-close (no length, body ends when the
connection closes), /drop-after (a kept-alive reply, then the server closes
the connection while it is idle), /fresh-only ("ok" when it is the first
request on its connection; on a reused one the server closes it unanswered),
/pair ("ok" once two /pair requests are open at the same time, so a client
keeps two connections),
/status/N, /echo (the request line and body back). Replies too large for any
client: /huge-length (a Content-Length of a terabyte, then nothing),
/endless-chunked, /endless-until-close, /endless-header-line (one header
that never ends), /endless-headers (headers that never end). Every new
connection is counted on stderr as "connections N".
"""

import sys
import threading

import socket_server

lock = threading.Lock()
connections = 0
pair = threading.Barrier(2)


def stream_forever(conn, head, piece):
    """Sends head, then piece again and again until the client hangs up."""
    try:
        conn.sendall(head)
        while True:
            conn.sendall(piece)
    except OSError:
        pass


ENDLESS = {
    "/endless-chunked": (b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
                         b"400\r\n" + b"x" * 1024 + b"\r\n"),
    "/endless-until-close": (b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n", b"x" * 65536),
    "/endless-header-line": (b"HTTP/1.1 200 OK\r\nX-Long: ", b"a" * 65536),
    "/endless-headers": (b"HTTP/1.1 200 OK\r\n", b"X-Many: a\r\n" * 1000),
}


def serve(conn):
    global connections
    with lock:
        connections += 1
        print("connections", connections, file=sys.stderr, flush=True)
    pending = b""
    served = 0
    with conn:
        while True:
            request, pending = socket_server.read_request(conn, pending)
            if request is None:
                return
            served += 1
            lines, body = request
            line = lines[0]
            method, target = line.split(" ")[:2]
            path = target.split("?")[0]
            if path == "/length":
                # A reply to HEAD has the headers only.
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n" + (b"" if method == "HEAD" else b"hello"))
            elif path == "/chunked":
                conn.sendall(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                             b"4\r\nchun\r\n3;x=1\r\nked\r\n0\r\nTrailer: t\r\n\r\n")
            elif path == "/until-close":
                conn.sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nall of it")
                return
            elif path == "/drop-after":
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")
                return
            elif path == "/fresh-only":
                if served > 1:
                    return
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")
            elif path == "/pair":
                try:
                    pair.wait(timeout=10)
                except threading.BrokenBarrierError:
                    pair.reset()
                    return
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")
            elif path == "/huge-length":
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 1000000000000\r\n\r\n")
                try:
                    conn.recv(1)  # until the client gives up
                except OSError:
                    pass
                return
            elif path in ENDLESS:
                stream_forever(conn, *ENDLESS[path])
                return
            elif path.startswith("/status/"):
                code = int(path.split("/")[2])
                conn.sendall(b"HTTP/1.1 %d X\r\nContent-Length: 4\r\n\r\npage" % code)
            elif path == "/echo":
                reply = line.encode() + b"\n" + body
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n" % len(reply) + reply)


socket_server.run(serve, sys.argv[2] if sys.argv[1:2] == ["--tls"] else None)

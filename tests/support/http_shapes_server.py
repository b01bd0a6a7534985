#!/usr/bin/env python3
"""Answers in the different shapes HTTP/1.1 allows, by path, for the tests of
our plain HTTP client. Prints "listening on 127.0.0.1:PORT"; exits when stdin
closes. Paths: /length (Content-Length), /chunked, /until-close (no length,
body ends when the connection closes), /drop-after (a kept-alive reply, then
the server closes the connection while it is idle), /status/N, /echo (the
request line and body back). Every new connection is counted on stderr as
"connections N".
"""

import sys
import threading

import socket_server

lock = threading.Lock()
connections = 0


def read_request(conn, pending):
    while b"\r\n\r\n" not in pending:
        chunk = conn.recv(65536)
        if not chunk:
            return None, b""
        pending += chunk
    head, _, rest = pending.partition(b"\r\n\r\n")
    lines = head.decode("latin-1").split("\r\n")
    length = 0
    for line in lines[1:]:
        name, _, value = line.partition(":")
        if name.strip().lower() == "content-length":
            length = int(value)
    while len(rest) < length:
        rest += conn.recv(65536)
    return (lines[0], rest[:length]), rest[length:]


def serve(conn):
    global connections
    with lock:
        connections += 1
        print("connections", connections, file=sys.stderr, flush=True)
    pending = b""
    with conn:
        while True:
            request, pending = read_request(conn, pending)
            if request is None:
                return
            line, body = request
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
            elif path.startswith("/status/"):
                code = int(path.split("/")[2])
                conn.sendall(b"HTTP/1.1 %d X\r\nContent-Length: 4\r\n\r\npage" % code)
            elif path == "/echo":
                reply = line.encode() + b"\n" + body
                conn.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n" % len(reply) + reply)


socket_server.run(serve)

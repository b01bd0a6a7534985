#!/usr/bin/env python3
"""A misbehaving HTTP server for tests of our clients' failure handling.

    fault_server.py MODE

Modes: hang (accepts, reads, never answers), garbage (answers 200 with a body
that is not JSON), slow (answers a valid AnkiConnect reply after 3 seconds),
close (closes the connection without answering),
array (answers 200 with the JSON array [1, 2]),
echo (answers {"result": {"body": the request body as JSON, "headers": {...},
"method": ..., "path": ...}, "error": null}, to check what a client sent).
Prints "listening on 127.0.0.1:PORT" when ready; exits when stdin closes.
Every request is counted and the count is printed on stderr as "requests N".
"""

import json
import sys
import threading
import time

import socket_server

mode = sys.argv[1]
lock = threading.Lock()
count = 0


def answer(conn, status, body):
    conn.sendall(b"HTTP/1.1 %d X\r\nContent-Type: application/json\r\nContent-Length: %d\r\n"
                 b"Connection: close\r\n\r\n" % (status, len(body)) + body)


def serve(conn):
    global count
    with conn:
        request, _ = socket_server.read_request(conn)
        if request is None:
            return
        request_head, body = request
        with lock:
            count += 1
            print("requests", count, file=sys.stderr, flush=True)
        if mode == "hang":
            time.sleep(3600)
        elif mode == "garbage":
            answer(conn, 200, b"<html>not json at all")
        elif mode == "slow":
            time.sleep(3)
            answer(conn, 200, b'{"result": 6, "error": null}')
        elif mode == "array":
            answer(conn, 200, b"[1, 2]")
        elif mode == "echo":
            method, path, _ = request_head[0].split(" ", 2)
            headers = dict(line.split(": ", 1) for line in request_head[1:] if ": " in line)
            try:
                parsed = json.loads(body) if body else None
            except ValueError:
                parsed = body.decode("utf-8", "replace")
            reply = {"result": {"body": parsed, "headers": headers, "method": method, "path": path}, "error": None}
            answer(conn, 200, json.dumps(reply).encode())


socket_server.run(serve)

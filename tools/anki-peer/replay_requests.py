#!/usr/bin/env python3
"""Records the AnkiConnect requests a client makes, and sends them again
from Python: the baseline of the batch benchmark (stdlib only).

    replay_requests.py record --upstream http://127.0.0.1:PORT --out FILE
        A proxy on a free loopback port. Prints "listening on HOST:PORT",
        passes every request on to the upstream server, each on a new
        connection, and appends each request body to FILE as one line of
        JSON. Like the add-on, it closes the client's connection after each
        reply. Runs until stdin closes or SIGTERM.

    replay_requests.py replay --url http://127.0.0.1:PORT --requests FILE
        Reads FILE, then sends its requests in order, each on a new
        connection (the add-on closes the connection after every reply),
        each serialised with json.dumps (compact UTF-8, the same bytes the
        client sent) and each reply parsed with json.loads, as a Python
        client would. Stops on the first reply with an error. Prints "seconds S requests N adds A" (A: addNote
        requests) and one "action NAME COUNT" line per action.
"""

import argparse
import collections
import http.client
import json
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from serving import serve_until_stopped

HEADERS = {"Content-Type": "application/json"}


def post(url, body):
    """Sends one request on a new connection; returns (status, content
    type, payload)."""
    parts = urllib.parse.urlsplit(url)
    conn = http.client.HTTPConnection(parts.hostname, parts.port or 80)
    try:
        conn.request("POST", "/", body, HEADERS)
        reply = conn.getresponse()
        return (reply.status, reply.getheader("Content-Type",
                                              "application/json"),
                reply.read())
    finally:
        conn.close()


def record(args):
    out = open(args.out, "a", encoding="utf-8")
    lock = threading.Lock()

    class Proxy(BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"
        disable_nagle_algorithm = True

        def do_POST(self):
            length = int(self.headers.get("Content-Length") or 0)
            body = self.rfile.read(length) if length else b""
            try:
                line = json.dumps(json.loads(body), ensure_ascii=False)
            except ValueError:
                line = None  # not JSON: passed on, not recorded
            if line is not None:
                with lock:
                    out.write(line + "\n")
                    out.flush()
            status, content_type, payload = post(args.upstream, body)
            self.send_response_only(status)
            self.send_header("Content-Type", content_type)
            self.send_header("Content-Length", str(len(payload)))
            self.end_headers()
            self.wfile.write(payload)
            # Closed without a "Connection: close", as the add-on does.
            self.close_connection = True

        def log_message(self, format, *args):
            pass

    server = ThreadingHTTPServer(("127.0.0.1", args.port), Proxy)
    serve_until_stopped(server)
    server.server_close()
    out.close()


def replay(args):
    with open(args.requests, encoding="utf-8") as f:
        requests = [json.loads(line) for line in f if line.strip()]
    actions = collections.Counter(r.get("action") for r in requests)
    start = time.perf_counter()
    for request in requests:
        body = json.dumps(request, ensure_ascii=False, separators=(",", ":"))
        reply = json.loads(post(args.url, body.encode())[2])
        if reply.get("error") is not None:
            sys.exit(f"{request.get('action')}: {reply['error']}")
    seconds = time.perf_counter() - start
    print(f"seconds {seconds:.3f} requests {len(requests)} "
          f"adds {actions.get('addNote', 0)}")
    for name, count in sorted(actions.items()):
        print(f"action {name} {count}")


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    sub = ap.add_subparsers(dest="command", required=True)
    rec = sub.add_parser("record")
    rec.add_argument("--upstream", required=True)
    rec.add_argument("--out", required=True)
    rec.add_argument("--port", type=int, default=0)
    rep = sub.add_parser("replay")
    rep.add_argument("--url", required=True)
    rep.add_argument("--requests", required=True)
    args = ap.parse_args()
    record(args) if args.command == "record" else replay(args)


if __name__ == "__main__":
    main()

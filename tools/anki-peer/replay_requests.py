#!/usr/bin/env python3
"""Records the AnkiConnect requests a client makes, and sends them again
from Python: the baseline of the batch benchmark (stdlib only).

    replay_requests.py record --upstream http://127.0.0.1:PORT --out FILE
        A proxy on a free loopback port. Prints "listening on HOST:PORT",
        passes every request on to the upstream server over one kept-alive
        connection per client connection, and appends each request body to
        FILE as one line of JSON. Runs until stdin closes or SIGTERM.

    replay_requests.py replay --url http://127.0.0.1:PORT --requests FILE
        Reads FILE, then sends its requests in order over one kept-alive
        connection, each serialised with json.dumps (compact UTF-8, the
        same bytes the client sent) and each reply parsed with json.loads,
        as a Python client would. Stops on the first reply
        with an error. Prints "seconds S requests N adds A" (A: addNote
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


def connect(url):
    parts = urllib.parse.urlsplit(url)
    return http.client.HTTPConnection(parts.hostname, parts.port or 80)


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
            if not hasattr(self, "upstream"):
                self.upstream = connect(args.upstream)
            self.upstream.request("POST", "/", body, HEADERS)
            reply = self.upstream.getresponse()
            payload = reply.read()
            self.send_response(reply.status)
            self.send_header("Content-Type",
                             reply.getheader("Content-Type", "application/json"))
            self.send_header("Content-Length", str(len(payload)))
            self.end_headers()
            self.wfile.write(payload)

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
    conn = connect(args.url)
    start = time.perf_counter()
    for request in requests:
        body = json.dumps(request, ensure_ascii=False, separators=(",", ":"))
        conn.request("POST", "/", body.encode(), HEADERS)
        reply = json.loads(conn.getresponse().read())
        if reply.get("error") is not None:
            sys.exit(f"{request.get('action')}: {reply['error']}")
    seconds = time.perf_counter() - start
    conn.close()
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

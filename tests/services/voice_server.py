#!/usr/bin/env python3
"""A stand-in for the online voice service, for the pronunciation tests.

    voice_server.py [DELAY_SECONDS]

GET /dictvoice?audio=WORD&type=2 answers 200 with b"ID3 fake mp3 for " + the
raw (still percent-encoded) WORD, except for the word "missing", which gets
404. Each answer waits DELAY_SECONDS (default 0), like a slow service.
Every request line is printed on stderr. Prints
"listening on 127.0.0.1:PORT" when ready; exits when stdin closes.
"""

import http.server
import sys
import threading
import time

DELAY = float(sys.argv[1]) if len(sys.argv) > 1 else 0.0


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # Headers and body leave together, as from a real service; otherwise the
    # client's delayed acknowledgement adds 40 ms to every answer.
    disable_nagle_algorithm = True

    def do_GET(self):
        print("request", self.path, file=sys.stderr, flush=True)
        path, _, query = self.path.partition("?")
        fields = dict(part.partition("=")[::2] for part in query.split("&"))
        word = fields.get("audio")
        time.sleep(DELAY)
        if path != "/dictvoice" or fields.get("type") != "2" or word is None or word == "missing":
            self.answer(404, b"not found")
        else:
            self.answer(200, b"ID3 fake mp3 for " + word.encode())

    def answer(self, status, body):
        self.send_response(status)
        self.send_header("Content-Type", "audio/mpeg")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
threading.Thread(target=server.serve_forever, daemon=True).start()
print("listening on 127.0.0.1:%d" % server.server_address[1], flush=True)
sys.stdin.read()

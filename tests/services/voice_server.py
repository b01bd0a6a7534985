#!/usr/bin/env python3
"""A stand-in for the online voice service, for the pronunciation tests.

    voice_server.py [DELAY_SECONDS]

GET /dictvoice?audio=WORD&type=2 answers 200 with b"ID3 fake mp3 for " + the
raw (still percent-encoded) WORD, except for the word "missing", which gets
404. Each answer waits DELAY_SECONDS (default 0), like a slow service.
Every request line is printed on stderr. Prints
"listening on 127.0.0.1:PORT" when ready; exits when stdin closes.
"""

import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import socket_server  # noqa: E402

DELAY = float(sys.argv[1]) if len(sys.argv) > 1 else 0.0


def answer(lines, body):
    target = lines[0].split(" ")[1]
    print("request", target, file=sys.stderr, flush=True)
    path, _, query = target.partition("?")
    fields = dict(part.partition("=")[::2] for part in query.split("&"))
    word = fields.get("audio")
    time.sleep(DELAY)
    if path != "/dictvoice" or fields.get("type") != "2" or word is None or word == "missing":
        return 404, "audio/mpeg", b"not found"
    return 200, "audio/mpeg", b"ID3 fake mp3 for " + word.encode()


socket_server.run(socket_server.each_request(answer))

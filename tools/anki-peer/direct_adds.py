#!/usr/bin/env python3
"""Baseline for the addNote benchmark: N addNote requests from Python, each
on a new connection as urllib or requests would make them against the
add-on, which closes the connection after every reply (stdlib only).
Prints "seconds S".

    direct_adds.py --url http://127.0.0.1:PORT --count N --deck D --model M
"""

import argparse
import http.client
import json
import time
import urllib.parse


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--url", required=True)
    ap.add_argument("--count", type=int, required=True)
    ap.add_argument("--deck", required=True)
    ap.add_argument("--model", required=True)
    ap.add_argument("--field", help="first field's name (asked of the "
                                    "server when not given)")
    args = ap.parse_args()

    url = urllib.parse.urlsplit(args.url)
    headers = {"Content-Type": "application/json"}

    def call(action, **params):
        conn = http.client.HTTPConnection(url.hostname, url.port or 80)
        try:
            conn.request("POST", "/", json.dumps(
                {"action": action, "version": 6, "params": params}), headers)
            reply = json.loads(conn.getresponse().read())
        finally:
            conn.close()
        if reply["error"] is not None:
            raise SystemExit(f"{action}: {reply['error']}")
        return reply["result"]

    field = args.field or call("modelFieldNames", modelName=args.model)[0]
    # Distinct first fields, and distinct from an earlier run's.
    stem = f"direct-{time.time_ns()}"
    start = time.perf_counter()
    for i in range(args.count):
        # The same shape of note as the card code sends.
        call("addNote", note={"deckName": args.deck, "modelName": args.model,
                              "fields": {field: f"{stem}-{i}"},
                              "options": {"allowDuplicate": False, "duplicateScope": "deck"},
                              "tags": ["Lexicorn"]})
    print(f"seconds {time.perf_counter() - start:.3f}")


if __name__ == "__main__":
    main()

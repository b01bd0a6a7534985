"""Runs a local HTTP server the way the tests and benchmarks drive it: it
prints "listening on HOST:PORT" once ready and serves until SIGTERM, SIGINT
or the end of standard input (the parent went away)."""

import os
import signal
import threading


def serve_until_stopped(server):
    """Serves on a background thread until told to stop, then shuts the
    server down (requests in progress finish) and returns."""
    server.daemon_threads = True
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
    threading.Thread(target=server.serve_forever, args=(0.1,),
                     daemon=True).start()
    host, port = server.server_address[:2]
    print(f"listening on {host}:{port}", flush=True)
    stop.wait()
    server.shutdown()

"""The part every raw-socket test server shares: listen on a free 127.0.0.1
port, hand each connection to serve(conn) on a thread of its own, print
"listening on 127.0.0.1:PORT" once ready, and run until stdin closes."""

import socket
import sys
import threading


def run(serve):
    server = socket.socket()
    server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    server.bind(("127.0.0.1", 0))
    server.listen(64)

    def accept_loop():
        while True:
            conn, _ = server.accept()
            threading.Thread(target=serve, args=(conn,), daemon=True).start()

    threading.Thread(target=accept_loop, daemon=True).start()
    print("listening on 127.0.0.1:%d" % server.getsockname()[1], flush=True)
    sys.stdin.read()

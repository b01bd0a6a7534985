"""The part every raw-socket test server shares: listen on a free 127.0.0.1
port, hand each connection to serve(conn) on a thread of its own, print
"listening on 127.0.0.1:PORT" once ready, and run until stdin closes.
With tls_pem (a file holding a key and its certificate) every connection is
TLS, for tests of https. read_request reads one request off a connection;
each_request makes a serve(conn) for servers that answer every request on a
kept-alive connection the same way."""

import http
import socket
import ssl
import sys
import threading


def read_request(conn, pending=b""):
    """Returns ((head lines, body), bytes read past the body), or (None, b"")
    when the connection closes before a whole head came."""
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
        chunk = conn.recv(65536)
        if not chunk:
            break
        rest += chunk
    return (lines, rest[:length]), rest[length:]


def each_request(answer):
    """A serve(conn) that calls answer(head lines, body) for each request and
    sends the (status, content type, body) it returns."""
    def serve(conn):
        pending = b""
        with conn:
            while True:
                request, pending = read_request(conn, pending)
                if request is None:
                    return
                status, content_type, body = answer(*request)
                head = "HTTP/1.1 %d %s\r\nContent-Type: %s\r\nContent-Length: %d\r\n\r\n" % (
                    status, http.HTTPStatus(status).phrase, content_type, len(body))
                conn.sendall(head.encode() + body)
    return serve


def listen(serve, tls_pem=None):
    """Serves each connection to a free 127.0.0.1 port; returns the port."""
    server = socket.socket()
    server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    server.bind(("127.0.0.1", 0))
    server.listen(64)
    context = None
    if tls_pem:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(tls_pem)

    def handle(conn):
        if context:
            try:
                conn = context.wrap_socket(conn, server_side=True)
            except (ssl.SSLError, OSError):
                conn.close()
                return
        serve(conn)

    def accept_loop():
        while True:
            conn, _ = server.accept()
            threading.Thread(target=handle, args=(conn,), daemon=True).start()

    threading.Thread(target=accept_loop, daemon=True).start()
    return server.getsockname()[1]


def run(serve, tls_pem=None):
    print("listening on 127.0.0.1:%d" % listen(serve, tls_pem), flush=True)
    sys.stdin.read()

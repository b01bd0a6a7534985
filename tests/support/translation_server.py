#!/usr/bin/env python3
"""Stand-ins for the translation services, for tests of the translator.

    translation_server.py CONFIG_JSON

CONFIG_JSON maps a service role to how it answers, e.g.

    {"google_cn": {"answer": "你好"}, "youdao": {"answer": ""},
     "eudic": {"status": 500, "body": "<!DOCTYPE html><html>...</html>"}}

Roles: google_cn, google, youdao, eudic, deepl. Every role listed gets a port
of its own. "answer" is put in that service's reply format (an empty answer
gives the service's reply with no translation in it); "body" is sent as it
stands instead; "status" is the HTTP status (200 when absent). Youdao's
answer comes in its machine translation block.

The control port, printed as "listening on 127.0.0.1:PORT" when ready, answers
GET /ports with {"ROLE": PORT, ...} and GET /requests with every request the
roles received, in order: [{"role", "method", "target", "headers": [[name,
value], ...], "body"}, ...]. Exits when stdin closes.
"""

import http.server
import json
import sys
import threading

config = json.loads(sys.argv[1])
lock = threading.Lock()
requests = []


def google_reply(answer):
    if not answer:
        return json.dumps([])
    # Segments of [translation, original, ...]; only the first is the answer,
    # so a second one is always there to be ignored.
    return json.dumps([[[answer, "source text", None, None, 10], [" 第二段", " second part", None, None, 10]],
                       None, "en", None, None, None, 0.9, [], [["en"], None, [0.9], ["en"]]], ensure_ascii=False)


def youdao_reply(answer):
    head = ('<!DOCTYPE html>\n<html xmlns="http://www.w3.org/1999/xhtml" class="ua-ch ua-ch-55 ua-wk ua-win">\n'
            '<head>\n    <meta name="robots" content="noarchive"/>\n'
            '    <title>有道词典</title>\n</head>\n<body class="t0">\n'
            '<div id="results-contents" class="results-content">\n')
    tail = '    <div id="webTrans" class="trans-wrapper trans-tab">\n    </div>\n</div>\n</body>\n</html>\n'
    if not answer:
        return head + '    <div class="error-wrapper">\n        <h4>抱歉，没有找到相关内容</h4>\n    </div>\n' + tail
    return (head + '    <div id="fanyiToggle">\n        <div class="trans-container">\n'
            '            <p>%s</p>\n'
            '            <p>以上为机器翻译结果，长、整句建议使用 <a class="viaInner" href="http://f.youdao.com?keyfrom=dict.result" '
            'target=_blank>人工翻译</a> 。</p>\n        </div>\n    </div>\n' % answer + tail)


def deepl_reply(answer):
    beams = [{"postprocessed_sentence": answer, "num_symbols": 8}] if answer else []
    return json.dumps({"jsonrpc": "2.0", "id": 1, "result": {
        "translations": [{"beams": beams, "quality": "normal"}],
        "target_lang": "ZH", "source_lang": "EN", "source_lang_is_confident": False,
        "detectedLanguages": {}}}, ensure_ascii=False)


def reply_for(role, settings):
    if "body" in settings:
        return settings["body"]
    answer = settings.get("answer", "")
    if role in ("google_cn", "google"):
        return google_reply(answer)
    if role == "youdao":
        return youdao_reply(answer)
    if role == "eudic":
        return answer
    return deepl_reply(answer)


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    role = None  # set per port

    def log_message(self, *args):
        pass

    def send_body(self, status, body, content_type):
        data = body.encode("utf-8")
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        self.wfile.write(data)

    def handle_any(self):
        length = int(self.headers.get("Content-Length") or 0)
        body = self.rfile.read(length) if length else b""
        if self.role is None:
            return self.control()
        with lock:
            requests.append({"role": self.role, "method": self.command, "target": self.path,
                             "headers": [[name, value] for name, value in self.headers.items()],
                             "body": body.decode("utf-8", "replace")})
        settings = config[self.role]
        content_type = "text/plain; charset=utf-8" if self.role == "eudic" else (
            "text/html; charset=utf-8" if self.role == "youdao" else "application/json; charset=utf-8")
        self.send_body(settings.get("status", 200), reply_for(self.role, settings), content_type)

    def control(self):
        if self.path == "/ports":
            return self.send_body(200, json.dumps(ports), "application/json")
        if self.path == "/requests":
            with lock:
                return self.send_body(200, json.dumps(requests, ensure_ascii=False), "application/json")
        self.send_body(404, "no such control path", "text/plain")

    do_GET = do_POST = do_PUT = do_HEAD = handle_any


def serve(role):
    handler = type("Handler_" + (role or "control"), (Handler,), {"role": role})
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    server.daemon_threads = True
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


ports = {role: serve(role) for role in config}
control_port = serve(None)
print("listening on 127.0.0.1:%d" % control_port, flush=True)
sys.stdin.read()

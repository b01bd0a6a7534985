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

import json
import sys
import threading

import socket_server

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


def answer_for(role):
    def answer(lines, body):
        method, target = lines[0].split(" ")[:2]
        with lock:
            headers = [[name, value.strip()] for name, _, value in (line.partition(":") for line in lines[1:])]
            requests.append({"role": role, "method": method, "target": target, "headers": headers,
                             "body": body.decode("utf-8", "replace")})
        settings = config[role]
        content_type = "text/plain; charset=utf-8" if role == "eudic" else (
            "text/html; charset=utf-8" if role == "youdao" else "application/json; charset=utf-8")
        return settings.get("status", 200), content_type, reply_for(role, settings).encode("utf-8")
    return answer


def control(lines, body):
    path = lines[0].split(" ")[1]
    if path == "/ports":
        return 200, "application/json", json.dumps(ports).encode()
    if path == "/requests":
        with lock:
            return 200, "application/json", json.dumps(requests, ensure_ascii=False).encode("utf-8")
    return 404, "text/plain", b"no such control path"


ports = {role: socket_server.listen(socket_server.each_request(answer_for(role))) for role in config}
socket_server.run(socket_server.each_request(control))

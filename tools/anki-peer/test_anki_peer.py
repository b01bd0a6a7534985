"""Tests for anki-peer. Run with the venv's python:

    /opt/lexicorn/anki-peer-venv/bin/python tools/anki-peer/test_anki_peer.py
"""

import base64
import http.client
import http.server
import json
import os
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

from anki.collection import Collection

HERE = os.path.dirname(os.path.abspath(__file__))
FIELDS = ["Expression", "Sentence", "Reading", "ExtraInfo", "Definition",
          "URL", "Definitions", "Audio"]
MODEL = "Lexicorn Word"
HANG_GUARD = 60  # seconds; only stops a hung test, never judges speed


class Peer:
    """An anki-peer subprocess on a free port with its own collection."""

    def __init__(self):
        self.dir = tempfile.TemporaryDirectory()
        self.collection = os.path.join(self.dir.name, "col")
        self.proc = subprocess.Popen(
            [sys.executable, os.path.join(HERE, "anki_peer.py"),
             "--collection", self.collection, "--port", "0"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.banner = self.proc.stdout.readline().strip()
        self.port = int(self.banner.rsplit(":", 1)[1])
        self.media = os.path.join(self.collection, "collection.media")

    def connect(self):
        return http.client.HTTPConnection("127.0.0.1", self.port,
                                          timeout=HANG_GUARD)

    def stop(self, how="stdin"):
        if how == "stdin":
            self.proc.stdin.close()
        else:
            self.proc.send_signal(how)
        code = self.proc.wait(HANG_GUARD)
        self.proc.stdout.close()
        if self.proc.stdin and not self.proc.stdin.closed:
            self.proc.stdin.close()
        return code


def post(conn, body):
    """Sends one raw body; returns the decoded JSON reply."""
    conn.request("POST", "/", body=body,
                 headers={"Content-Type": "application/json"})
    resp = conn.getresponse()
    data = resp.read()
    assert resp.status == 200, resp.status
    assert resp.getheader("Content-Type") == "application/json"
    return json.loads(data)


class PeerTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.conn = cls.peer.connect()
        cls.must("createModel", modelName=MODEL, inOrderFields=FIELDS,
                 css=".card { font-family: serif; }",
                 cardTemplates=[{"Name": "Recognise",
                                 "Front": "{{Expression}}",
                                 "Back": "{{Definition}}"}])

    @classmethod
    def tearDownClass(cls):
        cls.conn.close()
        cls.peer.stop()
        cls.peer.dir.cleanup()

    @classmethod
    def call(cls, action, **params):
        return post(cls.conn, json.dumps(
            {"action": action, "version": 6, "params": params}))

    @classmethod
    def must(cls, action, **params):
        reply = cls.call(action, **params)
        assert reply["error"] is None, (action, reply)
        return reply["result"]

    def add(self, deck, first, model=MODEL, **extra):
        note = {"deckName": deck, "modelName": model,
                "fields": {"Expression": first}, **extra}
        return self.call("addNote", note=note)

    # ------------------------------------------------------------------

    def test_simple_replies(self):
        cases = [
            ("version", '{"action": "version", "version": 6, "params": {}}',
             {"result": 6, "error": None}),
            ("params and version missing", '{"action": "version"}',
             {"result": 6, "error": None}),
            ("params null", '{"action": "version", "params": null}',
             {"result": 6, "error": None}),
            ("unknown action", '{"action": "guiBrowse", "params": {}}',
             {"result": None, "error": "unsupported action"}),
            ("attribute is no action", '{"action": "col"}',
             {"result": None, "error": "unsupported action"}),
            ("helper is no action", '{"action": "_model"}',
             {"result": None, "error": "unsupported action"}),
            ("unknown model",
             '{"action": "modelFieldNames", "params": {"modelName": "Nope"}}',
             {"result": None, "error": "model was not found: Nope"}),
            ("config of unknown deck",
             '{"action": "getDeckConfig", "params": {"deck": "Nope"}}',
             {"result": False, "error": None}),
            ("note ids of nothing",
             '{"action": "notesInfo", "params": {"notes": []}}',
             {"result": [], "error": None}),
        ]
        for name, body, want in cases:
            with self.subTest(name):
                self.assertEqual(post(self.conn, body), want)

    def test_bad_requests_get_an_error(self):
        cases = [
            ("not json", "{action: version"),
            ("json but not an object", "[1, 2]"),
            ("no action", '{"version": 6, "params": {}}'),
            ("params not an object", '{"action": "version", "params": [1]}'),
            ("unexpected param", '{"action": "version", "params": {"x": 1}}'),
            ("bad search", '{"action": "findNotes", "params": '
                           '{"query": "deck:\\"unterminated"}}'),
            ("missing note", '{"action": "updateNoteFields", "params": '
                             '{"note": {"id": 1, "fields": {}}}}'),
            ("media without content", '{"action": "storeMediaFile", '
                                      '"params": {"filename": "x.mp3"}}'),
        ]
        for name, body in cases:
            with self.subTest(name):
                reply = post(self.conn, body)
                self.assertIsNone(reply["result"])
                self.assertIsInstance(reply["error"], str)
                self.assertTrue(reply["error"])
        # The server is still fine afterwards.
        self.assertEqual(self.must("version"), 6)

    def test_missing_note_is_named(self):
        reply = self.call("updateNoteFields",
                          note={"id": 12345, "fields": {"Sentence": "x"}})
        self.assertEqual(reply["error"], "note was not found: 12345")

    def test_bare_get_and_empty_post(self):
        for method in ("GET", "POST"):
            with self.subTest(method):
                self.conn.request(method, "/")
                resp = self.conn.getresponse()
                self.assertEqual(resp.status, 200)
                self.assertIn(b"AnkiConnect", resp.read())

    def test_decks(self):
        did = self.must("createDeck", deck="Decks::Child")
        self.assertIsInstance(did, int)
        self.assertEqual(self.must("createDeck", deck="Decks::Child"), did,
                         "creating an existing deck returns its id")
        names = self.must("deckNames")
        self.assertIn("Decks", names)
        self.assertIn("Decks::Child", names)
        conf = self.must("getDeckConfig", deck="Decks::Child")
        self.assertIn("new", conf)
        self.assertIsInstance(conf["id"], int)

    def test_models(self):
        self.assertIn(MODEL, self.must("modelNames"))
        self.assertIn("Basic", self.must("modelNames"))
        self.assertEqual(self.must("modelFieldNames", modelName=MODEL),
                         FIELDS)
        self.assertEqual(self.must("modelFieldNames", modelName="Basic"),
                         ["Front", "Back"])
        again = self.call("createModel", modelName=MODEL,
                          inOrderFields=["A"],
                          cardTemplates=[{"Front": "{{A}}", "Back": "x"}])
        self.assertIsNotNone(again["error"], "names are unique")

    def test_created_model_renders_cards(self):
        model = self.must("createModel", modelName="Two Sided",
                          inOrderFields=["Word", "Meaning"],
                          cardTemplates=[
                              {"Front": "{{Word}}", "Back": "{{Meaning}}"},
                              {"Front": "{{Meaning}}", "Back": "{{Word}}"}])
        self.assertEqual(model["name"], "Two Sided")
        self.assertEqual([t["name"] for t in model["tmpls"]],
                         ["Card 1", "Card 2"])
        self.must("createDeck", deck="TwoSided")
        nid = self.must("addNote", note={
            "deckName": "TwoSided", "modelName": "Two Sided",
            "fields": {"Word": "tree", "Meaning": "树"}})
        [info] = self.must("notesInfo", notes=[nid])
        self.assertEqual(len(info["cards"]), 2)

    def test_add_note_rules(self):
        for deck in ("Add A", "Add B"):
            self.must("createDeck", deck=deck)
        in_deck = {"duplicateScope": "deck"}
        # Steps run in order: each may rely on the notes added before it.
        steps = [
            ("first add", "Add A", "apple", {}, None),
            ("same word again", "Add A", "apple", {}, "duplicate"),
            ("same word with markup", "Add A", "<b>apple</b>", {},
             "duplicate"),
            ("other deck, collection scope", "Add B", "apple", {},
             "duplicate"),
            ("other deck, deck scope", "Add B", "apple",
             {"options": in_deck}, None),
            ("same deck, deck scope", "Add B", "apple",
             {"options": in_deck}, "duplicate"),
            ("same deck, deck scope, markup", "Add B", "<i>apple</i>",
             {"options": in_deck}, "duplicate"),
            ("deck scope naming another deck", "Add B", "pear",
             {"options": {"duplicateScope": "deck",
                          "duplicateScopeOptions": {"deckName": "Add A"}}},
             None),
            ("duplicate allowed", "Add A", "apple",
             {"options": {"allowDuplicate": True}}, None),
            ("empty first field", "Add A", "", {}, "empty"),
            ("other note type, same word", "Add A", "apple",
             {"model": "Basic", "fields": {"Front": "apple"}}, None),
        ]
        messages = {
            "duplicate": "cannot create note because it is a duplicate",
            "empty": "cannot create note because it is empty",
        }
        for name, deck, first, extra, error in steps:
            with self.subTest(name):
                reply = self.add(deck, first, **extra)
                if error is None:
                    self.assertIsNone(reply["error"])
                    self.assertIsInstance(reply["result"], int)
                else:
                    self.assertEqual(reply,
                                     {"result": None,
                                      "error": messages[error]})
        self.assertEqual(
            len(self.must("findNotes", query='"deck:Add A" Expression:apple')),
            2, "only the allowed duplicate joined the first note")

    def test_add_note_lookup_errors(self):
        self.must("createDeck", deck="Lookups")
        cases = [
            ("unknown deck", {"deckName": "Nope", "modelName": MODEL,
                              "fields": {"Expression": "a"}},
             "deck was not found: Nope"),
            ("unknown model", {"deckName": "Lookups", "modelName": "Nope",
                               "fields": {"Expression": "a"}},
             "model was not found: Nope"),
        ]
        for name, note, error in cases:
            with self.subTest(name):
                self.assertEqual(self.call("addNote", note=note),
                                 {"result": None, "error": error})
        reply = self.call("addNote", note={
            "deckName": "Lookups", "modelName": MODEL,
            "fields": {"Expression": "a", "Pinyin": "x"}})
        self.assertIn("Pinyin", reply["error"])

    def test_find_notes(self):
        self.must("createDeck", deck="Find One")
        self.must("createDeck", deck="Find Two")
        ids = {}
        for deck, word, sentence, tags in [
                ("Find One", "finch", "A finch sang.", ["bird"]),
                ("Find One", "falcon", "The falcon dove.", ["bird", "fast"]),
                ("Find Two", "ferry", "We took the ferry.", [])]:
            ids[word] = self.must("addNote", note={
                "deckName": deck, "modelName": MODEL, "tags": tags,
                "fields": {"Expression": word, "Sentence": sentence}})
        cases = [
            ('"deck:Find One"', {"finch", "falcon"}),
            ('"deck:Find Two"', {"ferry"}),
            ("deck:Find*", {"finch", "falcon", "ferry"}),
            ("Expression:ferry", {"ferry"}),
            ('"Sentence:*the*"', {"falcon", "ferry"}),
            ('"deck:Find One" tag:fast', {"falcon"}),
            ('"deck:Find One" -tag:fast', {"finch"}),
            ('"deck:Find Two" Expression:finch', set()),
        ]
        for query, words in cases:
            with self.subTest(query):
                self.assertEqual(set(self.must("findNotes", query=query)),
                                 {ids[w] for w in words})

    def test_notes_info_update_and_delete(self):
        self.must("createDeck", deck="Info")
        fields = {"Expression": "ephemeral", "Reading": "/ɪˈfem(ə)rəl/",
                  "Definition": "短暂的", "URL": "https://example.org/e"}
        nid = self.must("addNote", note={
            "deckName": "Info", "modelName": MODEL, "fields": fields,
            "tags": ["lexicorn", "gre"]})
        info, missing = self.must("notesInfo", notes=[nid, 1])
        self.assertEqual(missing, {})
        self.assertEqual(info["noteId"], nid)
        self.assertEqual(info["modelName"], MODEL)
        self.assertEqual(sorted(info["tags"]), ["gre", "lexicorn"])
        self.assertEqual(len(info["cards"]), 1)
        self.assertEqual(list(info["fields"]), FIELDS)
        for order, name in enumerate(FIELDS):
            self.assertEqual(info["fields"][name],
                             {"value": fields.get(name, ""), "order": order})

        self.assertIsNone(self.must("updateNoteFields", note={
            "id": nid, "fields": {"Definition": "转瞬即逝的"}}))
        [info] = self.must("notesInfo", notes=[nid])
        self.assertEqual(info["fields"]["Definition"]["value"], "转瞬即逝的")
        self.assertEqual(info["fields"]["Expression"]["value"], "ephemeral",
                         "fields not named keep their value")

        self.assertIsNone(self.must("deleteNotes", notes=[nid]))
        self.assertEqual(self.must("notesInfo", notes=[nid]), [{}])
        self.assertEqual(self.must("findNotes", query="deck:Info"), [])

    def test_store_media_file(self):
        served = b"ID3 served over http"
        local = os.path.join(self.peer.dir.name, "local.ogg")
        with open(local, "wb") as f:
            f.write(b"OggS from a path")
        with FileServer({"/word.mp3": served}) as url:
            cases = [
                ("data", {"data": base64.b64encode(b"RIFF data").decode()},
                 b"RIFF data"),
                ("path", {"path": local}, b"OggS from a path"),
                ("url", {"url": url + "/word.mp3"}, served),
            ]
            for how, source, content in cases:
                with self.subTest(how):
                    name = self.must("storeMediaFile",
                                     filename=f"lexicorn_{how}.bin", **source)
                    self.assertEqual(name, f"lexicorn_{how}.bin")
                    with open(os.path.join(self.peer.media, name), "rb") as f:
                        self.assertEqual(f.read(), content)
            reply = self.call("storeMediaFile", filename="gone.mp3",
                              url=url + "/missing.mp3")
            self.assertIsNotNone(reply["error"])

    def test_store_media_replaces_by_default(self):
        for content in (b"first", b"second"):
            self.must("storeMediaFile", filename="again.mp3",
                      data=base64.b64encode(content).decode())
        with open(os.path.join(self.peer.media, "again.mp3"), "rb") as f:
            self.assertEqual(f.read(), b"second")

    def test_add_note_with_audio(self):
        self.must("createDeck", deck="Audio")
        with FileServer({"/say.mp3": b"ID3 hello"}) as url:
            nid = self.must("addNote", note={
                "deckName": "Audio", "modelName": MODEL,
                "fields": {"Expression": "hello"},
                "audio": [{"url": url + "/say.mp3", "filename": "hello.mp3",
                           "fields": ["Audio"]}]})
        [info] = self.must("notesInfo", notes=[nid])
        self.assertEqual(info["fields"]["Audio"]["value"], "[sound:hello.mp3]")
        with open(os.path.join(self.peer.media, "hello.mp3"), "rb") as f:
            self.assertEqual(f.read(), b"ID3 hello")

    def test_multi(self):
        self.must("createDeck", deck="Multi")
        results = self.must("multi", actions=[
            {"action": "version"},
            {"action": "addNote", "params": {"note": {
                "deckName": "Multi", "modelName": MODEL,
                "fields": {"Expression": "multi"}}}},
            {"action": "addNote", "params": {"note": {
                "deckName": "Nope", "modelName": MODEL,
                "fields": {"Expression": "multi2"}}}},
            {"action": "findNotes", "version": 6,
             "params": {"query": "deck:Multi"}},
        ])
        self.assertEqual(len(results), 4)
        self.assertEqual(results[0], 6)
        self.assertIsInstance(results[1], int)
        self.assertEqual(results[2], {"result": None,
                                      "error": "deck was not found: Nope"})
        self.assertEqual(results[3], {"result": [results[1]], "error": None})

    def test_keep_alive(self):
        conn = self.peer.connect()
        other = self.peer.connect()
        try:
            body = '{"action": "version", "version": 6}'
            post(conn, body)
            sock = conn.sock
            for i in range(20):
                # An idle keep-alive connection must not block another one.
                self.assertEqual(post(other if i % 5 == 0 else conn, body),
                                 {"result": 6, "error": None})
            self.assertIs(conn.sock, sock, "connection was not reused")
        finally:
            conn.close()
            other.close()


class LifecycleTest(unittest.TestCase):
    def test_stops_cleanly(self):
        cases = [("stdin closed", "stdin"), ("SIGTERM", signal.SIGTERM),
                 ("SIGINT", signal.SIGINT)]
        for name, how in cases:
            with self.subTest(name):
                peer = Peer()
                try:
                    self.assertEqual(peer.banner,
                                     f"listening on 127.0.0.1:{peer.port}")
                    conn = peer.connect()
                    post(conn, json.dumps({"action": "addNote", "params": {
                        "note": {"deckName": "Default", "modelName": "Basic",
                                 "fields": {"Front": "kept"}}}}))
                    conn.close()
                    self.assertEqual(peer.stop(how), 0)
                    # The collection was closed cleanly: it opens again and
                    # holds the note.
                    col = Collection(os.path.join(peer.collection,
                                                  "collection.anki2"))
                    try:
                        self.assertEqual(len(col.find_notes("Front:kept")), 1)
                    finally:
                        col.close()
                finally:
                    peer.dir.cleanup()


class FileServer:
    """Serves fixed bytes on 127.0.0.1 for storeMediaFile's url form."""

    def __init__(self, files):
        files = dict(files)

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                if self.path not in files:
                    self.send_error(404)
                    return
                self.send_response(200)
                self.send_header("Content-Length", str(len(files[self.path])))
                self.end_headers()
                self.wfile.write(files[self.path])

            def log_message(self, *args):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0),
                                                      Handler)

    def __enter__(self):
        threading.Thread(target=self.server.serve_forever, args=(0.05,),
                         daemon=True).start()
        return f"http://127.0.0.1:{self.server.server_address[1]}"

    def __exit__(self, *exc):
        self.server.shutdown()
        self.server.server_close()


if __name__ == "__main__":
    unittest.main()

"""Tests for anki-peer. Run with the venv's python:

    /opt/lexicorn/anki-peer-venv/bin/python -m unittest discover \
        -s tools/anki-peer -p 'test_*.py'
"""

import base64
import contextlib
import http.client
import http.server
import json
import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from anki.collection import Collection

HERE = os.path.dirname(os.path.abspath(__file__))
FIELDS = ["Expression", "Sentence", "Reading", "ExtraInfo", "Definition",
          "URL", "Definitions", "Audio"]
MODEL = "Lexicorn Word"
HANG_GUARD = 60  # seconds; only stops a hung test, never judges speed
SWITCHES_OFF = {"cardsInNoteTypeDeck": False, "addDelay": 0,
                "mediaDelay": 0}


class Peer:
    """An anki-peer subprocess on a free port with its own collection."""

    def __init__(self, *flags):
        self.dir = tempfile.TemporaryDirectory()
        self.collection = os.path.join(self.dir.name, "col")
        self.proc = subprocess.Popen(
            [sys.executable, os.path.join(HERE, "anki_peer.py"),
             "--collection", self.collection, "--port", "0", *flags],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.banner = self.proc.stdout.readline().strip()
        self.port = int(self.banner.rsplit(":", 1)[1])
        self.media = os.path.join(self.collection, "collection.media")

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


def post(port, body, timeout=HANG_GUARD):
    """Sends one raw body on a new connection; returns the decoded JSON
    reply."""
    conn = http.client.HTTPConnection("127.0.0.1", port, timeout=timeout)
    try:
        conn.request("POST", "/", body=body,
                     headers={"Content-Type": "application/json"})
        resp = conn.getresponse()
        data = resp.read()
    finally:
        conn.close()
    assert resp.status == 200, resp.status
    assert resp.getheader("Content-Type") == "application/json"
    return json.loads(data)


def request_bytes(action, **params):
    body = json.dumps({"action": action, "version": 6, "params": params})
    return (f"POST / HTTP/1.1\r\nHost: 127.0.0.1\r\n"
            f"Content-Length: {len(body.encode())}\r\n\r\n{body}").encode()


def read_to_end(sock):
    received = b""
    while chunk := sock.recv(65536):
        received += chunk
    return received


def exchange(port, *pieces):
    """Sends the pieces of one request on a new connection, with a pause
    between them so that they are likely to arrive apart; returns all the
    peer sent before it closed the connection."""
    with socket.create_connection(("127.0.0.1", port),
                                  timeout=HANG_GUARD) as sock:
        for n, piece in enumerate(pieces):
            if n:
                time.sleep(0.2)
            sock.sendall(piece)
        return read_to_end(sock)


def parse_reply(raw):
    """(status line, {lower-cased header: value}, body) of one reply."""
    head, _, body = raw.partition(b"\r\n\r\n")
    status, *lines = head.decode("latin-1").split("\r\n")
    headers = {}
    for line in lines:
        name, _, value = line.partition(":")
        headers[name.strip().lower()] = value.strip()
    return status, headers, body


class PeerTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.must("createModel", modelName=MODEL, inOrderFields=FIELDS,
                 css=".card { font-family: serif; }",
                 cardTemplates=[{"Name": "Recognise",
                                 "Front": "{{Expression}}",
                                 "Back": "{{Definition}}"}])

    @classmethod
    def tearDownClass(cls):
        cls.peer.stop()
        cls.peer.dir.cleanup()

    @classmethod
    def call(cls, action, timeout=HANG_GUARD, **params):
        return post(cls.peer.port, json.dumps(
            {"action": action, "version": 6, "params": params}), timeout)

    @classmethod
    def must(cls, action, **params):
        reply = cls.call(action, **params)
        assert reply["error"] is None, (action, reply)
        return reply["result"]

    @contextlib.contextmanager
    def switched(self, **switches):
        self.must("peerSwitches", **switches)
        try:
            yield
        finally:
            self.must("peerSwitches", **SWITCHES_OFF)

    def add(self, deck, first, model=MODEL, **extra):
        note = {"deckName": deck, "modelName": model,
                "fields": {"Expression": first}, **extra}
        return self.call("addNote", note=note)

    def deck_of_cards(self, note_id):
        [info] = self.must("notesInfo", notes=[note_id])
        return [c["deckName"]
                for c in self.must("cardsInfo", cards=info["cards"])]

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
            ("missing note named",
             '{"action": "updateNoteFields", "params": '
             '{"note": {"id": 12345, "fields": {"Sentence": "x"}}}}',
             {"result": None, "error": "note was not found: 12345"}),
        ]
        for name, body, want in cases:
            with self.subTest(name):
                self.assertEqual(post(self.peer.port, body), want)

    def test_bad_requests_get_an_error(self):
        cases = [
            ("not json", "{action: version"),
            ("json but not an object", "[1, 2]"),
            ("no action", '{"version": 6, "params": {}}'),
            ("params not an object", '{"action": "version", "params": [1]}'),
            ("unexpected param", '{"action": "version", "params": {"x": 1}}'),
            ("bad search", '{"action": "findNotes", "params": '
                           '{"query": "deck:\\"unterminated"}}'),
            ("media without content", '{"action": "storeMediaFile", '
                                      '"params": {"filename": "x.mp3"}}'),
        ]
        for name, body in cases:
            with self.subTest(name):
                reply = post(self.peer.port, body)
                self.assertIsNone(reply["result"])
                self.assertIsInstance(reply["error"], str)
                self.assertTrue(reply["error"])
        # The server is still fine afterwards.
        self.assertEqual(self.must("version"), 6)

    def test_one_reply_per_connection(self):
        version = request_bytes("version")
        split = version.index(b"\r\n\r\n") + 10
        cases = [
            ("action", [version], "application/json",
             b'{"result": 6, "error": null}'),
            ("action arriving in pieces",
             [version[:20], version[20:split], version[split:]],
             "application/json", b'{"result": 6, "error": null}'),
            ("bare GET", [b"GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"],
             "text/plain", b"AnkiConnect v.6"),
            ("empty POST", [b"POST / HTTP/1.1\r\nContent-Length: 0\r\n\r\n"],
             "text/plain", b"AnkiConnect v.6"),
        ]
        for name, pieces, content_type, body in cases:
            with self.subTest(name):
                # exchange() reads until the peer closes the connection.
                status, headers, got = parse_reply(
                    exchange(self.peer.port, *pieces))
                self.assertEqual(status, "HTTP/1.1 200 OK")
                # Nothing about keep-alive, not even "Connection: close".
                self.assertEqual(headers, {"content-type": content_type,
                                           "content-length": str(len(body))})
                self.assertEqual(got, body)

        # A client that keeps the connection for a second request finds it
        # closed; a new connection works.
        conn = http.client.HTTPConnection("127.0.0.1", self.peer.port,
                                          timeout=HANG_GUARD)
        try:
            conn.request("POST", "/", '{"action": "version"}')
            self.assertEqual(json.loads(conn.getresponse().read())["result"],
                             6)
            with self.assertRaises((http.client.RemoteDisconnected,
                                    ConnectionResetError, BrokenPipeError)):
                conn.request("POST", "/", '{"action": "version"}')
                conn.getresponse().read()
        finally:
            conn.close()
        self.assertEqual(self.must("version"), 6)

    def test_unfinished_request_does_not_hold_up_others(self):
        cases = [
            ("headers cut short", b"POST / HTTP/1.1\r\nContent-Le"),
            ("body cut short",
             b"POST / HTTP/1.1\r\nContent-Length: 40\r\n\r\n{\"action\""),
        ]
        for name, partial in cases:
            with self.subTest(name), socket.create_connection(
                    ("127.0.0.1", self.peer.port)) as stalled:
                stalled.sendall(partial)
                self.assertEqual(self.must("version"), 6)

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

    def test_field_names_in_add_and_update(self):
        # addNote looks names up in any case, updateNoteFields only in the
        # field's own; both pass over names that match no field, and "".
        self.must("createDeck", deck="Names")
        cases = [  # action, fields sent, fields afterwards (None: refused)
            ("addNote", {"expression": "k1", "SENTENCE": "s"},
             {"Expression": "k1", "Sentence": "s"}),
            ("addNote", {"Expression": "k2", "Pinyin": "x", "": "y"},
             {"Expression": "k2"}),
            ("addNote", {"pinyin": "k3", "": "k3"}, None),
            ("updateNoteFields", {"Sentence": "new"}, {"Sentence": "new"}),
            ("updateNoteFields", {"sentence": "new", "DEFINITION": "d",
                                  "Pinyin": "x", "": "y"}, {}),
            ("updateNoteFields", {"definition": "no", "Definition": "d"},
             {"Definition": "d"}),
        ]
        for n, (action, fields, after) in enumerate(cases):
            with self.subTest(action=action, fields=fields):
                if action == "addNote":
                    reply = self.add("Names", None, fields=fields)
                    nid = reply["result"]
                else:
                    before = {"Expression": f"u{n}", "Sentence": "s"}
                    nid = self.must("addNote", note={
                        "deckName": "Names", "modelName": MODEL,
                        "fields": before})
                    reply = self.call("updateNoteFields",
                                      note={"id": nid, "fields": fields})
                    after = {**before, **after}
                if after is None:
                    self.assertEqual(reply["error"], "cannot create note "
                                                     "because it is empty")
                    continue
                self.assertIsNone(reply["error"])
                [info] = self.must("notesInfo", notes=[nid])
                self.assertEqual(
                    {k: v["value"] for k, v in info["fields"].items()},
                    {f: after.get(f, "") for f in FIELDS})

    def test_media_file_names(self):
        for name in ("names_a.mp3", "names_b.mp3", "names_c.ogg"):
            self.must("storeMediaFile", filename=name,
                      data=base64.b64encode(b"x").decode())
        cases = [
            ("names_*", ["names_a.mp3", "names_b.mp3", "names_c.ogg"]),
            ("names_*.mp3", ["names_a.mp3", "names_b.mp3"]),
            ("names_B*", []),  # case counts
            ("names_?.ogg", ["names_c.ogg"]),
            ("names_[aB].mp3", ["names_a.mp3"]),
            ("names_a", []),
        ]
        for pattern, want in cases:
            with self.subTest(pattern):
                self.assertEqual(
                    sorted(self.must("getMediaFilesNames", pattern=pattern)),
                    want)

    def test_find_move_and_describe_cards(self):
        self.must("createDeck", deck="Move From")
        stay = self.must("addNote", note={"deckName": "Move From",
                                          "modelName": MODEL,
                                          "fields": {"Expression": "stay"}})
        go = self.must("addNote", note={"deckName": "Move From",
                                        "modelName": MODEL,
                                        "fields": {"Expression": "go"}})
        found = self.must("findCards", query='"deck:Move From"')
        self.assertEqual(len(found), 2)
        [go_card] = self.must("findCards", query="Expression:go")
        self.assertIsNone(self.must("changeDeck", cards=[go_card],
                                    deck="Move To::New"))
        self.assertIn("Move To::New", self.must("deckNames"))
        info = self.must("cardsInfo", cards=found + [1])
        self.assertEqual(info[-1], {}, "a missing card")
        self.assertEqual(
            {(c["cardId"], c["note"], c["deckName"]) for c in info[:2]},
            {(go_card, go, "Move To::New"),
             (self.must("findCards", query="Expression:stay")[0], stay,
              "Move From")})
        self.assertEqual(self.must("findCards", query='"deck:Move From"'),
                         [c for c in found if c != go_card])

    def test_peer_switches_are_checked(self):
        cases = [
            ("unknown switch", {"addDelay": 1, "slow": True}),
            ("negative delay", {"cardsInNoteTypeDeck": True, "addDelay": -1}),
            ("delay as text", {"mediaDelay": "1"}),
            ("flag as number", {"cardsInNoteTypeDeck": 1}),
        ]
        for name, switches in cases:
            with self.subTest(name):
                reply = self.call("peerSwitches", **switches)
                self.assertIsNone(reply["result"])
                self.assertTrue(reply["error"])
                self.assertEqual(self.must("peerSwitches"), SWITCHES_OFF,
                                 "a refused change changes nothing")

    def test_cards_in_note_type_deck(self):
        self.must("createDeck", deck="Named")
        cases = [
            ("switch off", False, "Named", "Named"),
            ("switch on", True, "Named", "Default"),
            ("switch on, unknown deck", True, "Nope",
             "deck was not found: Nope"),
        ]
        for n, (name, on, deck, want) in enumerate(cases):
            with self.subTest(name), self.switched(cardsInNoteTypeDeck=on):
                reply = self.add(deck, f"placed{n}")
                if reply["error"] is not None:
                    self.assertEqual(reply["error"], want)
                else:
                    self.assertEqual(self.deck_of_cards(reply["result"]),
                                     [want])

    def test_delays_outlast_a_client_that_gives_up(self):
        self.must("createDeck", deck="Slow")
        with FileServer({"/slow.mp3": b"ID3 slow"}) as url:
            cases = [
                ("addDelay", {"note": {"deckName": "Slow", "modelName": MODEL,
                                       "fields": {"Expression": "slow"}}},
                 "addNote",
                 lambda: self.must("findNotes", query="Expression:slow")),
                ("mediaDelay", {"filename": "slow.mp3",
                                "url": url + "/slow.mp3"}, "storeMediaFile",
                 lambda: self.must("getMediaFilesNames", pattern="slow.mp3")),
            ]
            for switch, params, action, done in cases:
                with self.subTest(switch), self.switched(**{switch: 2}):
                    with self.assertRaises(TimeoutError):
                        self.call(action, timeout=1, **params)
                    # Served after the slow action: it has finished by now.
                    self.assertEqual(len(done()), 1)

    def test_requests_do_not_overlap(self):
        self.must("createDeck", deck="Overlap")
        # Both connect before either asks, so the add is the first request
        # to be whole; a server that ran requests side by side would find
        # nothing while the add sleeps.
        with self.switched(addDelay=1), \
                socket.create_connection(("127.0.0.1", self.peer.port),
                                         timeout=HANG_GUARD) as adding, \
                socket.create_connection(("127.0.0.1", self.peer.port),
                                         timeout=HANG_GUARD) as finding:
            adding.sendall(request_bytes("addNote", note={
                "deckName": "Overlap", "modelName": MODEL,
                "fields": {"Expression": "overlap"}}))
            finding.sendall(request_bytes("findNotes",
                                          query="Expression:overlap"))
            found = json.loads(parse_reply(read_to_end(finding))[2])
            added = json.loads(parse_reply(read_to_end(adding))[2])
        self.assertIsInstance(added["result"], int)
        self.assertEqual(found, {"result": [added["result"]], "error": None})

    def test_media_names(self):
        # The engine names the file (this version lower-cases it); the reply
        # says which name it has, and the file is there under that name.
        steps = [
            ("stored", "Named_Case.MP3", b"a", {}),
            ("replaced by default", "named_case.mp3", b"c", {}),
        ]
        for name, filename, content, extra in steps:
            with self.subTest(name):
                stored = self.must(
                    "storeMediaFile", filename=filename,
                    data=base64.b64encode(content).decode(), **extra)
                self.assertEqual(stored.lower(), filename.lower())
                with open(os.path.join(self.peer.media, stored), "rb") as f:
                    self.assertEqual(f.read(), content)
        self.assertEqual(
            self.must("getMediaFilesNames", pattern="[Nn]amed_[Cc]ase.*"),
            [stored])

    def test_python_baseline_runs_against_the_peer(self):
        self.must("createDeck", deck="Baseline")
        direct = subprocess.run(
            [sys.executable, os.path.join(HERE, "direct_adds.py"),
             "--url", f"http://127.0.0.1:{self.peer.port}", "--count", "3",
             "--deck", "Baseline", "--model", MODEL],
            capture_output=True, text=True, timeout=HANG_GUARD)
        self.assertEqual(direct.returncode, 0, direct.stderr)
        self.assertRegex(direct.stdout, r"^seconds \d+\.\d+\n$")
        self.assertEqual(
            len(self.must("findNotes", query='"deck:Baseline"')), 3)


class StartFlagsTest(unittest.TestCase):
    def test_flags_set_the_switches(self):
        peer = Peer("--cards-in-note-type-deck", "--add-delay", "0.25",
                    "--media-delay", "0.5",
                    "--client-timeout", "0.5")
        try:
            reply = post(peer.port, '{"action": "peerSwitches"}')
            self.assertEqual(reply["result"], {
                "cardsInNoteTypeDeck": True, "addDelay": 0.25,
                "mediaDelay": 0.5})
            # A client that never finishes its request is let go.
            with socket.create_connection(("127.0.0.1", peer.port),
                                          timeout=HANG_GUARD) as stalled:
                stalled.sendall(b"POST / HTTP/1.1\r\nContent-Length: 9\r\n")
                self.assertEqual(read_to_end(stalled), b"")
            self.assertEqual(peer.stop(), 0)
        finally:
            peer.dir.cleanup()


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
                    post(peer.port, json.dumps({
                        "action": "addNote", "params": {"note": {
                            "deckName": "Default", "modelName": "Basic",
                            "fields": {"Front": "kept"}}}}))
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

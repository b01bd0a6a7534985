#!/usr/bin/env python3
"""anki-peer: an AnkiConnect-compatible (version 6) HTTP server over a real
Anki collection, for Lexicorn's integration tests.

    anki-peer --collection DIR [--port 0] [--host 127.0.0.1] [--verbose]

Opens (creating) DIR/collection.anki2, prints one line
"listening on HOST:PORT", and serves until SIGTERM/SIGINT or until stdin
closes, so a test that dies takes its server with it.
"""

import argparse
import base64
import json
import os
import threading
import urllib.request
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from anki.collection import Collection, SearchNode
from anki.consts import MODEL_CLOZE
from anki.errors import NotFoundError
from anki.notes import Note, NoteFieldsCheckResult

from serving import serve_until_stopped

API_VERSION = 6


class ActionError(Exception):
    """An error reported to the client in the reply's "error" member."""


class Actions:
    """One method per supported action; params arrive as keyword arguments."""

    def __init__(self, col: Collection):
        self.col = col

    # --- lookups shared by several actions ---------------------------------

    def _model(self, name):
        model = self.col.models.by_name(name)
        if model is None:
            raise ActionError(f"model was not found: {name}")
        return model

    def _deck_id(self, name):
        did = self.col.decks.id_for_name(name)
        if did is None:
            raise ActionError(f"deck was not found: {name}")
        return did

    def _note(self, note_id):
        try:
            return self.col.get_note(note_id)
        except NotFoundError:
            raise ActionError(f"note was not found: {note_id}") from None

    @staticmethod
    def _set_fields(note, fields):
        for name, value in fields.items():
            if name not in note:
                raise ActionError(f"field was not found in model: {name}")
            note[name] = value

    # --- actions ------------------------------------------------------------

    def version(self):
        return API_VERSION

    def deckNames(self):
        return [d.name for d in self.col.decks.all_names_and_ids()]

    def createDeck(self, deck):
        return self.col.decks.id(deck)

    def getDeckConfig(self, deck):
        did = self.col.decks.id_for_name(deck)
        if did is None:
            return False
        return self.col.decks.config_dict_for_deck_id(did)

    def modelNames(self):
        return [m.name for m in self.col.models.all_names_and_ids()]

    def modelFieldNames(self, modelName):
        return self.col.models.field_names(self._model(modelName))

    def createModel(self, modelName, inOrderFields, cardTemplates, css=None,
                    isCloze=False):
        mm = self.col.models
        if mm.by_name(modelName) is not None:
            raise ActionError(f"model name already exists: {modelName}")
        if not inOrderFields:
            raise ActionError("createModel needs at least one field")
        if not cardTemplates:
            raise ActionError("createModel needs at least one card template")
        model = mm.new(modelName)
        if isCloze:
            model["type"] = MODEL_CLOZE
        for name in inOrderFields:
            mm.add_field(model, mm.new_field(name))
        if css is not None:
            model["css"] = css
        for i, t in enumerate(cardTemplates, 1):
            tmpl = mm.new_template(t.get("Name", f"Card {i}"))
            tmpl["qfmt"] = t["Front"]
            tmpl["afmt"] = t["Back"]
            mm.add_template(model, tmpl)
        mm.add(model)
        return mm.by_name(modelName)

    def findNotes(self, query):
        return list(self.col.find_notes(query))

    def notesInfo(self, notes):
        out = []
        for nid in notes:
            try:
                note = self.col.get_note(nid)
            except NotFoundError:
                out.append({})
                continue
            model = note.note_type()
            out.append({
                "noteId": note.id,
                "modelName": model["name"],
                "tags": note.tags,
                "fields": {f["name"]: {"value": note.fields[f["ord"]],
                                       "order": f["ord"]}
                           for f in model["flds"]},
                "cards": list(note.card_ids()),
                "mod": note.mod,
            })
        return out

    def addNote(self, note):
        model = self._model(note.get("modelName"))
        deck_name = note.get("deckName")
        did = self._deck_id(deck_name)
        new = Note(self.col, model)
        self._set_fields(new, note.get("fields", {}))
        new.tags = list(note.get("tags", []))
        self._attach_media(new, note)
        self._check_addable(new, model, deck_name, note.get("options") or {})
        self.col.add_note(new, did)
        return new.id

    def _check_addable(self, note, model, deck_name, options):
        state = note.fields_check()
        if state == NoteFieldsCheckResult.EMPTY:
            raise ActionError("cannot create note because it is empty")
        if options.get("allowDuplicate", False):
            return
        scope = options.get("duplicateScope", "collection")
        scope_opts = options.get("duplicateScopeOptions") or {}
        all_models = scope_opts.get("checkAllModels", False)
        if scope != "deck" and not all_models:
            duplicate = state == NoteFieldsCheckResult.DUPLICATE
        elif state != NoteFieldsCheckResult.DUPLICATE and not all_models:
            duplicate = False  # no same-type duplicate anywhere
        else:
            # Narrow Anki's own duplicate search to the deck / widen it to
            # every note type.
            first = note.fields[0]
            mids = ([m.id for m in self.col.models.all_names_and_ids()]
                    if all_models else [model["id"]])
            search = [self.col.group_searches(
                *(SearchNode(dupe=SearchNode.Dupe(notetype_id=m,
                                                  first_field=first))
                  for m in mids), joiner="OR")]
            if scope == "deck":
                deck = scope_opts.get("deckName") or deck_name
                search.append(SearchNode(deck=deck))
                if not scope_opts.get("checkChildren", False):
                    search.append(SearchNode(negated=SearchNode(
                        deck=deck + "::*")))
            duplicate = bool(self.col.find_notes(
                self.col.build_search_string(*search)))
        if duplicate:
            raise ActionError("cannot create note because it is a duplicate")

    def _attach_media(self, note, params):
        """Stores each "audio"/"video"/"picture" item and appends a reference
        to it to the fields the item names."""
        for kind in ("audio", "video", "picture"):
            items = params.get(kind) or []
            if isinstance(items, dict):
                items = [items]
            for item in items:
                name = self.storeMediaFile(
                    item["filename"], data=item.get("data"),
                    path=item.get("path"), url=item.get("url"),
                    deleteExisting=False)
                ref = (f'<img src="{name}">' if kind == "picture"
                       else f"[sound:{name}]")
                fields = item.get("fields") or []
                for field in [fields] if isinstance(fields, str) else fields:
                    if field not in note:
                        raise ActionError(
                            f"field was not found in model: {field}")
                    note[field] += ref

    def updateNoteFields(self, note):
        existing = self._note(note["id"])
        self._set_fields(existing, note.get("fields", {}))
        self._attach_media(existing, note)
        self.col.update_note(existing)
        return None

    def deleteNotes(self, notes):
        self.col.remove_notes(notes)
        return None

    def storeMediaFile(self, filename, data=None, path=None, url=None,
                       deleteExisting=True):
        if data is not None:
            content = base64.b64decode(data)
        elif path is not None:
            with open(path, "rb") as f:
                content = f.read()
        elif url is not None:
            # No proxies: the files a test serves live on this machine.
            opener = urllib.request.build_opener(
                urllib.request.ProxyHandler({}))
            with opener.open(url, timeout=30) as resp:
                content = resp.read()
        else:
            raise ActionError(
                'storeMediaFile needs one of "data", "path" or "url"')
        if deleteExisting and self.col.media.have(filename):
            self.col.media.trash_files([filename])
        return self.col.media.write_data(filename, content)

    def multi(self, actions):
        return [run_nested(self, a) for a in actions]


def run(actions, name, params):
    """Returns the action's result or raises with the reply's message."""
    if not isinstance(name, str) or name.startswith("_") \
            or not callable(getattr(Actions, name, None)):
        raise ActionError("unsupported action")
    if not isinstance(params, dict):
        raise ActionError("params must be an object")
    return getattr(actions, name)(**params)


def run_nested(actions, request):
    """One element of a multi: an action that names version 5 or later gets
    the full {"result", "error"} envelope, otherwise its bare result; a
    failure is always {"result": null, "error": ...}."""
    try:
        result = run(actions, request.get("action"),
                     request.get("params") or {})
    except Exception as e:  # noqa: BLE001 - every failure is reported
        return {"result": None, "error": message_of(e)}
    version = request.get("version", 4)
    if isinstance(version, int) and version >= 5:
        return {"result": result, "error": None}
    return result


def message_of(exc):
    return str(exc) or type(exc).__name__


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def version_string(self):
        return "anki-peer"

    def do_POST(self):
        length = int(self.headers.get("Content-Length") or 0)
        body = self.rfile.read(length) if length else b""
        if not body.strip():
            self.do_GET()
            return
        try:
            request = json.loads(body)
            if not isinstance(request, dict) or "action" not in request:
                raise ActionError('request must be a JSON object with an '
                                  '"action"')
            with self.server.lock:
                result = run(self.server.actions, request["action"],
                             request.get("params") or {})
            reply = {"result": result, "error": None}
        except Exception as e:  # noqa: BLE001 - every failure is reported
            reply = {"result": None, "error": message_of(e)}
        self._send(json.dumps(reply).encode(), "application/json")

    def do_GET(self):
        self._send(f"AnkiConnect v.{API_VERSION}".encode(), "text/plain")

    def _send(self, payload, content_type):
        self.send_response(200)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(payload)))
        self.end_headers()
        self.wfile.write(payload)

    def log_message(self, format, *args):
        if self.server.verbose:
            super().log_message(format, *args)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--collection", required=True,
                    help="folder holding collection.anki2 (created if needed)")
    ap.add_argument("--host", default="127.0.0.1")
    ap.add_argument("--port", type=int, default=0, help="0 picks a free port")
    ap.add_argument("--verbose", action="store_true",
                    help="log every request to stderr")
    args = ap.parse_args()

    os.makedirs(args.collection, exist_ok=True)
    col = Collection(os.path.join(args.collection, "collection.anki2"))

    server = ThreadingHTTPServer((args.host, args.port), Handler)
    server.lock = threading.Lock()
    server.actions = Actions(col)
    server.verbose = args.verbose
    serve_until_stopped(server)
    # Waits for a request in progress and keeps later ones off the closed
    # collection until the process exits.
    server.lock.acquire()
    col.close()
    server.server_close()


if __name__ == "__main__":
    main()

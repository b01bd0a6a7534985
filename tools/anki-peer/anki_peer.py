#!/usr/bin/env python3
"""anki-peer: an AnkiConnect-compatible (version 6) HTTP server over a real
Anki collection, for Lexicorn's integration tests.

    anki-peer --collection DIR [--port 0] [--host 127.0.0.1] [--verbose]
              [--cards-in-note-type-deck] [--add-delay SECONDS]
              [--media-delay SECONDS]
              [--client-timeout SECONDS]

Opens (creating) DIR/collection.anki2, prints one line
"listening on HOST:PORT", and serves until SIGTERM/SIGINT or until stdin
closes, so a test that dies takes its server with it.

It serves like the add-on does inside Anki: on one thread, one request per
connection, each request run to its end before the next one starts, the
connection closed after the reply (which says nothing about keep-alive). A
client that has not sent its whole request within --client-timeout seconds
(10) is dropped.

Switches that make it behave like add-on versions seen in the wild, or like
a slow collection; each can be set at start by its flag, or at any time by
the "peerSwitches" action, which is ours, not AnkiConnect's:

    cardsInNoteTypeDeck (--cards-in-note-type-deck): addNote puts the cards
        in the deck the note type remembers (Default when it remembers
        none) instead of the named deck, which must still exist.
    addDelay (--add-delay SECONDS): every addNote first sleeps this long,
        holding up every other request; the note is added and the reply
        sent even if the client has given up meanwhile.
    mediaDelay (--media-delay SECONDS): storeMediaFile sleeps this long
        before it stores a file (a slow download of a "url", or a slow
        disk), holding up every other request.

    {"action": "peerSwitches", "params": {"addDelay": 1.5}} sets the named
    switches, leaves the others, and returns all of them.
"""

import argparse
import base64
import fnmatch
import json
import math
import os
import sys
import time
import urllib.request

from anki.collection import Collection, SearchNode
from anki.consts import MODEL_CLOZE
from anki.errors import NotFoundError
from anki.notes import Note, NoteFieldsCheckResult

from serving import CLIENT_TIMEOUT, OneAtATimeServer, announce, stop_signal

API_VERSION = 6
MEDIA_DOWNLOAD_TIMEOUT = 10  # seconds, as the add-on allows a download
class ActionError(Exception):
    """An error reported to the client in the reply's "error" member."""


def _seconds(value):
    return (isinstance(value, (int, float)) and not isinstance(value, bool)
            and math.isfinite(value) and value >= 0)


class Switches:
    """The behaviours a test can turn on (see the module's description)."""

    CHECKS = {
        "cardsInNoteTypeDeck": (lambda v: isinstance(v, bool), "true or false"),
        "addDelay": (_seconds, "a number of seconds, 0 or more"),
        "mediaDelay": (_seconds, "a number of seconds, 0 or more"),
    }

    def __init__(self, **initial):
        self.values = {"cardsInNoteTypeDeck": False, "addDelay": 0,
                       "mediaDelay": 0}
        self.update(initial)

    def update(self, changes):
        # All or nothing: one bad switch leaves every switch as it was.
        for name, value in changes.items():
            if name not in self.CHECKS:
                raise ActionError(f"unknown peer switch: {name}")
            valid, wanted = self.CHECKS[name]
            if not valid(value):
                raise ActionError(f"peer switch {name} needs {wanted}")
        self.values.update(changes)

    def __getitem__(self, name):
        return self.values[name]


class Actions:
    """One method per supported action; params arrive as keyword arguments."""

    def __init__(self, col: Collection, switches: Switches):
        self.col = col
        self.switches = switches
        self.requests_answered = 0  # counts every request with an action

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
    def _any_case(note):
        """addNote's field lookup: "word" names the field "Word"."""
        names = {name.lower(): name for name in note.keys()}
        return lambda name: names.get(name.lower())

    @staticmethod
    def _exact_case(note):
        """updateNoteFields' field lookup: "word" does not name "Word"."""
        return lambda name: name if name in note else None

    @staticmethod
    def _set_fields(note, fields, field_named):
        # Names that match no field (and "") are passed over, not refused.
        for name, value in fields.items():
            field = field_named(name) if name else None
            if field is not None:
                note[field] = value

    def _note_type_deck(self, model):
        """The deck the note type remembers, or Default (id 1)."""
        did = model.get("did") or 1
        return did if self.col.decks.get(did, default=False) else 1

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
        if self.switches["addDelay"]:
            # Blocks the whole server, as a slow collection blocks Anki.
            time.sleep(self.switches["addDelay"])
        model = self._model(note.get("modelName"))
        deck_name = note.get("deckName")
        did = self._deck_id(deck_name)
        if self.switches["cardsInNoteTypeDeck"]:
            did = self._note_type_deck(model)
        new = Note(self.col, model)
        field_named = self._any_case(new)
        self._set_fields(new, note.get("fields") or {}, field_named)
        new.tags = list(note.get("tags", []))
        self._attach_media(new, note, field_named)
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

    def _attach_media(self, note, params, field_named):
        """Stores each "audio"/"video"/"picture" item and appends a reference
        to it to the fields the item names (looked up as the action looks
        up its own fields; unknown ones are passed over)."""
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
                for name in [fields] if isinstance(fields, str) else fields:
                    field = field_named(name) if name else None
                    if field is not None:
                        note[field] += ref

    def updateNoteFields(self, note):
        existing = self._note(note["id"])
        field_named = self._exact_case(existing)
        self._set_fields(existing, note.get("fields") or {}, field_named)
        self._attach_media(existing, note, field_named)
        self.col.update_note(existing)
        return None

    def deleteNotes(self, notes):
        self.col.remove_notes(notes)
        return None

    def storeMediaFile(self, filename, data=None, path=None, url=None,
                       deleteExisting=True):
        if self.switches["mediaDelay"]:
            time.sleep(self.switches["mediaDelay"])
        if data is not None:
            content = base64.b64decode(data)
        elif path is not None:
            with open(path, "rb") as f:
                content = f.read()
        elif url is not None:
            # No proxies: the files a test serves live on this machine.
            opener = urllib.request.build_opener(
                urllib.request.ProxyHandler({}))
            with opener.open(url, timeout=MEDIA_DOWNLOAD_TIMEOUT) as resp:
                content = resp.read()
        else:
            raise ActionError(
                'storeMediaFile needs one of "data", "path" or "url"')
        # The engine names the file as Anki does (this version lower-cases
        # it) and returns that name.
        if deleteExisting and self.col.media.have(filename):
            self.col.media.trash_files([filename])
        return self.col.media.write_data(filename, content)

    def getMediaFilesNames(self, pattern="*"):
        folder = self.col.media.dir()
        return sorted(
            name for name in os.listdir(folder)
            if fnmatch.fnmatchcase(name, pattern)
            and os.path.isfile(os.path.join(folder, name)))

    def findCards(self, query):
        return list(self.col.find_cards(query))

    def changeDeck(self, cards, deck):
        self.col.set_deck(cards, self.col.decks.id(deck))
        return None

    def cardsInfo(self, cards):
        out = []
        for cid in cards:
            try:
                card = self.col.get_card(cid)
            except NotFoundError:
                out.append({})
                continue
            note = card.note()
            model = note.note_type()
            out.append({
                "cardId": card.id,
                "note": card.nid,
                "deckName": self.col.decks.name(card.did),
                "modelName": model["name"],
                "ord": card.ord,
                "fields": {f["name"]: {"value": note.fields[f["ord"]],
                                       "order": f["ord"]}
                           for f in model["flds"]},
                "type": card.type,
                "queue": card.queue,
                "due": card.due,
                "interval": card.ivl,
                "mod": card.mod,
            })
        return out

    def multi(self, actions):
        return [run_nested(self, a) for a in actions]

    def peerSwitches(self, **switches):
        """Ours, not AnkiConnect's: sets the named switches and returns all
        of them."""
        self.switches.update(switches)
        return dict(self.switches.values)

    def peerRequests(self):
        """Ours, not AnkiConnect's: how many requests have been answered
        before this one (for benchmarks)."""
        return self.requests_answered - 1


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


def respond(actions, request, log):
    """The reply to one HTTP request: (payload, content type)."""
    if request.method != "POST" or not request.body.strip():
        log(f"{request.method} {request.path}")
        return f"AnkiConnect v.{API_VERSION}".encode(), "text/plain"
    try:
        body = json.loads(request.body)
        if not isinstance(body, dict) or "action" not in body:
            raise ActionError('request must be a JSON object with an '
                              '"action"')
        log(f"POST {body['action']}")
        actions.requests_answered += 1
        result = run(actions, body["action"], body.get("params") or {})
        reply = {"result": result, "error": None}
    except Exception as e:  # noqa: BLE001 - every failure is reported
        reply = {"result": None, "error": message_of(e)}
    return json.dumps(reply).encode(), "application/json"


def seconds(text):
    value = float(text)
    if not _seconds(value):
        raise argparse.ArgumentTypeError(f"not a number of seconds: {text}")
    return value


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--collection", required=True,
                    help="folder holding collection.anki2 (created if needed)")
    ap.add_argument("--host", default="127.0.0.1")
    ap.add_argument("--port", type=int, default=0, help="0 picks a free port")
    ap.add_argument("--verbose", action="store_true",
                    help="log every request to stderr")
    ap.add_argument("--cards-in-note-type-deck", action="store_true",
                    help="addNote puts the cards in the note type's deck, "
                         "not the named one")
    ap.add_argument("--add-delay", type=seconds, default=0,
                    metavar="SECONDS", help="every addNote sleeps this long")
    ap.add_argument("--media-delay", type=seconds, default=0,
                    metavar="SECONDS",
                    help="storeMediaFile sleeps this long before storing")
    ap.add_argument("--client-timeout", type=seconds, default=CLIENT_TIMEOUT,
                    metavar="SECONDS",
                    help="drop a client whose request is not whole by then")
    args = ap.parse_args()

    switches = Switches(cardsInNoteTypeDeck=args.cards_in_note_type_deck,
                        addDelay=args.add_delay, mediaDelay=args.media_delay)

    def log(message):
        if args.verbose:
            print(f"anki-peer: {message}", file=sys.stderr, flush=True)

    os.makedirs(args.collection, exist_ok=True)
    col = Collection(os.path.join(args.collection, "collection.anki2"))
    actions = Actions(col, switches)
    stop = stop_signal()
    server = OneAtATimeServer(
        args.host, args.port, lambda request: respond(actions, request, log),
        client_timeout=args.client_timeout, log=log)
    announce(server.server_address)
    # Requests run on this thread, so none is in progress once serve()
    # returns and the collection can close.
    server.serve(stop)
    server.close()
    col.close()


if __name__ == "__main__":
    main()

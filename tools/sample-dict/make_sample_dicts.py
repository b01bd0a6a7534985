#!/usr/bin/env python3
"""Builds Lexicorn's sample dictionaries from the lexicon source files.

    python3 tools/sample-dict/make_sample_dicts.py [--src DIR] [--out DIR]

Reads data/sample/src/lexicon-*.txt (format described in
data/sample/README.md) and writes three files into data/sample/Dict/:

  collins.json       headword -> {"star", "readings", "defs"}
  LDOCE5_html.json   headword -> [{"index", "word", ["link"], "enWords"}]
  wordforms.json     inflected form -> headword

Both dictionaries are made from the same lexicon, but each file has the shape
of the dictionary format the app reads it as: Collins keeps one flat list of senses with
Collins-style part-of-speech labels, while the LDOCE file groups senses into
one entry per part of speech, with lower-case part-of-speech names, "●"
frequency marks, signposts, grammar codes and per-example audio file names.
Only the standard library is used, and the output is sorted so that
re-running the script on unchanged sources gives identical files.
"""

import argparse
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Collins part of speech -> (Chinese label, LDOCE part of speech, LDOCE
# Chinese label, default LDOCE grammar code).
POS = {
    "VERB": ("动词", "verb", "动词", ""),
    "N-COUNT": ("可数名词", "noun", "名词", "C"),
    "N-UNCOUNT": ("不可数名词", "noun", "名词", "U"),
    "N-VAR": ("可变名词", "noun", "名词", "C,U"),
    "N-PLURAL": ("复数名词", "noun", "名词", "plural"),
    "N-SING": ("单数名词", "noun", "名词", "singular"),
    "N-PROPER": ("专有名词", "noun", "名词", ""),
    "N-TITLE": ("称谓名词", "noun", "名词", ""),
    "ADJ": ("形容词", "adjective", "形容词", ""),
    "ADV": ("副词", "adverb", "副词", ""),
    "PREP": ("介词", "preposition", "介词", ""),
    "CONJ": ("连词", "conjunction", "连词", ""),
    "DET": ("限定词", "determiner", "限定词", ""),
    "PRON": ("代词", "pronoun", "代词", ""),
    "NUM": ("数词", "number", "数词", ""),
    "ORD": ("序数词", "number", "数词", ""),
    "QUANT": ("数量词", "determiner", "限定词", ""),
    "MODAL": ("情态动词", "modal verb", "情态动词", ""),
    "AUX": ("助动词", "auxiliary verb", "助动词", ""),
    "PHRASE": ("短语", "phrase", "短语", ""),
    "PHRASAL VERB": ("短语动词", "phrasal verb", "短语动词", ""),
    # "-" in the source: a note or cross-reference with no part of speech.
    "-": ("", "", "", ""),
}

# Collins frequency level -> LDOCE frequency mark.
LDOCE_STAR = {"5": "●●●", "4": "●●●", "3": "●●", "2": "●", "1": "", "": ""}

ENTRY_OPTIONS = {"forms", "title", "only", "ld-link", "ld-empty", "ld-reading-first-only"}
SENSE_OPTIONS = {"ld", "sign", "gram", "sub", "only"}
DICTIONARIES = {"collins", "ldoce"}

CJK = re.compile(r"[\u3400-\u9fff]")


class LexiconError(Exception):
    pass


def parse_options(fields, allowed, where):
    options = {}
    for field in fields:
        field = field.strip()
        if not field:
            continue
        key, sep, value = field.partition("=")
        if key not in allowed:
            raise LexiconError(f"{where}: unknown option {key!r}")
        options[key] = value.strip() if sep else True
    if options.get("only", "collins") not in DICTIONARIES:
        raise LexiconError(f"{where}: only= must be one of {sorted(DICTIONARIES)}")
    return options


def parse_lexicon(text, name="<lexicon>"):
    """Parses one lexicon source file into a list of entry dicts."""
    entries = []
    entry = None
    sense = None
    for number, raw in enumerate(text.splitlines(), 1):
        where = f"{name}:{number}"
        line = raw.strip()
        if not line or line.startswith("#"):
            continue
        if line.startswith("@"):
            fields = [f.strip() for f in line[1:].split("|")]
            fields += [""] * (3 - len(fields))
            headword, star, readings = fields[:3]
            if not headword:
                raise LexiconError(f"{where}: empty headword")
            if star not in LDOCE_STAR:
                raise LexiconError(f"{where}: star must be 1..5 or empty, not {star!r}")
            entry = {
                "headword": headword,
                "star": star,
                "readings": [r.strip() for r in readings.split("/") if r.strip()],
                "options": parse_options(fields[3:], ENTRY_OPTIONS, where),
                "senses": [],
                "where": where,
            }
            entries.append(entry)
            sense = None
        elif line.startswith("="):
            if sense is None:
                raise LexiconError(f"{where}: example before any sense")
            parts = [p.strip() for p in line[1:].split("|")]
            if len(parts) != 2 or not all(parts):
                raise LexiconError(f"{where}: an example needs 'English | 中文'")
            sense["examples"].append({"en": parts[0], "cn": parts[1]})
        else:
            if entry is None:
                raise LexiconError(f"{where}: sense before any headword")
            parts = [p.strip() for p in line.split("|")]
            if len(parts) < 3:
                raise LexiconError(f"{where}: a sense needs 'POS | 中文 | English'")
            pos, cn, en = parts[:3]
            if pos not in POS:
                raise LexiconError(f"{where}: unknown part of speech {pos!r}")
            if not CJK.search(cn):
                raise LexiconError(f"{where}: the Chinese definition has no Chinese in it")
            if not en:
                raise LexiconError(f"{where}: empty English definition")
            sense = {
                "pos": pos,
                "cn": cn,
                "en": en,
                "options": parse_options(parts[3:], SENSE_OPTIONS, where),
                "examples": [],
            }
            entry["senses"].append(sense)
    return entries


def resolve(entries):
    """Checks headwords, cross-references and word forms.

    Returns the wordforms mapping (inflected form -> headword).
    """
    by_headword = {}
    for e in entries:
        if e["headword"] in by_headword:
            raise LexiconError(f"{e['where']}: duplicate headword {e['headword']!r}")
        if not e["senses"]:
            raise LexiconError(f"{e['where']}: {e['headword']!r} has no senses")
        by_headword[e["headword"]] = e

    def in_dictionary(e, name):
        return e["options"].get("only", name) == name

    for e in entries:
        link = e["options"].get("ld-link")
        if link and (link not in by_headword or not in_dictionary(by_headword[link], "ldoce")):
            raise LexiconError(f"{e['where']}: ld-link={link} is not an LDOCE headword")
        if e["options"].get("ld-empty") and not link:
            raise LexiconError(f"{e['where']}: ld-empty only makes sense with ld-link")

    forms = {}
    for e in entries:
        for form in filter(None, (e["options"].get("forms") or "").split(",")):
            form = form.strip()
            if form == e["headword"]:
                raise LexiconError(f"{e['where']}: {form!r} is listed as a form of itself")
            if forms.get(form, e["headword"]) != e["headword"]:
                raise LexiconError(
                    f"{e['where']}: {form!r} is already a form of {forms[form]!r}")
            if not (in_dictionary(e, "collins") and in_dictionary(e, "ldoce")):
                raise LexiconError(f"{e['where']}: forms must point at a headword in both dictionaries")
            forms[form] = e["headword"]
    return forms


def sort_key(headword):
    return (headword.lower(), headword)


def build_collins(entries):
    out = {}
    for e in sorted(entries, key=lambda e: sort_key(e["headword"])):
        if e["options"].get("only", "collins") != "collins":
            continue
        defs = []
        for s in e["senses"]:
            if s["options"].get("only", "collins") != "collins":
                continue
            pos_cn = POS[s["pos"]][0]
            defs.append({
                "def_cn": s["cn"],
                "def_en": s["en"],
                "pos_cn": pos_cn,
                "pos_en": "" if s["pos"] == "-" else s["pos"],
                # Collins shows at most three examples per sense.
                "ext": [{"ext_cn": x["cn"], "ext_en": x["en"]} for x in s["examples"][:3]],
            })
        out[e["headword"]] = {"star": e["star"], "readings": list(e["readings"]), "defs": defs}
    return out


def speaker_name(headword, n):
    slug = re.sub(r"[^a-z0-9]+", "_", headword.lower()).strip("_")
    return f"{slug}_ex{n}.mp3"


def build_ldoce(entries):
    chosen = [e for e in sorted(entries, key=lambda e: sort_key(e["headword"]))
              if e["options"].get("only", "ldoce") == "ldoce"]
    out = {}
    for index, e in enumerate(chosen, 1):
        record = {"index": index, "word": e["headword"]}
        if e["options"].get("ld-link"):
            record["link"] = e["options"]["ld-link"]
        en_words = []
        if not e["options"].get("ld-empty"):
            readings = e["readings"]
            bre = readings[0] if readings else ""
            ame = readings[1] if len(readings) > 1 else bre
            # Only the more frequent words come with recorded examples.
            with_audio = e["star"] in ("4", "5")
            audio_count = 0
            groups = {}
            for s in e["senses"]:
                if s["options"].get("only", "ldoce") != "ldoce":
                    continue
                _, pos_en, pos_cn, default_gram = POS[s["pos"]]
                if pos_en not in groups:
                    first = not en_words
                    keep_reading = first or not e["options"].get("ld-reading-first-only")
                    groups[pos_en] = {
                        "title": e["options"].get("title", e["headword"]),
                        "star": LDOCE_STAR[e["star"]],
                        "readings": bre if keep_reading else "",
                        "brePron": bre if keep_reading else "",
                        "amePron": ame if keep_reading else "",
                        "pos_cn": pos_cn,
                        "pos_en": pos_en,
                        "defs": [],
                    }
                    en_words.append(groups[pos_en])
                sign_en, _, sign_cn = (s["options"].get("sign") or "").partition("/")
                exts = []
                for x in s["examples"]:
                    speaker = ""
                    if with_audio:
                        audio_count += 1
                        speaker = speaker_name(e["headword"], audio_count)
                    exts.append({"cn": x["cn"], "en": x["en"], "speaker": speaker})
                groups[pos_en]["defs"].append({
                    "def_cn": s["cn"],
                    "def_en": s["options"].get("ld") or s["en"],
                    "subTitle": s["options"].get("sub", ""),
                    "signpos_cn": sign_cn,
                    "signpos_en": sign_en,
                    "gram": s["options"].get("gram", default_gram),
                    "exts": exts,
                })
        record["enWords"] = en_words
        out[e["headword"]] = [record]
    return out


def dump_lines(obj, compact):
    """One top-level key per line, so that diffs of the data stay readable."""
    separators = (",", ":") if compact else (", ", ": ")
    lines = [json.dumps(k, ensure_ascii=False) + ":" + json.dumps(v, ensure_ascii=False, separators=separators)
             for k, v in obj.items()]
    return "{\n" + ",\n".join(lines) + "\n}\n"


def load_entries(src_dir):
    entries = []
    files = sorted(pathlib.Path(src_dir).glob("lexicon-*.txt"))
    if not files:
        raise LexiconError(f"no lexicon-*.txt files in {src_dir}")
    for path in files:
        entries += parse_lexicon(path.read_text(encoding="utf-8"), path.name)
    return entries


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--src", default=ROOT / "data/sample/src")
    parser.add_argument("--out", default=ROOT / "data/sample/Dict")
    args = parser.parse_args(argv)

    try:
        entries = load_entries(args.src)
        forms = resolve(entries)
    except LexiconError as error:
        print(f"make_sample_dicts: {error}", file=sys.stderr)
        return 1

    collins = build_collins(entries)
    ldoce = build_ldoce(entries)
    wordforms = dict(sorted(forms.items(), key=lambda kv: sort_key(kv[0])))

    out = pathlib.Path(args.out)
    out.mkdir(parents=True, exist_ok=True)
    (out / "collins.json").write_text(dump_lines(collins, compact=False), encoding="utf-8")
    (out / "LDOCE5_html.json").write_text(dump_lines(ldoce, compact=True), encoding="utf-8")
    (out / "wordforms.json").write_text(dump_lines(wordforms, compact=False), encoding="utf-8")
    print(f"collins.json: {len(collins)} headwords; LDOCE5_html.json: {len(ldoce)} headwords; "
          f"wordforms.json: {len(wordforms)} forms")
    return 0


if __name__ == "__main__":
    sys.exit(main())

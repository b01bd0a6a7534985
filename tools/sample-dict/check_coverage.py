#!/usr/bin/env python3
"""Checks that every English word of the sample book can be looked up.

    python3 tools/sample-dict/check_coverage.py [--book FILE] [--dict-dir DIR]

Every distinct English word of the book (lower-cased, punctuation stripped,
hyphenated words kept whole) must be found in each dictionary, either as a
headword or through wordforms.json. For a word w the lookup tries, in order:
w, its lower-case and upper-case forms, the same three with hyphens removed
("e-mail" -> "email"), and then each of those through wordforms.json
(inflected form -> headword). A word found as an LDOCE cross-reference must
also lead somewhere: its "link" target has to be in the file.

Prints a summary per dictionary and every word that is not covered; exits
with status 1 if any word is missing.
"""

import argparse
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
DICTIONARIES = ("collins.json", "LDOCE5_html.json")

# Hyphenation marks used by the book source ("vocab{-}ulary") are not part of
# the words.
HYPHENATION_MARK = "{-}"
WORD = re.compile(r"[A-Za-z]+(?:['\u2019-][A-Za-z]+)*")


def book_words(text):
    """Distinct lower-cased English words of the book source, in order of first use."""
    text = text.replace(HYPHENATION_MARK, "")
    seen = {}
    for match in WORD.finditer(text):
        seen.setdefault(match.group().lower(), None)
    return list(seen)


def candidates(word):
    forms = [word, word.lower(), word.upper()]
    forms += [f.replace("-", "") for f in forms if "-" in f]
    unique = []
    for f in forms:
        if f not in unique:
            unique.append(f)
    return unique


def look_up(word, headwords, wordforms):
    """Returns (headword, how) for the first rule that finds the word, or None."""
    tried = candidates(word)
    for form in tried:
        if form in headwords:
            return form, "headword"
    for form in tried:
        target = wordforms.get(form)
        if target is not None and target in headwords:
            return target, "wordform"
    return None


def broken_link(headword, dictionary):
    """For an LDOCE-shaped entry: the missing link target, if it has one."""
    records = dictionary.get(headword)
    if not isinstance(records, list):
        return None
    for record in records:
        link = record.get("link")
        if link and link not in dictionary:
            return link
    return None


def check(words, dictionary, wordforms):
    """Returns (found_as_headword, found_via_wordform, problems)."""
    direct = via_form = 0
    problems = []
    for word in words:
        hit = look_up(word, dictionary, wordforms)
        if hit is None:
            problems.append(f"{word}: not found")
            continue
        headword, how = hit
        missing = broken_link(headword, dictionary)
        if missing:
            problems.append(f"{word}: {headword!r} links to {missing!r}, which is missing")
            continue
        if how == "headword":
            direct += 1
        else:
            via_form += 1
    return direct, via_form, problems


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--book", default=ROOT / "data/sample/books/sample-book.txt")
    parser.add_argument("--dict-dir", default=ROOT / "data/sample/Dict")
    args = parser.parse_args(argv)

    words = book_words(pathlib.Path(args.book).read_text(encoding="utf-8"))
    dict_dir = pathlib.Path(args.dict_dir)
    wordforms = json.loads((dict_dir / "wordforms.json").read_text(encoding="utf-8"))
    print(f"{args.book}: {len(words)} distinct words")

    failed = False
    for name in DICTIONARIES:
        dictionary = json.loads((dict_dir / name).read_text(encoding="utf-8"))
        direct, via_form, problems = check(words, dictionary, wordforms)
        status = "OK" if not problems else f"{len(problems)} MISSING"
        print(f"{name}: {len(dictionary)} headwords; {direct} words found as headwords, "
              f"{via_form} through wordforms; {status}")
        for problem in problems:
            print(f"  {problem}")
        failed = failed or bool(problems)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Tests for the sample dictionary generator, the coverage checker and the
generated files themselves.

    python3 -m unittest discover -s tools/sample-dict
"""

import json
import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

import check_coverage  # noqa: E402
import make_sample_dicts as gen  # noqa: E402

DICT_DIR = HERE.parents[1] / "data/sample/Dict"


class BookWordsTest(unittest.TestCase):
    def test_tokenising(self):
        cases = [
            # (source text, expected distinct words)
            ("The cat. the CAT!", ["the", "cat"]),
            ("a well-known, second-hand book", ["a", "well-known", "second-hand", "book"]),
            ("my vocab{-}ulary grew", ["my", "vocabulary", "grew"]),
            ("Pi is 3.14, about 2.5 km", ["pi", "is", "about", "km"]),
            ("Mr. Green (She read it.)", ["mr", "green", "she", "read", "it"]),
            ("我每天读十页英文书。TV news", ["tv", "news"]),
            ("a dash - not a hyphen-", ["a", "dash", "not", "hyphen"]),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                self.assertEqual(check_coverage.book_words(text), expected)


class LookUpTest(unittest.TestCase):
    HEADWORDS = {"go", "TV", "email", "well-known", "kilometre", "Mr"}
    FORMS = {"went": "go", "kilometres": "kilometre", "ran": "run"}

    def test_rules(self):
        cases = [
            # (word, expected (headword, how) or None)
            ("go", ("go", "headword")),
            ("tv", ("TV", "headword")),                 # upper-case form
            ("e-mail", ("email", "headword")),          # hyphen removed
            ("well-known", ("well-known", "headword")), # hyphenated kept whole
            ("went", ("go", "wordform")),
            ("kilometres", ("kilometre", "wordform")),
            ("ran", None),                              # form of a missing headword
            ("mr", None),                               # title case is not one of the rules
            ("gone", None),
        ]
        for word, expected in cases:
            with self.subTest(word=word):
                self.assertEqual(check_coverage.look_up(word, self.HEADWORDS, self.FORMS), expected)

    def test_links_must_lead_somewhere(self):
        ldoce = {
            "grey": [{"index": 1, "word": "grey", "link": "gray", "enWords": []}],
            "gray": [{"index": 2, "word": "gray", "enWords": []}],
            "colour": [{"index": 3, "word": "colour", "link": "color", "enWords": []}],
        }
        words = ["grey", "colour"]
        _, _, problems = check_coverage.check(words, ldoce, {})
        self.assertEqual(problems, ["colour: 'colour' links to 'color', which is missing"])


LEXICON = """
@run | 5 | rʌn | forms=ran,runs
VERB | 跑 | To run is to go fast on foot. | ld=go fast on foot | sign=MOVE/移动 | gram=I
= one | 一
= two | 二
= three | 三
= four | 四
N-COUNT | 跑步 | A run is a spell of running.
= a run | 一次跑步
@grey | 4 | ɡreɪ | ld-link=gray | ld-empty
ADJ | 灰色的 | Grey is between black and white.
@gray | 3 | ɡreɪ | only=ldoce
ADJ | 灰色的 | Gray is between black and white.
@cold | 5 | kəʊld / koʊld | ld-reading-first-only
ADJ | 冷的 | Cold means not warm.
N-COUNT | 感冒 | A cold is a mild illness.
@a lot of | |
- | 许多 | Many or much.
"""


class GeneratorTest(unittest.TestCase):
    def setUp(self):
        self.entries = gen.parse_lexicon(LEXICON)
        self.forms = gen.resolve(self.entries)
        self.collins = gen.build_collins(self.entries)
        self.ldoce = gen.build_ldoce(self.entries)

    def test_collins_shape(self):
        run = self.collins["run"]
        self.assertEqual(run["readings"], ["rʌn"])
        self.assertEqual([d["pos_en"] for d in run["defs"]], ["VERB", "N-COUNT"])
        self.assertEqual([d["pos_cn"] for d in run["defs"]], ["动词", "可数名词"])
        self.assertEqual(len(run["defs"][0]["ext"]), 3)  # four examples, Collins keeps three
        self.assertEqual(run["defs"][0]["def_en"], "To run is to go fast on foot.")
        self.assertEqual(self.collins["a lot of"]["readings"], [])
        self.assertEqual(self.collins["a lot of"]["defs"][0]["pos_en"], "")
        self.assertNotIn("gray", self.collins)

    def test_ldoce_shape(self):
        [run] = self.ldoce["run"]
        self.assertEqual([e["pos_en"] for e in run["enWords"]], ["verb", "noun"])
        verb = run["enWords"][0]
        self.assertEqual(verb["star"], "●●●")
        sense = verb["defs"][0]
        self.assertEqual((sense["def_en"], sense["signpos_en"], sense["signpos_cn"], sense["gram"]),
                         ("go fast on foot", "MOVE", "移动", "I"))
        self.assertEqual(len(sense["exts"]), 4)
        self.assertEqual([x["speaker"] for x in sense["exts"]][:2], ["run_ex1.mp3", "run_ex2.mp3"])
        self.assertEqual(run["enWords"][1]["defs"][0]["gram"], "C")  # from N-COUNT
        self.assertEqual(self.ldoce["grey"], [{"index": 4, "word": "grey", "link": "gray", "enWords": []}])
        [cold] = self.ldoce["cold"]
        self.assertEqual([(e["title"], e["brePron"], e["amePron"]) for e in cold["enWords"]],
                         [("cold", "kəʊld", "koʊld"), ("cold", "", "")])
        self.assertEqual(self.forms, {"ran": "run", "runs": "run"})

    def test_rejected_sources(self):
        cases = [
            ("unknown part of speech", "@x | 1 | x\nNOUN | 某 | Something."),
            ("example before a sense", "@x | 1 | x\n= an example | 例子"),
            ("star out of range", "@x | 6 | x\nADJ | 某 | Something."),
            ("no Chinese in the Chinese definition", "@x | 1 | x\nADJ | some | Something."),
            ("example without translation", "@x | 1 | x\nADJ | 某 | Something.\n= only English"),
            ("unknown option", "@x | 1 | x | colour=red\nADJ | 某 | Something."),
            ("entry without senses", "@x | 1 | x\n@y | 1 | y\nADJ | 某 | Something."),
            ("duplicate headword", "@x | 1 | x\nADJ | 某 | S.\n@x | 1 | x\nADJ | 某 | S."),
            ("form of two headwords", "@x | 1 | x | forms=z\nADJ | 某 | S.\n@y | 1 | y | forms=z\nADJ | 某 | S."),
            ("form of itself", "@x | 1 | x | forms=x\nADJ | 某 | S."),
            ("link to a missing headword", "@x | 1 | x | ld-link=y\nADJ | 某 | S."),
            ("link to a Collins-only headword",
             "@x | 1 | x | ld-link=y\nADJ | 某 | S.\n@y | 1 | y | only=collins\nADJ | 某 | S."),
            ("forms of a one-dictionary headword", "@x | 1 | x | only=ldoce | forms=xs\nADJ | 某 | S."),
        ]
        for name, source in cases:
            with self.subTest(name):
                with self.assertRaises(gen.LexiconError):
                    gen.resolve(gen.parse_lexicon(source))


class GeneratedFilesTest(unittest.TestCase):
    """Checks the committed files in data/sample/Dict."""

    @classmethod
    def setUpClass(cls):
        def load(name):
            return json.loads((DICT_DIR / name).read_text(encoding="utf-8"))
        cls.collins = load("collins.json")
        cls.ldoce = load("LDOCE5_html.json")
        cls.wordforms = load("wordforms.json")

    def assertKeys(self, obj, required, optional=(), where=""):
        keys = set(obj)
        self.assertTrue(set(required) <= keys, f"{where}: missing {set(required) - keys}")
        self.assertTrue(keys <= set(required) | set(optional), f"{where}: extra {keys - set(required) - set(optional)}")

    def test_collins_records(self):
        for headword, word in self.collins.items():
            self.assertKeys(word, ["star", "readings", "defs"], where=headword)
            self.assertIn(word["star"], ["", "1", "2", "3", "4", "5"], headword)
            self.assertTrue(all(isinstance(r, str) and r for r in word["readings"]), headword)
            self.assertTrue(word["defs"], headword)
            for sense in word["defs"]:
                self.assertKeys(sense, ["def_cn", "def_en", "pos_cn", "pos_en", "ext"], where=headword)
                self.assertLessEqual(len(sense["ext"]), 3, headword)
                for ext in sense["ext"]:
                    self.assertKeys(ext, ["ext_cn", "ext_en"], where=headword)

    def test_ldoce_records(self):
        for headword, records in self.ldoce.items():
            self.assertIsInstance(records, list, headword)
            for record in records:
                self.assertKeys(record, ["index", "word", "enWords"], ["link"], where=headword)
                self.assertIsInstance(record["index"], int)
                self.assertEqual(record["word"], headword)
                if "link" in record:
                    self.assertIn(record["link"], self.ldoce, headword)
                else:
                    self.assertTrue(record["enWords"], headword)
                for entry in record["enWords"]:
                    self.assertKeys(entry, ["title", "star", "readings", "brePron", "amePron",
                                            "pos_cn", "pos_en", "defs"], where=headword)
                    for sense in entry["defs"]:
                        self.assertKeys(sense, ["def_cn", "def_en", "subTitle", "signpos_cn",
                                                "signpos_en", "gram", "exts"], where=headword)
                        for ext in sense["exts"]:
                            self.assertKeys(ext, ["cn", "en", "speaker"], where=headword)

    def test_link_pairs(self):
        links = {h: r["link"] for h, rs in self.ldoce.items() for r in rs if "link" in r}
        mutual = {frozenset((a, b)) for a, b in links.items() if links.get(b) == a}
        self.assertEqual(mutual, {frozenset(("colour", "color"))})
        one_way = [a for a, b in links.items() if links.get(b) != a]
        self.assertGreaterEqual(len(one_way), 2)

    def test_wordforms_point_at_both_dictionaries(self):
        for form, headword in self.wordforms.items():
            with self.subTest(form=form):
                self.assertIn(headword, self.collins)
                self.assertIn(headword, self.ldoce)

    def test_sizes(self):
        self.assertGreaterEqual(len(self.collins), 300)
        self.assertGreaterEqual(len(self.ldoce), 300)
        self.assertGreaterEqual(len(self.wordforms), 150)


if __name__ == "__main__":
    unittest.main()

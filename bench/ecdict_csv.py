#!/usr/bin/env python3
"""Writes and reads ECDICT-style CSV files for the import benchmark.

    ecdict_csv.py write PATH ROWS   writes ROWS rows shaped like ECDICT's own
                                    CSV, with Python's csv writer
    ecdict_csv.py read PATH [RUNS]  reads PATH with Python's csv module RUNS
                                    times; prints "rows N seconds S" with the
                                    median time of the runs

The rows follow the real file: about half the headwords are phrases, the
Chinese translations run to several lines (written as the two characters
backslash-n) of 50 to 300 bytes, phonetics now and then use the Cyrillic
letters that look like IPA ones, one row in eight names its forms in the
exchange column, and a field is quoted when it holds a comma or a quote.
The same seed always gives the same file.
"""

import csv
import random
import statistics
import sys
import time

HEADER = ["word", "phonetic", "definition", "translation", "pos", "collins", "oxford",
          "tag", "bnc", "frq", "exchange", "detail", "audio"]

SYLLABLES = ["ab", "an", "ba", "be", "con", "de", "dis", "el", "en", "er", "ex", "fa", "ga", "hi",
             "in", "ing", "ja", "ka", "la", "li", "ment", "mo", "na", "ne", "or", "pa", "per", "pro",
             "ra", "re", "sa", "se", "ta", "ter", "tion", "to", "un", "va", "ver", "wa", "xe", "zo"]
COMMON = ["take", "off", "a", "great", "deal", "of", "in", "on", "the", "out", "up", "by", "for",
          "make", "run", "set", "get", "put", "at", "to", "with", "over", "back", "down", "one's"]
PARTS = ["n.", "v.", "vt.", "vi.", "adj.", "adv.", "prep.", "conj.", "pron.", "int.", "abbr.", "a."]
CHINESE = ["书", "籍", "预订", "登记", "跑", "奔跑", "美丽的", "快速地", "研究", "学习", "银行", "河岸",
           "放弃", "抛弃", "遗弃", "沉溺", "放纵", "狂热", "起飞", "脱下", "大量", "许多", "离开", "成功",
           "模仿", "取消", "休假", "突然", "流行", "人", "事物", "状态", "方法", "过程", "使", "化"]
TAGS = ["zk", "gk", "cet4", "cet6", "ky", "toefl", "ielts", "gre"]
ENGLISH = ["the", "state", "of", "being", "a", "kind", "act", "person", "who", "something", "that",
           "is", "used", "to", "make", "or", "move", "from", "one", "place", "another", "quality",
           "having", "great", "number", "small", "large", "part", "in", "way", "time", "work"]
# ECDICT's phonetics: mostly IPA, some with Cyrillic lookalikes (ә for ə).
SOUNDS = ["ə", "æ", "ʌ", "ɪ", "iː", "uː", "ɔː", "ɜː", "eɪ", "aɪ", "əʊ", "b", "d", "f", "g", "k", "l",
          "m", "n", "p", "r", "s", "t", "v", "w", "z", "ʃ", "θ", "ð", "ŋ", "ә", "'"]


def headword(rng, i):
    """A word (unique by its index) or, for half the rows, a phrase around one."""
    stem = ""
    n = i
    while True:
        stem += SYLLABLES[n % len(SYLLABLES)]
        n //= len(SYLLABLES)
        if n == 0:
            break
    if rng.random() < 0.5:
        return stem if rng.random() < 0.9 else stem.capitalize()
    words = [rng.choice(COMMON) for _ in range(rng.randint(1, 4))]
    words.insert(rng.randint(0, len(words)), stem)
    return " ".join(words)


def phonetic(rng, is_phrase):
    if is_phrase or rng.random() < 0.3:
        return ""
    return "".join(rng.choice(SOUNDS) for _ in range(rng.randint(3, 9)))


def chinese_line(rng, parts):
    # Senses within a line are separated by commas or the Chinese semicolon.
    senses = ["".join(rng.choice(CHINESE) for _ in range(rng.randint(1, 4))) for _ in range(rng.randint(1, 6))]
    text = "".join(s + (", " if rng.random() < 0.4 else "；") for s in senses[:-1]) + senses[-1]
    lead = rng.random()
    if lead < 0.15:
        return "[网络] " + text
    if lead < 0.2:
        return "[计] " + text
    return rng.choice(parts) + " " + text


def english_line(rng, parts):
    words = [rng.choice(ENGLISH) for _ in range(rng.randint(6, 24))]
    if rng.random() < 0.4:
        words[rng.randrange(len(words))] += ","
    if rng.random() < 0.05:
        words[rng.randrange(len(words))] = '"' + rng.choice(ENGLISH) + '"'
    return rng.choice(parts) + " " + " ".join(words)


def row(rng, i):
    word = headword(rng, i)
    is_phrase = " " in word
    # A row's lines share a few parts of speech, so English and Chinese
    # lines of the same part pair up as they do in the real file.
    parts = rng.sample(PARTS, rng.randint(1, 3))
    if is_phrase:
        lines = 1 if rng.random() < 0.7 else 2
    else:
        lines = rng.randint(3, 8) if rng.random() < 0.3 else rng.randint(1, 2)
    translation = "\\n".join(chinese_line(rng, parts) for _ in range(lines))
    definition = ""
    if rng.random() < (0.2 if is_phrase else 0.7):
        definition = "\\n".join(english_line(rng, parts) for _ in range(rng.randint(1, 3)))
    pos = ""
    if not is_phrase and rng.random() < 0.3:
        a = rng.randint(1, 99)
        pos = "n:%d/v:%d" % (a, 100 - a)
    collins = str(rng.randint(0, 5)) if rng.random() < 0.1 else ""
    oxford = "1" if rng.random() < 0.02 else ("0" if rng.random() < 0.1 else "")
    tag = " ".join(rng.sample(TAGS, rng.randint(1, 4))) if rng.random() < 0.1 else ""
    bnc = str(rng.randint(1, 60000)) if rng.random() < 0.3 else "0"
    frq = str(rng.randint(1, 60000)) if rng.random() < 0.3 else "0"
    exchange = ""
    if not is_phrase and rng.random() < 0.25:  # about one row in eight, as half are phrases
        if rng.random() < 0.8:
            exchange = "p:%sed/d:%sed/i:%sing/3:%ss" % (word, word, word, word)
        else:  # the row is itself a form of another headword
            exchange = "0:%s/1:p" % word[:-1]
    return [word, phonetic(rng, is_phrase), definition, translation, pos, collins, oxford, tag, bnc, frq,
            exchange, "", ""]


def write(path, rows):
    rng = random.Random(7)
    with open(path, "w", newline="", encoding="utf-8") as f:
        writer = csv.writer(f)
        writer.writerow(HEADER)
        for i in range(rows):
            writer.writerow(row(rng, i))


def read(path, runs):
    times = []
    rows = 0
    for _ in range(runs):
        start = time.perf_counter()
        with open(path, newline="", encoding="utf-8") as f:
            rows = sum(1 for _ in csv.reader(f))
        times.append(time.perf_counter() - start)
    print("rows %d seconds %.6f" % (rows, statistics.median(times)))


if __name__ == "__main__":
    if len(sys.argv) >= 4 and sys.argv[1] == "write":
        write(sys.argv[2], int(sys.argv[3]))
    elif len(sys.argv) >= 3 and sys.argv[1] == "read":
        read(sys.argv[2], int(sys.argv[3]) if len(sys.argv) > 3 else 1)
    else:
        sys.exit(__doc__)

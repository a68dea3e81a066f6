"""Compares the languages of lumowatch's texts with each other and with the code.

Every id has a text in each language, with the same arguments; a plural stem has every form that the
language's rule can call for; every id that the code names exists, and no other does.

usage: check_strings.py FOLDER
"""

import pathlib
import re
import sys

FORMS = {"en": ("sing", "zeromany"), "de": ("sing", "zeromany"), "es": ("sing", "zeromany"),
         "fr": ("zerosing", "many")}
SUFFIX = re.compile(r"_(sing|zeromany|zerosing|many)$")
DIRECTIVE = re.compile(r"%(?:%|[+.$\d]*[A-Za-z])")
NAMED = re.compile(r'"(lumowatch_\w+)"')


def entries_of(path):
    """{id: (line number, text)} of a strings file whose texts stand in one line each."""
    entries, msgid = {}, None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        found = re.match(r'(msgid|msgstr) "(.*)"$', line)
        if not found:
            continue
        if found.group(1) == "msgid":
            msgid = found.group(2)
        elif msgid:
            entries[msgid] = (number, found.group(2))
    return entries


def arguments_of(text):
    return sorted(word for word in DIRECTIVE.findall(text) if word != "%%")


def stems_of(ids):
    return {SUFFIX.sub("", name) for name in ids if SUFFIX.search(name)}


def plain_ids(ids):
    return {name for name in ids if not SUFFIX.search(name)}


def faults_of_language(path, language, entries, reference):
    for stem in sorted(stems_of(reference)):
        for form in FORMS[language]:
            if f"{stem}_{form}" not in entries:
                yield f"{path}: {stem} lacks the form {form}"
    for name in sorted(plain_ids(reference) - plain_ids(entries)):
        yield f"{path}: {name} is missing"
    for name in sorted(plain_ids(entries) - plain_ids(reference)):
        yield f"{path}:{entries[name][0]}: {name} exists in this language only"
    for name, (number, text) in entries.items():
        model = reference.get(name) or reference.get(SUFFIX.sub("_zeromany", name))
        if model and arguments_of(text) != arguments_of(model[1]):
            yield f"{path}:{number}: {name} takes other arguments than in English"


def faults_of_code(folder, reference):
    known = plain_ids(reference) | stems_of(reference)
    used = set()
    for source in sorted(folder.glob("*.cpp")):
        for number, line in enumerate(source.read_text(encoding="utf-8").splitlines(), 1):
            for name in NAMED.findall(line):
                used.add(name)
                if name not in known:
                    yield f"{source}:{number}: there is no text {name}"
    for name in sorted(known - used):
        yield f"{folder}: no code uses {name}"


def main():
    folder = pathlib.Path(sys.argv[1])
    paths = {language: folder / "strings" / f"strings.{language}.po" for language in FORMS}
    texts = {language: entries_of(path) for language, path in paths.items()}
    if not texts["en"]:
        sys.exit("there are no English texts")
    faults = [fault for language in FORMS for fault in
              faults_of_language(paths[language], language, texts[language], texts["en"])]
    faults += faults_of_code(folder, texts["en"])
    print("\n".join(faults) or f"{len(texts['en'])} texts in {len(FORMS)} languages")
    return 1 if faults else 0


sys.exit(main())

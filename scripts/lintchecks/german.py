"""docs/german-texts.md must list each German text of the product with its English meaning.

A literal counts as German if it has a letter that English lacks, or a word of the list below. Words and names that look
the same in both languages are not found.
"""

import re

TABLE = "docs/german-texts.md"

_FOLDERS = ("base/", "testing/")
# Adjacent literals are one text.
_LITERALS = re.compile(
    r'(?P<comment>//[^\n]*|/\*.*?\*/)'
    r'|(?P<include>^[ \t]*#[ \t]*include[^\n]*)'
    r"|(?P<character>(?<![0-9A-Za-z_])L?'(?:\\.|[^'\\\n])+')"
    r'|(?P<text>(?:L?"(?:\\.|[^"\\\n])*"\s*)+)',
    re.DOTALL | re.MULTILINE,
)
_LETTERS = re.compile("[äöüßÄÖÜ]")
_WORDS = re.compile(
    r"(?<![\w.<-])(?:"
    + "|".join("""
    abbruch absturz aktivieren alle allokationen anteil archiven argumente auf aufruf aus ausgabe ausnahme bedingung
    bedingungen befehle befunde beginn behoben bei beim bestanden datei datenverzeichnis datenverzeichnisse davor dazu
    deaktiviert dem den der des die diese dieser diverses division dort durchsuchtes duplikat ein eine einen ende
    erfolgreich ergebnisse etwa fall fehlende fehlen fehler fehlerhaft fehlerhafte fehlgeschlagen fehlgeschlagene
    fehlt fortsetzen ganze gemeldet gemischten gescheiterter grenze grund haltepunkt hat hier hilfe ihr im ist kann
    kein keine keinen klasse klassen kleiner konfiguration konnte konnten langsamer lauf laufs letzte mal maschine
    mehr mit modul nach namen nennt nicht nichts noch nr nur oder ohne optionen ordner prozess prozessende reihenfolge
    schlecht schneller schon schreiben seit seite setze siehe sonst speicher speichermangel sprung stapel startwert
    stelle suchen systemfehler tasten teil tempo testfall testfalls text und unbekannt unbekannte unbekanntem
    unpassendes unterbrechung verlauf verschlechtert verschlechterte versuch verzeichnis vom von vorheriger
    wahrscheinlichkeit warnung wecker weniger wird wurde zeile zeilen zeit zu zum zur zusammenfassung
    """.split())
    + r")(?![\w.=-]*[=\w])",
    re.IGNORECASE,
)
# Whole tags, and parts of tags whose attributes the code concatenates.
_MARKUP = re.compile(r'<[^<>]*>|\n|"? [a-z-]+="|"/?>')
_CONVERSION = re.compile(r"%(?:[-+#0]*[\d.*]*(?:I64|hh?|ll?|w|z)?[a-zA-Z])")


def check(tree):
    known = "\n".join(_listed(tree.text_of(TABLE))) if TABLE in tree.files else ""
    for name in tree.files:
        if name.startswith(_FOLDERS) and name.endswith((".h", ".cpp", ".js")):
            source = tree.text_of(name)
            # Literals in JavaScript are always in apostrophes.
            for number, text in texts_of(source.replace("'", '"') if name.endswith(".js") else source):
                if text not in known:
                    yield f'{name}:{number}: "{text}" is missing in {TABLE}'


def _listed(table):
    """The texts in the first column."""
    for line in table.splitlines():
        if line.startswith("| `"):
            yield from (_clean(text) for text in re.findall("`([^`]*)`", line.split(" | ")[0]))


def texts_of(source):
    """Line number and text of each German literal: without markup, and with "..." for each inserted value."""
    for match in _LITERALS.finditer(source):
        if match["text"] is None:
            continue
        joined = "".join(re.findall(r'"((?:\\.|[^"\\\n])*)"', match["text"]))
        joined = re.sub(r"\\u([0-9A-F]{4})", lambda escape: chr(int(escape[1], 16)), joined)
        joined = re.sub(r"\\(.)", lambda escape: {"n": "\n", "t": "\n"}.get(escape[1], escape[1]), joined)
        number = source.count("\n", 0, match.start()) + 1
        for piece in _MARKUP.split(joined):
            text = _clean(_CONVERSION.sub("...", piece).replace("%%", "%"))
            if _LETTERS.search(text) or _WORDS.search(text):
                yield number, text


def _clean(text):
    return re.sub(r"[ \t]+", " ", text.replace("\\|", "|")).strip()

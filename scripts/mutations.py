"""The small changes that scripts/mutate.py makes to a C++ source, one at a time.

Rules are plain patterns over the text, which has this project's format. What they make of it need not compile."""
import re
from typing import Iterator, NamedTuple


class Mutant(NamedTuple):
    """One changed source."""
    file: str
    line: int
    function: str
    original: str  # the text of the line
    change: str  # that line as changed, or what became of its statement
    text: str  # the whole source

    @property
    def key(self) -> tuple[str, str, str, str]:
        """Names it whatever becomes of the lines in front of it."""
        return self.file, self.function, self.original, self.change


# Not in comments, texts and preprocessor lines.
TOKENS = [(re.compile(pattern), replacement) for pattern, replacement in [
    (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r"!(?=[\w(])", ""),
    (r" \+ ", " - "), (r" - ", " + "), (r" \+= ", " = "), (r" \|= ", " = "), (r"\+\+", "--"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\bValidity::Placeholder\b", "Validity::FromReport"), (r"\bValidity::FromReport\b", "Validity::Placeholder"),
    (r"(?<![!=]= )\bkSuccess\b", "kGeneralFailure"), (r"\bkGeneralFailure\b", "kSuccess"),
    (r"\bkToolOrXmlFailed\b", "kGeneralFailure"),
    (r"\bkFailure\b", "msraid::kResult"), (r"\bkResult\b", "msraid::kFailure"), (r"\bkOperation\b", "kFailure"),
    (r"\bbegin\(\)", "end()"), (r"\bend\(\)", "begin()"),
    (r"\bfront\(\)", "back()"), (r"\bback\(\)", "front()"), (r"\bpop_back\(\)", "pop_front()"),
    (r"\bstd::prev\(", "std::next("), (r"\bstd::next\(", "std::prev("), (r"\bstd::(?:prev|next)\(", "("),
    (r"\bfind\((?![^()]*\) [!=]=)", "rfind("), (r"\bfind_first_", "find_last_"), (r"\bfind_last_", "find_first_"),
    (r"\bbreak;", "continue;"), (r"\bcontinue;", "break;"),
    (r"\{(&?\w+), (&?\w+)", r"{\2, \1"),
    # A condition without any operator that could be changed instead.
    (r"\b(if|while) \(([^!=<>&|{}]*)\) \{", r"\1 (!(\2)) {"),
    (r"(?<= )([\w.:]+\([^()]*(?:\(\))?\)) \? ", r"!\1 ? "),
    # A failure that is not passed on.
    (r"\breturn ([A-Z][\w:]*\([^?{}]*\));", r"static_cast<void>(\1); return kSuccess;"),
]]
NUMBER = re.compile(r"(?<![\w.])(\d+)(U?)(?![\w.])")
TEXT = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
CHARACTER = re.compile(r"'([^'\\])'")
NOT_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|^[ ]*#[^\n]*|"(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\]|\\.)+\'|^using [^\n]*',
                      re.DOTALL | re.MULTILINE)
NO_STATEMENT = re.compile(r"(if|for|while|else|return|break|continue|try|using|case|default|public|private|protected)\b"
                          r"|[{}#:\])&|?]")
DECLARATION = re.compile(r"(?!const OperationTrace)(?:static |const |constexpr |auto |unsigned |long |bool "
                         r"|(?:std::)?[\w:<>]+[&*]? (?:\*?const )?\w+(?: =|;|\(|\{))")


FUNCTION = re.compile(r"^\w[^\n]*?(~?\w+)\(", re.MULTILINE)


class Statement(NamedTuple):
    start: int
    end: int
    indent: int
    text: str


def blanked(source: str, texts_too: bool = True) -> str:
    """The source with spaces for what is no code; the positions stay."""
    def blank(match: re.Match) -> str:
        is_text = match[0][0] in "\"'"
        return match[0] if is_text and not texts_too else re.sub(r"[^\n]", " ", match[0])
    return NOT_CODE.sub(blank, source)


def statements(code: str) -> Iterator[Statement]:
    """Those inside functions, also where they take several lines."""
    before = ";"
    for match in re.finditer(r"^([ ]*)(\S[^\n]*)$", code, re.MULTILINE):
        indent, last = len(match[1]), before[-1]
        before = match[2].rstrip()
        if indent < 4 or last not in ";{}" or re.match(r"(?!return\b)" + NO_STATEMENT.pattern, match[2]):
            continue
        depth = 0
        for end in range(match.start(2), len(code)):
            depth += (code[end] in "({") - (code[end] in ")}")
            if depth == 0 and code[end] == ";":
                yield Statement(match.start(2), end + 1, indent, code[match.start(2):end + 1])
                break


def token_changes(code: str) -> Iterator[tuple[int, int, str]]:
    for pattern, replacement in TOKENS:
        for match in pattern.finditer(code):
            yield match.start(), match.end(), match.expand(replacement)
    for match in NUMBER.finditer(code):
        for number in (int(match[1]) + 1, int(match[1]) - 1):
            if number >= 0 or not match[2]:
                yield match.start(), match.end(), f"{number}{match[2]}"


def text_changes(source: str, code_and_texts: str) -> Iterator[tuple[int, int, str]]:
    """Each text loses a character: a short one, such as a set of characters, each in turn; others their last."""
    for match in TEXT.finditer(code_and_texts):
        characters = re.findall(r"\\.|[^\\]", match[1])
        if not characters:
            yield match.start(1), match.end(1), "x"
        for at in range(0 if len(characters) <= 4 else len(characters) - 1, len(characters)):
            yield match.start(1), match.end(1), "".join(characters[:at] + characters[at + 1:])
    for match in CHARACTER.finditer(code_and_texts):
        yield match.start(1), match.end(1), chr(ord(source[match.start(1)]) + 1)


def statement_changes(source: str, code: str) -> Iterator[tuple[int, int, str, str]]:
    """Statements left out, and neighbours in the other order."""
    previous = None
    for statement in statements(code):
        start, end, indent, text = statement
        if text.startswith("return"):
            opening = [line for line in code[:start].split("\n")[:-1]
                       if line.strip() and len(line) - len(line.lstrip()) < indent][-1].strip()
            closing = code[end:].lstrip().split("\n")[0].strip()
            if closing == "}" and re.match(r"if|for|while|\} else", opening):
                yield start, end, ";", f"left out behind: {opening}"
            continue
        is_declaration = bool(DECLARATION.match(text))
        if not is_declaration:
            yield start, end, ";", "left out"
        if text.startswith("const OperationTrace"):
            continue
        if previous and previous.indent == indent and not code[previous.end:start].strip():
            other_is_declaration = bool(DECLARATION.match(previous.text))
            name = re.match(r"[^=(]*?(\w+)(?: =|;|\(|\{)", previous.text) if other_is_declaration else None
            if not (is_declaration and other_is_declaration) and "(" in text and "(" in previous.text and not (
                    name and re.search(rf"\b{name[1]}\b", text)):
                yield (previous.start, end,
                       source[start:end] + source[previous.end:start] + source[previous.start:previous.end],
                       f"changes places with: {source[start:end].splitlines()[0]}")
        previous = statement


def mutants(file: str, source: str) -> Iterator[Mutant]:
    """All mutants of a source, in the order of its lines, each once."""
    code = blanked(source)
    changes = [(*change, "") for change in token_changes(code)]
    changes += [(*change, "") for change in text_changes(source, blanked(source, texts_too=False))]
    changes += statement_changes(source, code)
    seen = {source}
    for start, end, replacement, change in sorted(changes):
        text = source[:start] + replacement + source[end:]
        if text in seen:
            continue
        seen.add(text)
        line_start = source.rfind("\n", 0, start) + 1
        line_end = source.find("\n", end)
        yield Mutant(file, source.count("\n", 0, start) + 1, (FUNCTION.findall(code, 0, start) or ["-"])[-1],
                     source[line_start:source.find("\n", start)].strip(),
                     change or " ".join((source[line_start:start] + replacement + source[end:line_end]).split()),
                     text)

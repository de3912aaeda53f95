"""The small faults that scripts/mutants puts into C++ sources.

A fault replaces a few tokens of a file. Most can also be compiled into the program beside the original code,
and the program chooses one of them, or none, when it runs: WithChoices.
"""
import collections
import re

TOKEN = re.compile(r"""
    (?P<skip>//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n\\]|\\.)*|\[\[[^\]]*\]\])
  | (?P<text>(?:u8|u|U|L)?R"(?P<end>[^(]*)\(.*?\)(?P=end)"|(?:u8|u|U|L)?"(?:[^"\\]|\\.)*"
      |(?<![0-9A-Fa-f])(?:u8|u|U|L)?'(?:[^'\\]|\\.)+')
  | (?P<number>\d(?:[\w.']|(?<=[eE])[+-])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<sign><=>|<<=|>>=|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|\S)
""", re.VERBOSE | re.DOTALL | re.MULTILINE)
Token = collections.namedtuple("Token", "kind text begin end")
# What replaces text[begin:end] of a file; the name and the text of its line tell it from others.
Fault = collections.namedtuple("Fault", "file line text name begin end new")

SIGNS = {
    "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "+=": ["-="], "-=": ["+="], "++": ["--"],
    "--": ["++"], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "*": ["/"],
}
SPACED = set(SIGNS) - {"++", "--"}
# What a statement that can be taken out does not begin with.
DECLARING = set("alignas asm auto bool case char class const constexpr consteval constinit default do "
                "double else enum extern float for friend goto if inline int long mutable namespace "
                "operator private protected public return short signed static static_assert struct "
                "switch template throw try typedef typename union unsigned using virtual while "
                "assert co_return".split())

ASSIGNING = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
# Functions for which the order of their arguments does not matter.
COMMUTING = re.compile(r"_mm\d*_(or|and|xor|adds?|cmpn?eq|testn?z|testn?|min|max)_\w+|max|min|swap")


class Source:
    """The tokens of a file, with the brackets that belong together and what each brace encloses."""

    def __init__(self, text):
        self.text = text
        self.tokens = [Token(m.lastgroup if m.lastgroup != "end" else "text", m[0], m.start(), m.end())
                       for m in TOKEN.finditer(text) if not m["skip"]]
        self.partner = {}
        self.parents = []  # of each token, the innermost open bracket
        opened = []
        for index, token in enumerate(self.tokens):
            if token.text in ("}", ")", "]") and opened:
                self.partner[index] = opened[-1]
                self.partner[opened.pop()] = index
            self.parents.append(opened[-1] if opened else None)
            if token.text in ("{", "(", "["):
                opened.append(index)

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def header(self, brace):
        """The words before a brace, back to the end of what stands before them."""
        words, index = [], brace - 1
        while index >= 0 and self.word(index) not in (";", "{", "}"):
            words.append(self.word(index))
            index = self.partner[index] - 1 if self.word(index) == ")" and index in self.partner else index - 1
        return words[::-1]

    def braces(self, index):
        """The headers of the braces around a token, the innermost first."""
        parent = self.parents[index]
        while parent is not None:
            if self.word(parent) == "{":
                yield self.header(parent)
            parent = self.parents[parent]

    def is_code(self, index):
        """Whether the innermost braces around a token hold statements."""
        header = next(self.braces(index), ["namespace"])
        return not header or not {"namespace", "class", "struct", "union", "enum"} & set(header)

    def returns_bool(self, index):
        for header in self.braces(index):
            if "]" in header:
                return False
            if ")" in header and "bool" in header[:header.index(")")]:
                return True
        return False

    def begins_statement(self, index):
        before = self.word(index - 1)
        if before == ":":
            while before not in (";", "{", "}", "?", ""):
                if before in ("case", "default"):
                    return True
                index = self.partner[index - 1] if before in (")", "]") else index - 1
                before = self.word(index - 1)
            return False
        return before in (";", "{", "}", ")", "else")

    def statement(self, first):
        """The token behind the statement that can be taken out, or None if there is none at first."""
        token = self.tokens[first]
        if token.kind != "word" and token.text not in ("++", "--", "*") or token.text in DECLARING:
            return None
        if not self.is_code(first) or self.declares(first):
            return None
        index, assigned, called = first, False, token.text in ("break", "continue", "++", "--")
        while index < len(self.tokens) and self.word(index) != ";":
            text = self.word(index)
            if text in ("}", ")", "]", ":") or (text == "{" and not assigned):
                return None
            assigned = assigned or text == "=" or (len(text) > 1 and text.endswith("=") and text[0] not in "=!<>")
            called = called or text in ("(", "++", "--")
            following = self.tokens[index + 1]
            if not assigned and self.tokens[index].kind == "word" and following.kind == "word":
                return None  # a type and a name
            index = self.partner[index] + 1 if text in ("(", "[", "{") else index + 1
        return index + 1 if assigned or called else None

    def declares(self, first):
        """Whether a statement begins with the type of a reference, a pointer or something from a template."""
        index = first + 1
        while self.word(index) not in ("=", "(", "{", "[", ".", "->", ";", ""):
            if self.word(index) in ("&", "*", "&&", ">") and self.word(first) not in ("++", "--", "*") \
                    and self.tokens[index + 1].kind == "word":
                return True
            index += 1
        return False

    def order_matters(self, first, second, end):
        """Whether two statements can do something else in the other order."""
        if self.slice(first, second) == self.slice(second, end):
            return False
        if any(self.word(index) == "(" for index in range(first, end)):
            return True
        names = [{token.text for token in self.tokens[one:two] if token.kind == "word"}
                 for one, two in ((first, second), (second, end))]
        return bool(names[0] & names[1] - {"this", "true", "false", "nullptr"})

    def split(self, opening, separators=","):
        """The ranges of tokens between the separators in a pair of brackets."""
        ranges, begin, index = [], opening + 1, opening + 1
        while index < self.partner[opening]:
            if self.word(index) in separators:
                ranges.append((begin, index))
                begin = index + 1
            index = self.partner[index] + 1 if self.word(index) in ("(", "[", "{") else index + 1
        return ranges + [(begin, self.partner[opening])]

    def slice(self, begin, end):
        return self.text[self.tokens[begin].begin:self.tokens[end - 1].end]

    def changes(self):
        """Yields (name, first token, end of tokens, new text)."""
        for index, token in enumerate(self.tokens):
            text, before = token.text, self.word(index - 1)
            if token.kind == "sign" and text in SIGNS:
                apart = all(c.isspace() for c in (self.text[token.begin - 1], self.text[token.end]))
                in_code = text not in ("&&", "&", "*") or self.is_code(index)
                if (text not in SPACED or apart) and in_code and before not in ("template", "operator"):
                    for new in SIGNS[text]:
                        yield f"{text} to {new}", index, index + 1, new
            elif token.kind == "number" and re.fullmatch(r"0[xX][\dA-Fa-f']+|\d+", text):
                if not (before == "=" and self.word(index - 2) in (")", "const", "noexcept", "override")):
                    yield f"{text} + 1", index, index + 1, hex(int(text.replace("'", ""), 16) + 1) \
                        if text[:2] in ("0x", "0X") else str(int(text.replace("'", "")) + 1)
            elif text in ("true", "false") and before not in ("noexcept", "("):
                new = "false" if text == "true" else "true"
                yield f"{text} to {new}", index, index + 1, new
            elif text in ("if", "while") and self.word(index + 1) == "(":
                begin, end = self.split(index + 1, ";")[-1]
                if "=" not in (self.word(i) for i in range(begin, end)):
                    yield f"negate {text}", begin, end, f"!({self.slice(begin, end)})"
            elif text == "return" and self.returns_bool(index) and self.word(index + 1) != ";":
                end = index + 1
                while self.word(end) != ";":
                    end = self.partner.get(end, end) + 1 if self.word(end) in ("(", "[", "{") else end + 1
                if self.word(index + 1) not in ("true", "false"):
                    yield "negate return", index + 1, end, f"!({self.slice(index + 1, end)})"
            if self.begins_statement(index) and (end := self.statement(index)):
                yield "take out", index, end, ";"
                after = self.statement(end) if end < len(self.tokens) else None
                if after and before not in (")", "else") and self.order_matters(index, end, after):
                    yield "swap statements", index, after, self.slice(end, after) + " " + self.slice(index, end)
            if text == "(" and self.tokens[index - 1].kind == "word" and before not in DECLARING \
                    and self.is_code(index) and index in self.partner:
                arguments = self.split(index)
                for (one, between), (two, end) in zip(arguments, arguments[1:]):
                    if self.slice(one, between) != self.slice(two, end) and not COMMUTING.fullmatch(before):
                        yield "swap arguments", one, end, f"{self.slice(two, end)}, {self.slice(one, between)}"


class WithChoices:
    """A source with faults in it, of which the program chooses one, or none, when it runs.

    A fault in an expression becomes (is(NUMBER) ? WITH_FAULT : ORIGINAL), one of a whole statement
    { if (is(NUMBER)) { WITH_FAULT } else { ORIGINAL } }.
    """

    def __init__(self, source, numbers):
        """Takes the number of each fault that is wanted."""
        self.source = source
        self.indexes = {token.begin: index for index, token in enumerate(source.tokens)}
        self.ends = {token.end: index + 1 for index, token in enumerate(source.tokens)}
        places = collections.defaultdict(list)  # (begin, end, kind): [(number, text)]
        for fault, number in numbers.items():
            for place, text in self.choices_of(fault):
                places[place].append((number, text))
        self.places = places
        self.text = ""
        self.numbers_of_line = [()]  # from 1 on
        order = sorted(places, key=lambda place: (place[0], -place[1], place[2] != "statement"))
        self.put_all(0, len(source.tokens), order, ())
        self.put(source.text[source.tokens[-1].end:], ())

    def faults_on(self, line, reach=0):
        """Returns the numbers of the faults on a line, or on the first of so many lines behind it that has some."""
        return next(filter(None, self.numbers_of_line[line:line + reach + 1]), ())

    def has(self, number):
        return any(number in numbers for numbers in self.numbers_of_line)

    def put(self, text, numbers):
        self.text += text + "\n"
        self.numbers_of_line += [numbers] * (text.count("\n") + 1)

    def put_all(self, begin, end, places, numbers):
        """Puts tokens with the choices at @p places among them, of which the outer ones come first."""
        position = self.source.tokens[begin].begin if begin else 0
        while places:
            place, inner = places[0], []
            places = places[1:]
            while places and places[0][0] < place[1]:
                if places[0][1] <= place[1]:
                    inner.append(places[0])
                places = places[1:]
            self.put(self.source.text[position:self.source.tokens[place[0]].begin], numbers)
            self.put_choices(place, inner)
            position = self.source.tokens[place[1] - 1].end
        self.put(self.source.text[position:self.source.tokens[end - 1].end], numbers)

    def put_choices(self, place, inner):
        begin, end, kind = place
        everywhere = tuple(number for number, _ in self.places[place])
        opening = {"statement": "{", "condition": "static_cast<bool>(", "expression": "("}[kind]
        closing = "}" if kind == "statement" else ")"
        self.put(opening, everywhere)
        for number, text in self.places[place]:
            if kind == "statement":
                self.put(f"if (mutation::is({number})) {{ {text}\n}} else", (number,))
            else:
                self.put(f"mutation::is({number}) ? {opening}{text}\n) :", (number,))
        self.put(opening, everywhere)
        self.put_all(begin, end, inner, everywhere)
        self.put(closing * 2, everywhere)

    def choices_of(self, fault):
        """Yields the places of a fault, as (begin, end, kind), and the text there; none if it cannot be chosen."""
        source, first, end = self.source, self.indexes[fault.begin], self.ends[fault.end]
        if self.is_constant(first):
            return
        if fault.name.startswith("take out"):
            yield (first, end, "statement"), ";"
        elif fault.name.startswith("swap statements"):
            second = source.statement(first)
            yield (first, second, "statement"), fault.new
            yield (second, end, "statement"), ";"
        else:
            if fault.name.startswith("swap arguments"):
                end = source.partner[source.parents[first]] + 1
                first = source.parents[first] - 1
            if place := self.place_around(first, end):
                text = source.text
                begin = source.tokens[place[0]].begin
                yield place, text[begin:fault.begin] + fault.new + text[fault.end:source.tokens[place[1] - 1].end]

    def is_constant(self, index):
        """Whether a token is in something that is evaluated while the program is compiled."""
        source = self.source
        while index is not None:
            begin = index
            while (word := source.word(begin - 1)) not in (";", "{", "}", "(", "[", ""):
                if word in ("constexpr", "case", "static_assert", "enum", "template", "using", "sizeof", "alignas"):
                    return True
                begin = source.partner[begin - 1] if word in (")", "]") else begin - 1
            index = source.parents[index]
            if index is not None and source.word(index) == "{" and self.holds_statements(index):
                return False
        return False

    def holds_statements(self, brace):
        end = self.source.partner[brace]
        return end == brace + 1 or len(self.source.split(brace, ";")) > 1

    def place_around(self, first, end):
        """The smallest expression or statement around tokens that something else can stand for."""
        source, parent = self.source, self.source.parents[first]
        if parent is None:
            return None
        if source.word(parent) == "{" and self.holds_statements(parent):
            begin = first
            while (word := source.word(begin - 1)) not in (";", "{", "}", "return") and word not in ASSIGNING:
                begin = source.partner[begin - 1] if word in (")", "]") else begin - 1
            if word == "return" or word in ASSIGNING:
                last = end
                while source.word(last) not in (";", "}", ""):
                    last = source.partner[last] + 1 if source.word(last) in ("(", "[", "{") else last + 1
                return (begin, last, "expression") if source.word(last) == ";" else None
            while begin <= first:
                last = source.statement(begin) if source.begins_statement(begin) else None
                if last and last >= end:
                    return begin, last, "statement"
                begin += 1
            return None
        for begin, last in source.split(parent, ",;"):
            if begin <= first and end <= last:
                for index in range(begin, first):
                    if source.parents[index] == parent and source.word(index) in ASSIGNING:
                        begin = index + 1
                is_condition = source.word(parent - 1) in ("if", "while") and last == source.partner[parent]
                return begin, last, "condition" if is_condition else "expression"
        return None


def faults_of(file, source, unreachable):
    """Yields the faults of a file, except in lines that cannot be reached."""
    lines = source.text.splitlines()
    counts = collections.Counter()
    asserted = [(i, source.partner[i + 1]) for i, t in enumerate(source.tokens)
                if t.text in ("static_assert", "assert") and i + 1 in source.partner]
    for name, first, end, new in source.changes():
        begin = source.tokens[first].begin
        line = source.text.count("\n", 0, begin) + 1
        text = lines[line - 1].strip()
        counts[line, name] += 1
        if counts[line, name] > 1:
            name += f", {counts[line, name]}"
        if text not in unreachable and not any(a < first < b for a, b in asserted):
            yield Fault(file, line, text, name, begin, source.tokens[end - 1].end, new)

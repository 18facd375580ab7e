"""The counting protocol of the library, beside the lines of C++ that it is the model of.

Plan. Each function of the protocol is a generator that does to memory what the C++ in its docstring
does; `quoted` compares that with the source, so that neither changes alone. Orders and thresholds
are not written down here: `RULES` takes them out of the sources. What threads do with values are
the `clients` at the end: each knows what text its values must have, whatever others do. Wrong
protocols are in `wrong.py`.

Left out: what a debug build asserts in `check`, which could only order more.
"""

import functools
import pathlib
import re

from memory import NIL, Block, Fault, Thread, Value, World

ROOT = pathlib.Path(__file__).resolve().parent.parent
QUOTED = []


def body(path, signature, text=None):
    """What stands between the braces of a function, in one line and without comments."""
    text = text or (ROOT / path).read_text()
    found = re.search(re.escape(signature) + r"(?: noexcept| KELM_LIFETIMEBOUND)? \{", text)
    if not found:
        raise SystemExit(f"{path}: no {signature}")
    begin = end = found.end()
    depth = 1
    while depth:
        depth += {"{": 1, "}": -1}.get(text[end], 0)
        end += 1
    return " ".join(re.sub(r"//.*", "", text[begin:end - 1]).split())


def quoted(path, signature):
    def note(function):
        QUOTED.append((path, signature, function))
        return function
    return note


HEADER = "include/Kelm.h"
BLOCKS = "src/blocks.h"
STORAGE = "src/storage.h"
COPY = (HEADER, "Kelm(const Kelm& stringSrc)")
END = (HEADER, "~Kelm()")
APPEND = (HEADER, "Kelm& Append(char ch)")

# What the model takes from the sources: the function, and what stands there.
RULES = {
    "copy_look": (*COPY, r"__atomic_load_n\(.*?__ATOMIC_(\w+)"),
    "copy_add": (*COPY, r"__atomic_add_fetch\(.*?__ATOMIC_(\w+)"),
    "end_look": (*END, r"__atomic_load_n\(.*?__ATOMIC_(\w+)"),
    "end_alone": (*END, r"nRefs == (\d+)"),
    "end_drop": (*END, r"__atomic_sub_fetch\(.*?__ATOMIC_(\w+)"),
    "end_free": (*END, r"__ATOMIC_\w+\) <= (\d+)"),
    "unit_look": (*APPEND, r"__atomic_load_n\(.*?__ATOMIC_(\w+)"),
    "unit_below": (*APPEND, r"< (\d+)\)"),
    "look": (BLOCKS, "int refs(const Header* block)", r"__ATOMIC_(\w+)"),
    "add": (BLOCKS, "void add_ref(Header* block)", r"__ATOMIC_(\w+)"),
    "drop": (BLOCKS, "int drop_ref(Header* block)", r"__ATOMIC_(\w+)"),
    "give_up_free": (BLOCKS, "void release(Header<Unit>* block)", r"<= (\d+)\)"),
    "release_free": (STORAGE, "void release(Unit*& text)", r"<= (\d+)\)"),
    "copy_above": (STORAGE, "void copy_before_write(Unit*& text)", r"> (\d+)\)"),
    "alloc_above": (STORAGE, "void alloc_before_write(Unit*& text, int length)", r"> (\d+) \|\|"),
    "hold_above": (STORAGE, "void assign_copy(Unit*& text, int count, const Unit* source)",
                   r"> (\d+) &&"),
    "append_above": (STORAGE, "void concat_in_place(Unit*& text, int count, const Unit* units)",
                     r"> (\d+) \|\|"),
    "buffer_above": (STORAGE, "Unit* get_buffer(Unit*& text, int capacity)", r"> (\d+) \|\|"),
    "lock": ("src/Kelm.cpp", "char* Kelm::LockBuffer()", r"__ATOMIC_(\w+)"),
    "unlock": ("src/Kelm.cpp", "void Kelm::UnlockBuffer()", r"__ATOMIC_(\w+)"),
}


@functools.cache
def from_sources():
    rules = {"most": 1 << 30}
    for name, (path, signature, pattern) in RULES.items():
        found = re.search(pattern, body(path, signature))
        if not found:
            raise SystemExit(f"{path}: {signature} has nothing for {name}")
        rules[name] = int(found[1]) if found[1].isdigit() else found[1]
    return rules


def differences():
    """Each function whose C++ is not what is quoted here, and twins that are not alike."""
    for path, signature, function in QUOTED:
        source = body(path, signature)
        if source != " ".join(function.__doc__.split()):
            yield f"{path}: {signature} is not what proof/protocol.py models:\n  {source}"
        if path == HEADER:
            wide = body(path, signature.replace("Kelm", "WString").replace("(char", "(char16_t"))
            if wide.replace("WString", "Kelm").replace("u'", "'") != source:
                yield f"{path}: {signature} is not like its twin"
    counts = re.compile(r"(__atomic_\w+|\badd_ref|\bdrop_ref|\bgive_back)\(")
    everywhere = "".join(path.read_text() for folder in ("include", "src")
                         for path in sorted((ROOT / folder).iterdir()))
    known = sum(len(counts.findall(function.__doc__)) * (2 if path == HEADER else 1)
                for path, _, function in QUOTED)
    # The definitions of add_ref, drop_ref and give_back, and FreeData of both classes.
    if len(counts.findall(everywhere)) != known + 5:
        yield "include, src: a function that is not modelled changes or reads the count"
    if "KelmMostRefs = 1U << 30;" not in (ROOT / HEADER).read_text():
        yield f"{HEADER}: KelmMostRefs is not that of the model"


def require(condition, what):
    if not condition:
        raise Fault(f"assertion {what}")


class Protocol:
    """As the sources have it, or with some of the rules changed."""

    def __init__(self, **changed):
        self.__dict__.update(from_sources())
        unknown = changed.keys() - self.__dict__.keys()
        if unknown:
            raise SystemExit(f"no rule {unknown}")
        self.__dict__.update(changed)

    def change(self, block, by, order):
        if order == "PLAIN":
            return (yield ("plain_add", block, by))
        if order == "LOAD, STORE":
            count = yield ("load", block, "SEQ_CST")
            yield ("store", block, count + by, "SEQ_CST")
            return count + by
        return (yield ("add", block, by, order))

    # include/Kelm.h

    @quoted(*COPY)
    def copy(self, text, source):
        """
        KelmData* pData = stringSrc.GetData();
        const std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (static_cast<std::uint32_t>(nRefs) - 1U < KelmMostRefs - 1U) {
            __atomic_add_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST);
            m_pchData = stringSrc.m_pchData;
            return;
        }
        CopyUnshared(stringSrc);
        """
        if 1 <= (yield ("load", source.block, self.copy_look)) < self.most:
            yield from self.change(source.block, 1, self.copy_add)
            text.block = source.block
            return
        yield from self.copy_construct(text, source)

    @quoted(*END)
    def end(self, text):
        """
        KelmData* pData = GetData();
        std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (nRefs <= 0) {
            DestroyUnshared();
        } else if (nRefs == 1 || __atomic_sub_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST) <= 0) {
            FreeData(pData);
        }
        """
        count = yield ("load", text.block, self.end_look)
        if count <= 0:
            yield from self.release(text)
        elif (count == self.end_alone or
              (yield from self.change(text.block, -1, self.end_drop)) <= self.end_free):
            yield ("free", text.block)

    # src/blocks.h

    @quoted(BLOCKS, "int refs(const Header* block)")
    def refs(self, block):
        """return __atomic_load_n(&block->nRefs, __ATOMIC_ACQUIRE);"""
        return (yield ("load", block, self.look))

    @quoted(BLOCKS, "bool can_share(const Header* block)")
    def can_share(self, block):
        """return static_cast<std::uint32_t>(refs(block)) - 1U < KelmMostRefs - 1U;"""
        return 1 <= (yield from self.refs(block)) < self.most

    @quoted(BLOCKS, "void add_ref(Header* block)")
    def add_ref(self, block):
        """__atomic_add_fetch(&block->nRefs, 1, __ATOMIC_SEQ_CST);"""
        yield from self.change(block, 1, self.add)

    @quoted(BLOCKS, "int drop_ref(Header* block)")
    def drop_ref(self, block):
        """return __atomic_sub_fetch(&block->nRefs, 1, __ATOMIC_SEQ_CST);"""
        return (yield from self.change(block, -1, self.drop))

    @quoted(BLOCKS, "void release(Header<Unit>* block)")
    def give_up(self, block):
        """
        if (block == nil_header<Unit>()) {
            return;
        }
        platform::require(refs(block) != 0, "pData->nRefs != 0");
        if (drop_ref(block) <= 0) {
            give_back(block);
        }
        """
        if block == NIL:
            return
        require((yield from self.refs(block)) != 0, "pData->nRefs != 0")
        if (yield from self.drop_ref(block)) <= self.give_up_free:
            yield ("free", block)

    # src/storage.h

    @quoted(STORAGE, "void alloc(Unit*& text, int length)")
    def alloc(self, text, length):
        """
        require(length >= 0, "nLen >= 0");
        require(length <= INT_MAX - 1, "nLen <= INT_MAX-1");
        text = length == 0 ? nil_text<Unit>()
                           : reinterpret_cast<Unit*>(blocks::allocate<Unit>(length) + 1);
        """
        text.block = NIL if length == 0 else (yield ("new", length))

    @quoted(STORAGE, "void set_length(Unit* text, int length)")
    def set_length(self, text, length):
        """
        Header<Unit>* block = header_of(text);
        if (block != nil_header<Unit>()) {
            block->nDataLength = length;
            text[length] = Unit{};
        }
        check(text);
        """
        if text.block != NIL:
            yield ("set_length", text.block, length)
            yield ("put", text.block, length, "")

    @quoted(STORAGE, "void release(Unit*& text)")
    def release(self, text):
        """
        Header<Unit>* block = header_of(text);
        if (block == nil_header<Unit>()) {
            return;
        }
        require(refs(block) != 0, "GetData ()->nRefs != 0");
        if (blocks::drop_ref(block) <= 0) {
            blocks::give_back(block);
        }
        init(text);
        """
        if text.block == NIL:
            return
        require((yield from self.refs(text.block)) != 0, "GetData ()->nRefs != 0")
        if (yield from self.drop_ref(text.block)) <= self.release_free:
            yield ("free", text.block)
        text.block = NIL

    @quoted(STORAGE, "void Hold(Unit* held)")
    def hold(self, owner, block):
        """text = held; blocks::add_ref(header_of(held));"""
        owner.block = block
        yield from self.add_ref(block)

    @quoted(STORAGE, "void move_assign(Unit*& text, Unit*& source)")
    def move_assign(self, text, source):
        """
        release(text);
        text = source;
        init(source);
        check(text);
        """
        yield from self.release(text)
        text.block, source.block = source.block, NIL

    @quoted(STORAGE, "void move_to_new_block(Unit*& text, int capacity)")
    def move_to_new_block(self, text, capacity):
        """
        Unit* old = text;
        const int kept = length(old);
        alloc(text, capacity);
        copy_units(text, old, kept);
        set_length(text, kept);
        blocks::release<Unit>(header_of(old));
        """
        old = text.block
        kept = yield ("read", old, "length")
        yield from self.alloc(text, capacity)
        yield from self.copy_units(text.block, old, 0, kept)
        yield from self.set_length(text, kept)
        yield from self.give_up(old)

    def copy_units(self, block, source, first, count):
        units = yield ("read", source, "text")
        if count:
            yield ("put", block, 0, units[first:first + count])

    @quoted(STORAGE, "void copy_before_write(Unit*& text)")
    def copy_before_write(self, text):
        """
        if (refs(header_of(text)) > 1) {
            move_to_new_block(text, length(text));
        }
        require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
        """
        if (yield from self.refs(text.block)) > self.copy_above:
            yield from self.move_to_new_block(text, (yield ("read", text.block, "length")))
        require((yield from self.refs(text.block)) <= self.copy_above, "GetData ()->nRefs <= 1")

    @quoted(STORAGE, "void alloc_before_write(Unit*& text, int length)")
    def alloc_before_write(self, text, length):
        """
        const Header<Unit>* block = header_of(text);
        if (refs(block) > 1 || length > block->nAllocLength) {
            release(text);
            alloc(text, length);
        }
        require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
        """
        if ((yield from self.refs(text.block)) > self.alloc_above or
                length > (yield ("read", text.block, "capacity"))):
            yield from self.release(text)
            yield from self.alloc(text, length)
        require((yield from self.refs(text.block)) <= self.alloc_above, "GetData ()->nRefs <= 1")

    @quoted(STORAGE, "void assign_copy(Unit*& text, int count, const Unit* source)")
    def assign_copy(self, text, count, source, first=0):
        """
        Owner<Unit> hold;
        if (refs(header_of(text)) > 1 && blocks::points_into<Unit>(source, text, length(text))) {
            hold.Hold(text);
        }
        alloc_before_write(text, count);
        move_units(text, source, count);
        set_length(text, count);
        """
        owner = Value(NIL, None)
        if (yield from self.refs(text.block)) > self.hold_above and source == text.block:
            yield from self.hold(owner, text.block)
        yield from self.alloc_before_write(text, count)
        yield from self.copy_units(text.block, source, first, count)
        yield from self.set_length(text, count)
        yield from self.release(owner)

    @quoted(*APPEND)
    def append_unit(self, text, unit):
        """
        KelmData* pData = GetData();
        const int nLength = pData->nDataLength;
        if (nLength < pData->nAllocLength && __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE) < 2) {
            pData->nDataLength = nLength + 1;
            m_pchData[nLength] = ch;
            m_pchData[nLength + 1] = '\\0';
        } else {
            ConcatInPlace(1, &ch);
        }
        return *this;
        """
        block = text.block
        length = yield ("read", block, "length")
        if length < (yield ("read", block, "capacity")):
            if (yield ("load", block, self.unit_look)) < self.unit_below:
                yield ("set_length", block, length + 1)
                yield ("put", block, length, unit)
                return
        yield from self.concat_in_place(text, unit)

    @quoted(STORAGE, "void concat_in_place(Unit*& text, int count, const Unit* units)")
    def concat_in_place(self, text, units):
        """
        if (count == 0) {
            return;
        }
        Header<Unit>* block = header_of(text);
        if (refs(block) > 1 || count > block->nAllocLength - block->nDataLength) {
            concat_copy<Unit>(text, block->nDataLength, text, count, units);
            require(block != nullptr, "pData != NULL");
            blocks::release<Unit>(block);
            return;
        }
        Unit* end = text + block->nDataLength;
        if (count == 1) {
            end[0] = units[0];
        } else if (count == 2) {
            end[0] = units[0];
            end[1] = units[1];
        } else {
            copy_units(end, units, count);
        }
        block->nDataLength += count;
        require(block->nDataLength <= block->nAllocLength,
                count > 2 ? Particular<Unit>::kAppended : Particular<char>::kAppended);
        text[block->nDataLength] = Unit{};
        """
        block = text.block
        count = yield from self.refs(block)
        length = yield ("read", block, "length")
        if count > self.append_above or len(units) > (yield ("read", block, "capacity")) - length:
            yield from self.alloc(text, length + len(units))
            yield from self.copy_units(text.block, block, 0, length)
            yield ("put", text.block, length, units)
            yield from self.give_up(block)
            return
        yield ("put", block, length, units)
        yield ("set_length", block, length + len(units))

    @quoted(STORAGE, "int copied_length(Unit* text)")
    def copied_length(self, text):
        """return refs(header_of(text)) < 0 ? length_of(text) : length(text);"""
        yield from self.refs(text.block)
        return (yield ("read", text.block, "length"))

    @quoted(STORAGE, "void copy_construct(Unit*& text, Unit* source)")
    def copy_construct(self, text, source):
        """
        Header<Unit>* block = header_of(source);
        require(refs(block) != 0, "stringSrc.GetData ()->nRefs != 0");
        if (blocks::can_share(block)) {
            blocks::add_ref(block);
            text = source;
            return;
        }
        init(text);
        if (source != nil_text<Unit>()) {
            assign_copy<Unit>(text, copied_length(source), source);
        }
        """
        block = source.block
        require((yield from self.refs(block)) != 0, "stringSrc.GetData ()->nRefs != 0")
        if (yield from self.can_share(block)):
            yield from self.add_ref(block)
            text.block = block
            return
        text.block = NIL
        if block != NIL:
            yield from self.assign_copy(text, (yield from self.copied_length(source)), block)

    @quoted(STORAGE, "void assign(Unit*& text, Unit* source)")
    def assign(self, text, source):
        """
        if (text == source) {
            return;
        }
        Header<Unit>* block = header_of(text);
        const bool is_locked = refs(block) < 0 && block != nil_header<Unit>();
        if (is_locked || !blocks::can_share(header_of(source))) {
            assign_copy<Unit>(text, length(source), source);
            return;
        }
        release(text);
        require(header_of(source) != nil_header<Unit>(), Particular<Unit>::kSourceIsNil);
        text = source;
        blocks::add_ref(header_of(text));
        """
        if text.block == source.block:
            return
        is_locked = (yield from self.refs(text.block)) < 0 and text.block != NIL
        if is_locked or not (yield from self.can_share(source.block)):
            length = yield ("read", source.block, "length")
            yield from self.assign_copy(text, length, source.block)
            return
        yield from self.release(text)
        require(source.block != NIL, "stringSrc.GetData () != KelmDataNil")
        text.block = source.block
        yield from self.add_ref(text.block)

    @quoted(STORAGE, "void set_at(Unit*& text, int index, Unit unit)")
    def set_at(self, text, index, unit):
        """
        require(index >= 0, "nIndex >= 0");
        require(index < length(text), "nIndex < GetData ()->nDataLength");
        copy_before_write(text);
        text[index] = unit;
        """
        require(index < (yield ("read", text.block, "length")), "nIndex < length")
        yield from self.copy_before_write(text)
        yield ("put", text.block, index, unit)

    @quoted(STORAGE, "Unit* get_buffer(Unit*& text, int capacity)")
    def get_buffer(self, text, capacity):
        """
        require(capacity >= 0, "nMinBufLength >= 0");
        const Header<Unit>* block = header_of(text);
        if (refs(block) > 1 || capacity > block->nAllocLength) {
            move_to_new_block(text, std::max(capacity, block->nDataLength));
        }
        require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
        require(text != nullptr, "m_pchData != NULL");
        return text;
        """
        if ((yield from self.refs(text.block)) > self.buffer_above or
                capacity > (yield ("read", text.block, "capacity"))):
            length = yield ("read", text.block, "length")
            yield from self.move_to_new_block(text, max(capacity, length))
        require((yield from self.refs(text.block)) <= self.buffer_above, "GetData ()->nRefs <= 1")

    # src/Kelm.cpp

    @quoted("src/Kelm.cpp", "char* Kelm::LockBuffer()")
    def lock_buffer(self, text):
        """
        GetBuffer(0);
        if (GetData() != KelmDataNil) {
            __atomic_store_n(&GetData()->nRefs, -1, __ATOMIC_RELAXED);
        }
        return m_pchData;
        """
        yield from self.get_buffer(text, 0)
        if text.block != NIL:
            yield ("store", text.block, -1, self.lock)

    @quoted("src/Kelm.cpp", "void Kelm::UnlockBuffer()")
    def unlock_buffer(self, text):
        """
        require(refs(GetData()) == -1, "GetData ()->nRefs == -1");
        if (GetData() != KelmDataNil) {
            __atomic_store_n(&GetData()->nRefs, 1, __ATOMIC_RELAXED);
        }
        """
        require((yield from self.refs(text.block)) == -1, "GetData ()->nRefs == -1")
        if text.block != NIL:
            yield ("store", text.block, 1, self.unlock)


def look(values):
    """Reads each value: nobody else's write may show, and no own one be missing."""
    for name, value in values.items():
        length = yield ("read", value.block, "length")
        text = (yield ("read", value.block, "text"))[:length]
        if text != value.expected:
            raise Fault(f"{name} in {value.block} has '{text}', not '{value.expected}'")


def clients(protocol):
    """What a thread does with its value `a`, whose block others hold as well, and with `s`, a value
    of the first thread that all read. Each ends with a look at the thread's values."""
    p = protocol
    table = {}

    def client(function):
        def run(values, me):
            yield from function(values, values["a"], me)
            yield from look(values)
        run.__name__ = function.__name__.rstrip("_")
        table[run.__name__] = run

    def new(values, source):
        value = values["c" + str(len(values))] = Value(NIL, source.expected)
        return value

    @client
    def copy(values, a, me):
        yield from p.copy(new(values, a), a)

    @client
    def take(values, a, me):
        yield from p.assign(a, values["s"])
        a.expected = values["s"].expected

    @client
    def give(values, a, me):
        c = new(values, a)
        yield from p.copy(c, values["s"])
        yield from p.assign(c, a)

    @client
    def self_(values, a, me):
        yield from p.assign(a, a)

    @client
    def write(values, a, me):
        if a.expected:
            yield from p.set_at(a, 0, me)
            a.expected = me + a.expected[1:]

    @client
    def append(values, a, me):
        yield from p.append_unit(a, me)
        a.expected += me

    @client
    def lock(values, a, me):
        if not a.expected:
            return
        yield from p.lock_buffer(a)
        yield ("put", a.block, 0, me)
        a.expected = me + a.expected[1:]
        yield from p.copy(new(values, a), a)
        yield from p.unlock_buffer(a)

    @client
    def keep(values, a, me):
        """Locks for good; what is assigned is copied, and the lock stays."""
        if not a.expected:
            return
        yield from p.lock_buffer(a)
        yield from p.assign(a, values["s"])
        a.expected = values["s"].expected
        yield ("put", a.block, 0, me)
        a.expected = me + a.expected[1:]

    @client
    def fill(values, a, me):
        yield from p.assign_copy(a, len(values["s"].expected), values["s"].block)
        a.expected = values["s"].expected

    @client
    def part(values, a, me):
        yield from p.assign_copy(a, len(a.expected[1:]), a.block, 1)
        a.expected = a.expected[1:]

    @client
    def move(values, a, me):
        c = new(values, a)
        yield from p.copy(c, values["s"])
        yield from p.move_assign(c, a)
        a.expected = ""

    @client
    def clear(values, a, me):
        yield from p.release(a)
        a.expected = ""

    def end(values, me):
        yield from look(values)
        for name in sorted(values.keys() - {"s"} if me != "0" else values.keys()):
            yield from p.end(values.pop(name))

    return table, end


def start(protocol, programs):
    """The first thread makes a text with room for more, a holder of it for each other thread, and
    where it is used another text in `s`. Then the others run a program each, and end their values.
    """
    table, end = clients(protocol)
    count = len(programs) + 1
    world = World([], {NIL: Block(None, False, (), 0, 0, "", ())})
    world.add_block("X", "ab", room=1, holders=count - 1)
    s = ()
    if {"take", "give", "keep", "fill", "move"} & {name for names in programs for name in names}:
        world.add_block("Y", "yz")
        s = (("s", ("Y", "yz")),)
    world.threads.append(Thread((end,), s, (), (0,) * count, None))
    for thread, names in enumerate(programs, 1):
        clock = tuple(int(n == thread) for n in range(count))
        operations = tuple(table[name] for name in names) + (end,)
        world.threads.append(Thread(operations, (("a", ("X", "ab")),) + s, (), clock, None))
    return world

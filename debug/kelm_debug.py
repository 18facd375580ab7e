"""Shows Kelm, WString and Kelm::Token in gdb and lldb: the text, its length and capacity, and who
holds the block.

gdb loads this by itself where the library is installed; else `source kelm_debug.py`.
lldb: `command script import kelm_debug.py`.

A block is read, never followed: what is damaged is told, and nothing of the program is run, so that
core files do as well.
"""

import struct

HEADER = struct.Struct("=iii")  # holders, length, capacity
MOST_SHOWN = 200
ESCAPES = {'"': '\\"', "\\": "\\\\", "\0": "\\0", "\n": "\\n", "\r": "\\r", "\t": "\\t"}


def escaped(text):
    return "".join(ESCAPES.get(c) or (c if c.isprintable() else
                                      c.encode("unicode_escape").decode()) for c in text)


def decoded(raw, charset):
    """The text of bytes, with what does not belong to it as escapes."""
    parts = []
    while raw:
        try:
            parts.append(escaped(raw.decode(charset)))
            break
        except UnicodeDecodeError as error:
            parts.append(escaped(raw[:error.start].decode(charset)))
            parts.append("".join(f"\\x{byte:02x}" for byte in raw[error.start:error.end]))
            raw = raw[error.end:]
        except LookupError:
            charset = "latin-1"
    return "".join(parts)


def quoted(read, address, length, wide, charset):
    """A literal of the text at an address, cut with a count where it is long."""
    unit = 2 if wide else 1
    shown = min(length, MOST_SHOWN)
    literal = decoded(read(address, shown * unit), "utf-16-le" if wide else charset)
    rest = f"... ({length - shown} more)" if shown < length else ""
    return ("u" if wide else "") + f'"{literal}"' + rest


def value(read, address, wide, charset):
    """What is shown of a value whose text is at the address. `read` raises where memory cannot be
    read."""
    unit = 2 if wide else 1
    try:
        holders, length, capacity = HEADER.unpack(read(address - HEADER.size, HEADER.size))
        told = f"holders {holders}, length {length}, capacity {capacity}"
        if holders < -1 or holders == 0 or not 0 <= length <= capacity:
            return f"<damaged block at {address:#x}: {told}>"
        if read(address + length * unit, unit) != bytes(unit):
            return f"<damaged block at {address:#x}: no terminator, {told}>"
        text = quoted(read, address, length, wide, charset)
    except Exception:  # each debugger has its own
        return f"<no block at {address:#x}>"
    if holders == -1:
        state = "locked" if capacity else "empty"
    else:
        state = "private" if holders == 1 else f"shared by {holders}"
    return f"{text}, length {length}, capacity {capacity}, {state}"


def token(read, text, start, end, length, charset):
    """What is shown of a tokenizer: its current piece and where that stands."""
    if not 0 <= start <= end:
        return "no token"
    count = end - start + (1 if end < length else 0)
    try:
        return f"{quoted(read, text + start, count, False, charset)} at {start} of {length}"
    except Exception:
        return f"<no text at {text:#x}>"


def load_into_gdb(gdb):
    from gdb.printing import RegexpCollectionPrettyPrinter, register_pretty_printer

    def read(address, count):
        return bytes(gdb.selected_inferior().read_memory(address, count)) if count else b""

    def charset():
        name = gdb.parameter("target-charset")
        return "utf-8" if name in ("auto", "ANSI_X3.4-1968") else name

    class Text:
        def __init__(self, shown):
            self.shown = shown

        def to_string(self):
            wide = self.shown.type.strip_typedefs().name == "WString"
            return value(read, int(self.shown["m_pchData"]), wide, charset())

    class Token:
        def __init__(self, shown):
            self.shown = shown

        def to_string(self):
            text, *rest = (int(self.shown["m_" + name])
                           for name in ("pchText", "nStart", "nEnd", "nLength"))
            return token(read, text, *rest, charset())

    printers = RegexpCollectionPrettyPrinter("kelm")
    printers.add_printer("Kelm", "^Kelm$", Text)
    printers.add_printer("WString", "^WString$", Text)
    printers.add_printer("Token", "^Kelm::Token$", Token)
    register_pretty_printer(gdb.current_objfile(), printers, replace=True)


def of_lldb(shown, form):
    """What stands where a value is, as a pointer (P) and the rest of the form, and a reader of its
    process. By its place and not by its members, which clang++ describes to few programs."""
    import lldb
    shown = shown.GetNonSyntheticValue()
    if shown.GetType().IsReferenceType():
        shown = shown.Dereference()

    def read(address, count):
        error = lldb.SBError()
        raw = shown.GetProcess().ReadMemory(address, count, error) if count else b""
        if error.Fail():
            raise OSError(error.GetCString())
        return raw

    pointer = "Q" if shown.GetProcess().GetAddressByteSize() == 8 else "I"
    form = "=" + form.replace("P", pointer)
    return struct.unpack(form, read(shown.GetLoadAddress(), struct.calcsize(form))), read


def lldb_text(shown, _):
    wide = shown.GetType().GetCanonicalType().GetName().find("WString") >= 0
    try:
        (text,), read = of_lldb(shown, "P")
    except OSError:
        return "<no value>"
    return value(read, text, wide, "utf-8")


def lldb_token(shown, _):
    # The source, its text, where the token starts and ends, the next one, a flag, the length.
    try:
        (_, text, start, end, _, _, length), read = of_lldb(shown, "PPiiiB3xi")
    except OSError:
        return "<no value>"
    return token(read, text, start, end, length, "utf-8")


def __lldb_init_module(debugger, _):
    for function, name in (("lldb_text", "Kelm"), ("lldb_text", "WString"),
                           ("lldb_token", "Kelm::Token")):
        debugger.HandleCommand(f"type summary add -F {__name__}.{function} {name}")


try:
    import gdb as _gdb
except ImportError:
    pass
else:
    load_into_gdb(_gdb)

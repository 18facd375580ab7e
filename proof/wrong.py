"""Wrong protocols: the search has to find an execution of each in which something goes wrong.

Most change a rule that the sources state; the others are a function as it could have been written.
"""

from memory import NIL
from protocol import Protocol, require


class GivesUpBeforeCopying(Protocol):
    def move_to_new_block(self, text, capacity):
        old = text.block
        kept = yield ("read", old, "length")
        yield from self.give_up(old)
        yield from self.alloc(text, capacity)
        yield from self.copy_units(text.block, old, 0, kept)
        yield from self.set_length(text, kept)


class AppendsAfterGivingUp(Protocol):
    def concat_in_place(self, text, units):
        old = text.block
        if (yield from self.refs(old)) <= 1:
            yield from super().concat_in_place(text, units)
            return
        length = yield ("read", old, "length")
        yield from self.give_up(old)
        yield from self.alloc(text, length + len(units))
        yield from self.copy_units(text.block, old, 0, length)
        yield ("put", text.block, length, units)


class WritesBeforeLeaving(Protocol):
    def set_at(self, text, index, unit):
        yield ("put", text.block, index, unit)
        yield from self.copy_before_write(text)


class HoldsNothing(Protocol):
    def hold(self, owner, block):
        yield from ()


class LocksWhatIsShared(Protocol):
    def get_buffer(self, text, capacity):
        yield from ()


class SharesWhatIsLocked(Protocol):
    def copy(self, text, source):
        if source.block != NIL:
            yield from self.add_ref(source.block)
        text.block = source.block


class CopiesWithoutCounting(Protocol):
    def copy(self, text, source):
        text.block = source.block
        yield from ()


class AssignsWithoutALook(Protocol):
    """The same block on both sides: its last reference is given up before it is taken."""

    def assign(self, text, source):
        block = source.block
        yield from self.release(text)
        text.block = block
        if block != NIL:
            yield from self.add_ref(block)


class AssignsWithoutCounting(Protocol):
    def assign(self, text, source):
        if text.block != source.block:
            yield from self.release(text)
            text.block = source.block


class MovesACopy(Protocol):
    def move_assign(self, text, source):
        yield from self.release(text)
        text.block = source.block


class DecidesByASecondLook(Protocol):
    def drop_ref(self, block):
        yield from super().drop_ref(block)
        return (yield from self.refs(block))


class AsksBeforeDropping(Protocol):
    """Frees if it was the last one when it looked."""

    def drop_ref(self, block):
        count = yield from self.refs(block)
        yield from super().drop_ref(block)
        return count - 1


class ForgetsTheBlock(Protocol):
    def release(self, text):
        if text.block != NIL:
            require((yield from self.refs(text.block)) != 0, "GetData ()->nRefs != 0")
            yield from self.drop_ref(text.block)
            text.block = NIL


def changed(**rules):
    return ", ".join(f"{name} {value}" for name, value in rules.items()), Protocol(**rules)


WRONG = [
    changed(look="RELAXED"),
    changed(unit_look="RELAXED"),
    changed(unit_below=3),
    changed(drop="RELAXED"),
    changed(drop="RELEASE"),
    changed(drop="ACQUIRE"),
    changed(drop="PLAIN"),
    changed(drop="LOAD, STORE"),
    changed(end_look="RELAXED"),
    changed(end_drop="RELAXED"),
    changed(end_drop="RELEASE"),
    changed(end_drop="ACQUIRE"),
    changed(end_drop="PLAIN"),
    changed(end_drop="LOAD, STORE"),
    changed(copy_add="PLAIN"),
    changed(copy_add="LOAD, STORE"),
    changed(add="PLAIN"),
    changed(add="LOAD, STORE"),
    changed(end_alone=2),
    changed(end_free=-1),
    changed(end_free=1),
    changed(give_up_free=-1),
    changed(give_up_free=1),
    changed(release_free=-1),
    changed(release_free=1),
    changed(copy_above=2),
    changed(alloc_above=2),
    changed(hold_above=2),
    changed(append_above=2),
    changed(buffer_above=2),
] + [(wrong.__name__, wrong()) for wrong in (
    GivesUpBeforeCopying, AppendsAfterGivingUp, WritesBeforeLeaving, HoldsNothing,
    LocksWhatIsShared, SharesWhatIsLocked, CopiesWithoutCounting, AssignsWithoutALook,
    AssignsWithoutCounting, MovesACopy, DecidesByASecondLook, AsksBeforeDropping, ForgetsTheBlock)]

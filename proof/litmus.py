"""What C++ says of small programs, as a test of `memory.py`: a fault is found where there is one.

X and Y are two blocks with a count of 1 each; a program is a generator for each thread.
"""

from memory import NIL, Block, Fault, Thread, World, explore


def passing(write, read):
    """One thread writes a text and counts; the other reads the text if it sees the count."""
    def writer(*_):
        yield ("put", "X", 0, "w")
        yield ("add", "Y", 1, write)

    def reader(*_):
        if (yield ("load", "Y", read)) == 2:
            yield ("read", "X", "text")

    return writer, reader


def passed_on(action, seen):
    """A third thread between writer and reader, relaxed."""
    def between(*_):
        if (yield ("load", "Y", "RELAXED")) == 2:
            yield action

    def reader(*_):
        if (yield ("load", "Y", "ACQUIRE")) == seen:
            yield ("read", "X", "text")

    return passing("RELEASE", "")[0], between, reader


def stale(write, read):
    """Whether the second of two counts can be seen without the first."""
    def writer(*_):
        yield ("add", "X", 1, write)
        yield ("add", "Y", 1, write)

    def reader(*_):
        if (yield ("load", "Y", read)) == 2 and (yield ("load", "X", read)) == 1:
            raise Fault("stale")

    return writer, reader


def twice(order):
    """Whether a count that only grows is ever seen to fall, or one step of it to be lost."""
    def writer(*_):
        yield ("add", "X", 1, order)

    def reader(*_):
        first = yield ("load", "X", order)
        if (yield ("load", "X", order)) < first:
            raise Fault("falls")
        if (yield ("add", "X", 1, order)) == 2 and first == 3:
            raise Fault("lost")

    return writer, writer, reader


LITMUS = [
    ("passing, release and acquire", passing("RELEASE", "ACQUIRE"), False),
    ("passing, relaxed and acquire", passing("RELAXED", "ACQUIRE"), True),
    ("passing, release and relaxed", passing("RELEASE", "RELAXED"), True),
    ("passed on by a read-modify-write", passed_on(("add", "Y", 1, "RELAXED"), 3), False),
    ("not passed on by a store", passed_on(("store", "Y", 3, "RELAXED"), 3), True),
    ("stale where relaxed", stale("RELAXED", "RELAXED"), True),
    ("not stale where acquired", stale("RELEASE", "ACQUIRE"), False),
    ("coherence", twice("RELAXED"), False),
]


def wrong_answers():
    for title, programs, is_fault in LITMUS:
        count = len(programs) + 1
        world = World([Thread((), (), (), (0,) * count, None)],
                      {NIL: Block(None, False, (), 0, 0, "", ())})
        for name in "XY":
            world.add_block(name, "ab")
        for thread, program in enumerate(programs, 1):
            clock = tuple(int(n == thread) for n in range(count))
            world.threads.append(Thread((program,), (), (), clock, None))
        try:
            explore(world, finish=lambda _: None)
            found = None
        except Fault as fault:
            found = fault
        if (found is not None) != is_fault:
            yield f"litmus: {title}: {found}"

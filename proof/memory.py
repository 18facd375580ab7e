"""The memory of C++ threads, and a search through everything they can do with it.

Plan. A thread is a generator that yields what it does to memory and is sent what came of it. The
search runs all interleavings, and for each atomic operation all values that C++ lets it see:

- The atomic count of a block is a list of messages in modification order. A load reads any message
  that coherence allows: none older than one that happened before. A read-modify-write follows the
  message it read directly; a store goes behind any message that coherence allows.
- What happens before is known by vector clocks. A releasing write leaves the clock in its message,
  a read-modify-write of any order passes on that of the message before it (a release sequence), an
  acquiring read takes it over. Sequentially consistent is taken as acquire and release, which is
  weaker: what holds here rests on no total order.
- Two accesses to a field race if one is a write, one is plain and neither happened before the
  other. `free` is a plain write to every field.

Only atomic operations on a block that threads share are scheduled. All else is done at once: in an
execution without a race it gives the same whenever it happens, and a race is found at any time.
Threads run in program order, so a relaxed store is never seen before an earlier load of its thread.
"""

from collections import deque, namedtuple

NIL = "nil"  # the static empty block: never counted, written to or freed
ACQUIRING = ("ACQUIRE", "ACQ_REL", "SEQ_CST")
RELEASING = ("RELEASE", "ACQ_REL", "SEQ_CST")

# `seen`: (thread, time) of the write and of each thread's first read. `sync`: the released clock.
Message = namedtuple("Message", "value seen sync is_rmw")
# `owner`: the one thread that can reach the block, if it is not shared. `touched`: who accessed
# field how, each as (field, kind, thread, time of the last).
Block = namedtuple("Block", "owner is_freed messages capacity length text touched")
# `history`: what the operation under way was sent so far; `action`: what it does next.
Thread = namedtuple("Thread", "operations values history clock action")

CONFLICTS = {
    "read": ("write", "atomic write"),
    "write": ("read", "write", "atomic read", "atomic write"),
    "atomic read": ("write",),
    "atomic write": ("read", "write"),
}


class Fault(Exception):
    """Something went wrong in an execution; `trace` tells how it came to that."""

    trace = None


class Value:
    """A text value: the block it points at, and the text that its owner knows it to have."""

    def __init__(self, block, expected):
        self.block, self.expected = block, expected


def join(clock, other):
    return tuple(map(max, clock, other)) if other else clock


class World:
    """All threads and blocks at one moment."""

    def __init__(self, threads, blocks, trace=None):
        self.threads, self.blocks, self.trace = list(threads), dict(blocks), trace

    def key(self):
        return tuple(self.threads), frozenset(self.blocks.items())

    def note(self, thread, text):
        self.trace = (self.trace, f"  thread {thread}: {text}")

    def lines(self):
        lines, trace = [], self.trace
        while trace:
            trace, line = trace
            lines.append(line)
        return lines[::-1]

    def add_block(self, name, text, room=0, holders=1, owner=None):
        message = Message(holders, ((0, 0),), None, False)
        capacity = len(text) + room
        self.blocks[name] = Block(owner, False, (message,), capacity, len(text), text, ())

    # What happens before.

    def touch(self, thread, name, field, kind):
        """An access: a fault if the block is gone or another thread's access is not ordered."""
        block, clock = self.blocks[name], self.threads[thread].clock
        if block.is_freed:
            raise Fault(f"use after free: thread {thread}, {kind} of the {field} of {name}")
        if block.owner is not None:
            return
        for other in block.touched:
            if other[0] == field and other[1] in CONFLICTS[kind] and clock[other[2]] < other[3]:
                raise Fault(f"data race on the {field} of {name}: thread {thread}, {kind}, "
                            f"against thread {other[2]}, {other[1]}")
        entry = (field, kind, thread, clock[thread])
        kept = [other for other in block.touched if other[:3] != entry[:3]]
        self.blocks[name] = block._replace(touched=tuple(sorted(kept + [entry])))

    def floor(self, thread, name):
        """The oldest message that the thread may still read: the last one it knows to be there."""
        clock, messages = self.threads[thread].clock, self.blocks[name].messages
        for index in range(len(messages) - 1, 0, -1):
            if any(clock[other] >= time for other, time in messages[index].seen):
                return index
        return 0

    def choices(self, thread):
        """The messages that the thread's next atomic operation may read or follow."""
        kind, name = self.threads[thread].action[:2]
        messages = self.blocks[name].messages
        for index in range(self.floor(thread, name), len(messages)):
            is_open = index + 1 == len(messages) or not messages[index + 1].is_rmw
            if kind == "load" or is_open:
                yield index

    # What threads do.

    def perform(self, thread, action, index=-1):
        """Does it, with the message at this index if it is atomic, and gives what comes of it."""
        told = " ".join(map(str, action))
        if action[0] == "load" and 0 <= index < len(self.blocks[action[1]].messages) - 1:
            told += " (stale)"
        self.note(thread, told)
        result = getattr(self, "do_" + action[0])(thread, index, *action[1:])
        if result is not None:
            self.trace = (self.trace[0], f"{self.trace[1]} = {result}")
        return result

    def acquire(self, thread, name, index, order):
        state, message = self.threads[thread], self.blocks[name].messages[index]
        if order in ACQUIRING:
            self.threads[thread] = state._replace(clock=join(state.clock, message.sync))
        return message

    def mark_seen(self, thread, name, index):
        """Who knows of this read will not read an older message either."""
        block = self.blocks[name]
        messages = list(block.messages)
        seen = messages[index].seen
        if all(other != thread for other, _ in seen):
            seen = tuple(sorted(seen + ((thread, self.threads[thread].clock[thread]),)))
            messages[index] = messages[index]._replace(seen=seen)
            self.blocks[name] = block._replace(messages=tuple(messages))

    def publish(self, thread, name, index, value, order, before):
        """Writes a message behind the one at the index. `before`: that one, if it was read too."""
        block, state = self.blocks[name], self.threads[thread]
        clock, sync = state.clock, before.sync if before else None
        if order in RELEASING:
            sync = join(clock, sync)
            later = tuple(time + (n == thread) for n, time in enumerate(clock))
            self.threads[thread] = state._replace(clock=later)
        message = Message(value, ((thread, clock[thread]),), sync, before is not None)
        place = index % len(block.messages) + 1
        messages = block.messages[:place] + (message,) + block.messages[place:]
        self.blocks[name] = block._replace(messages=messages)

    def do_load(self, thread, index, name, order):
        if name == NIL:
            return -1
        self.touch(thread, name, "count", "atomic read")
        self.mark_seen(thread, name, index)
        return self.acquire(thread, name, index, order).value

    def do_add(self, thread, index, name, by, order):
        self.touch(thread, name, "count", "atomic write")
        message = self.acquire(thread, name, index, order)
        self.publish(thread, name, index, message.value + by, order, message)
        return message.value + by

    def do_store(self, thread, index, name, value, order):
        self.touch(thread, name, "count", "atomic write")
        self.publish(thread, name, index, value, order, None)

    def do_plain_add(self, thread, _, name, by):
        self.touch(thread, name, "count", "write")
        message = self.blocks[name].messages[-1]
        self.publish(thread, name, -1, message.value + by, "RELAXED", None)
        return message.value + by

    def do_read(self, thread, _, name, field):
        if name != NIL:
            self.touch(thread, name, field, "read")
        return getattr(self.blocks[name], field)

    def do_set_length(self, thread, _, name, length):
        self.touch(thread, name, "length", "write")
        self.blocks[name] = self.blocks[name]._replace(length=length)

    def do_put(self, thread, _, name, place, units):
        self.touch(thread, name, "text", "write")
        block = self.blocks[name]
        if place + len(units) > block.capacity:
            raise Fault(f"thread {thread} writes behind the end of {name}")
        text = block.text[:place] + units + block.text[place + len(units):]
        self.blocks[name] = block._replace(text=text)

    def do_new(self, thread, _, size):
        name = f"{thread}." + str(sum(b.owner == thread for b in self.blocks.values()) + 1)
        self.add_block(name, "?" * size, owner=thread)
        return name

    def do_free(self, thread, _, name):
        for field in ("text", "length", "capacity", "count"):
            self.touch(thread, name, field, "write")
        self.blocks[name] = self.blocks[name]._replace(is_freed=True, messages=(), touched=())

    # Running.

    def is_scheduled(self, action):
        return (action[0] in ("load", "add", "store") and action[1] != NIL and
                self.blocks[action[1]].owner is None and not self.blocks[action[1]].is_freed)

    def advance(self, thread, history=()):
        """Runs the thread up to its next atomic operation on a shared block."""
        while self.threads[thread].operations:
            state = self.threads[thread]
            values = {name: Value(*value) for name, value in state.values}
            running = state.operations[0](values, str(thread))
            if not history:
                self.note(thread, state.operations[0].__name__)
            try:
                action = next(running)
                for result in history:
                    action = running.send(result)
                while not self.is_scheduled(action):
                    history += (self.perform(thread, action),)
                    action = running.send(history[-1])
                self.threads[thread] = self.threads[thread]._replace(history=history, action=action)
                return
            except StopIteration:
                left = tuple(sorted((n, (v.block, v.expected)) for n, v in values.items()))
                self.threads[thread] = self.threads[thread]._replace(
                    operations=state.operations[1:], values=left, history=(), action=None)
                history = ()

    def forget(self):
        """Drops what no running thread can read or race with, so that more states are the same."""
        running = [n for n, thread in enumerate(self.threads) if thread.action]
        for name, block in self.blocks.items():
            if block.messages and block.owner is None:
                oldest = min((self.floor(n, name) for n in running), default=0)
                messages = block.messages[oldest:]
                messages = (messages[0]._replace(seen=(), is_rmw=False),) + messages[1:]
                touched = tuple(entry for entry in block.touched if any(
                    self.threads[n].clock[entry[2]] < entry[3] for n in running if n != entry[2]))
                self.blocks[name] = block._replace(messages=messages, touched=touched)
        for n, thread in enumerate(self.threads):
            if n and not thread.action:
                self.threads[n] = thread._replace(clock=())

    def step(self, thread, index):
        """The world after the thread's next atomic operation, with the message at the index."""
        world = World(self.threads, self.blocks, self.trace)
        state = world.threads[thread]
        with_trace(world, lambda: world.advance(
            thread, state.history + (world.perform(thread, state.action, index),)))
        world.forget()
        return world

    def finish(self):
        """The first thread waited for all others, has all to itself and ends its own values."""
        for name, block in self.blocks.items():
            if name != NIL and block.owner is None and not block.is_freed:
                self.blocks[name] = block._replace(owner=0)
        self.advance(0)
        for name, block in self.blocks.items():
            if name != NIL and not block.is_freed:
                raise Fault(f"leak of {name}")


def with_trace(world, work):
    try:
        work()
    except Fault as fault:
        fault.trace = world.lines()
        raise


def explore(world, finish=World.finish):
    """All executions of threads 1 and up, shortest first; gives how many states there are."""
    for thread in range(1, len(world.threads)):
        with_trace(world, lambda: world.advance(thread))
    seen, waiting = {world.key()}, deque([world])
    while waiting:
        world = waiting.popleft()
        ready = [n for n, thread in enumerate(world.threads) if n and thread.action]
        if not ready:
            with_trace(world, lambda: finish(world))
        for thread in ready:
            for index in world.choices(thread):
                after = world.step(thread, index)
                key = after.key()
                if key not in seen:
                    seen.add(key)
                    waiting.append(after)
    return len(seen)

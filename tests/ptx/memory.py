"""Memory that detects every access to words that a launch may not read or write.

Many launches share one memory, so that their threads can run together, but none may access the arrays of
another. Between any two arrays is a margin that no launch may access."""

import numpy as np

MARGIN = 256
POISON = 0x7FF7DEAD  # a NaN as a float and as either half of a double
NOBODY, EVERYBODY = -1, -2


class BadAccess(Exception):
    pass


def words_of(address, size, count, is_allowed, memory, base=0):
    """The first words of accesses of `size` bytes, which must be aligned, and all of whose words must be
    allowed. The number of words is even, so that no aligned access ends beyond the last."""
    offset = address - np.uint64(base)
    allowed = (offset < np.uint64(4 * count)) & (offset % np.uint64(size) == 0)
    word = np.where(allowed, offset >> np.uint64(2), 0).astype(np.int64)
    for part in range(size // 4):
        allowed &= is_allowed(word + part)
    if not allowed.all():
        raise BadAccess(f"address {int(address[np.argmin(allowed)]):#x} of {memory} memory")
    return word


class Memory:
    """One address space of 4-byte words."""

    def __init__(self, base, size):
        self.base, self.used = base, MARGIN
        self.words = np.full((size + MARGIN) // 8 * 2 + MARGIN, POISON, np.uint32)
        self.reader = np.full(len(self.words), NOBODY, np.int32)
        self.writer = np.full(len(self.words), NOBODY, np.int32)
        self.stores = np.zeros(len(self.words), np.uint8)

    def place(self, content, reader):
        """Stores an array that `reader` may read, and returns its address."""
        first, last = self.reserve(content.nbytes)
        self.words[first:last] = np.ascontiguousarray(content).view(np.uint32).ravel()
        self.reader[first:last] = reader
        return self.base + 4 * first

    def room(self, size, writer):
        """Reserves memory for results of `writer`, and returns its address."""
        first, last = self.reserve(size)
        self.writer[first:last] = writer
        return self.base + 4 * first

    def reserve(self, size):
        first = self.used // 4
        last = first + size // 4
        self.used = -(-4 * last // MARGIN) * MARGIN + MARGIN
        if self.used // 4 > len(self.words):
            raise MemoryError("more arrays than were announced")
        return first, last

    def content(self, address, size):
        first = (address - self.base) // 4
        return self.words[first : first + size // 4], self.stores[first : first + size // 4]

    def word(self, address, size, owner, launch):
        def is_owned(word):
            return (owner[word] == launch) | (owner[word] == EVERYBODY)

        return words_of(address, size, len(self.words), is_owned, "global", self.base)

    def load(self, address, dtype, launch):
        word = self.word(address, dtype.itemsize, self.reader, launch)
        return self.words.view(dtype)[word * 4 // dtype.itemsize]

    def store(self, address, value, launch):
        size = value.dtype.itemsize
        word = self.word(address, size, self.writer, launch)
        if len(np.unique(word)) < len(word) or self.stores[word].any():
            raise BadAccess("two stores to one address")
        self.words.view(value.dtype)[word * 4 // size] = value
        for part in range(size // 4):
            self.stores[word + part] += 1


class ConstantMemory:
    """In every launch, the same addresses hold a different rule. Words that were not written cannot be
    read."""

    def __init__(self, sizes, launches):
        self.address, end = {}, MARGIN
        for name, size in sizes.items():
            self.address[name] = end
            end += -(-size // MARGIN) * MARGIN + MARGIN
        self.words = np.full((launches, end // 4), POISON, np.uint32)
        self.written = np.zeros((launches, end // 4), bool)

    def write(self, launch, name, content):
        first = self.address[name] // 4
        words = np.ascontiguousarray(content).view(np.uint32)
        self.words[launch, first : first + len(words)] = words
        self.written[launch, first : first + len(words)] = True

    def load(self, address, dtype, launch):
        def is_written(word):
            return self.written[launch, word]

        count = self.words.shape[1]
        word = words_of(address, dtype.itemsize, count, is_written, "constant")
        flat = launch.astype(np.int64) * count + word
        return self.words.ravel().view(dtype)[flat * 4 // dtype.itemsize]


class LocalMemory:
    """The threads' own arrays, with margins between them. Every thread has a row of words and a row that
    marks the words it has written; its addresses begin at 0."""

    def __init__(self, sizes):
        self.address, end = {}, -MARGIN
        for name, size in sizes.items():
            self.address[name] = end + MARGIN
            end = self.address[name] + -(-size // 16) * 16
        self.is_array = np.zeros(max(end, 0) // 4, bool)
        for name, size in sizes.items():
            first = self.address[name] // 4
            self.is_array[first : first + size // 4] = True

    def rows(self, threads):
        return np.zeros((threads, 2, len(self.is_array)), np.uint32)

    def load(self, rows, address, dtype):
        row, size = np.arange(len(rows)), dtype.itemsize
        word = words_of(address, size, rows.shape[2], lambda word: rows[row, 1, word] == 1, "local")
        return rows.view(dtype)[row, 0, word * 4 // size]

    def store(self, rows, address, value):
        row, size = np.arange(len(rows)), value.dtype.itemsize
        word = words_of(address, size, rows.shape[2], lambda word: self.is_array[word], "local")
        rows.view(value.dtype)[row, 0, word * 4 // size] = value
        for part in range(size // 4):
            rows[row, 1, word + part] = 1

"""Memory that notices every access outside of what a launch may read or write.

Many launches share one memory, so that their threads can be run together; what one of them owns,
no other may touch. Between any two arrays lie margins that nobody owns."""

import numpy as np

MARGIN = 256
POISON = 0x7FF7DEAD  # a NaN as a float and as either half of a double
NOBODY, EVERYBODY = -1, -2


class BadAccess(Exception):
    pass


class Memory:
    """One address space of 4-byte words."""

    def __init__(self, base, size):
        self.base, self.used = base, MARGIN
        self.words = np.full((size + MARGIN) // 8 * 2 + MARGIN, POISON, np.uint32)
        self.reader = np.full(len(self.words), NOBODY, np.int32)
        self.writer = np.full(len(self.words), NOBODY, np.int32)
        self.stores = np.zeros(len(self.words), np.uint8)

    def place(self, content, reader):
        """Puts an array where `reader` may read it; its address."""
        first, last = self.reserve(content.nbytes)
        self.words[first:last] = np.ascontiguousarray(content).view(np.uint32).ravel()
        self.reader[first:last] = reader
        return self.base + 4 * first

    def room(self, size, writer):
        """Room for results of `writer`; its address."""
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
        offset = address - np.uint64(self.base)
        word = (offset >> np.uint64(2)).astype(np.int64)
        inside = offset < np.uint64(4 * len(self.words))
        allowed = inside & (offset % np.uint64(size) == 0)
        for part in range(size // 4):
            owners = owner[np.where(inside, word + part, 0)]
            allowed &= (owners == launch) | (owners == EVERYBODY)
        if not allowed.all():
            raise BadAccess(f"address {int(address[np.argmin(allowed)]):#x} of global memory")
        return word

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
    """The same addresses hold another rule in every launch. What was not written there cannot be
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
        word = (address >> np.uint64(2)).astype(np.int64)
        inside = address < np.uint64(4 * self.words.shape[1])
        allowed = inside & (address % np.uint64(dtype.itemsize) == 0)
        allowed &= self.written[launch, np.where(inside, word, 0)]
        if not allowed.all():
            raise BadAccess(f"address {int(address[np.argmin(allowed)]):#x} of constant memory")
        flat = launch.astype(np.int64) * self.words.shape[1] + word
        return self.words.ravel().view(dtype)[flat * 4 // dtype.itemsize]


class LocalMemory:
    """Arrays of the threads' own, as rows of one array; a thread's addresses begin at 0."""

    @staticmethod
    def rows(threads, size):
        return np.full((threads, -(-size // 4)), POISON, np.uint32)

    @staticmethod
    def word(rows, address):
        word = (address >> np.uint64(2)).astype(np.int64)
        if ((address % np.uint64(4) != 0) | (address >= np.uint64(4 * rows.shape[1]))).any():
            raise BadAccess("an address beyond the local memory")
        return np.arange(len(rows)), word

# SPDX-License-Identifier: Apache-2.0
"""Shows strings and containers of moxtools in gdb.

gdb loads this file by itself when it lies beside the library under its name with
"-gdb.py" at the end, in a directory that its `auto-load safe-path` names.

Only memory is read, never a function of the program called, so core files do as
well as processes. Where things lie in memory stands in `layout` below: a class that
the library alone implements is not described in the debug information of a tool.
What is read may be damaged: numbers that make no sense are shown as such, and
nothing is followed further than sizes that a container can have.
"""

import sys
import types

import gdb
import gdb.printing
import gdb.types

# Offsets in bytes. A test holds them against the compiler's.
layout = {
    "KazStringRep": {"stringLength": 0, "bufferLength": 4, "referenceCount": 8},
    "KazString": {"rep_": 0},
    "KazWString": {"rep_": 0},
    "KazArrayPtr": {"data": 0, "size": 8, "capacity": 12},
    "KazTree": {"root_": 0},
    "generic_tree": {"value": 0, "left": 8, "right": 16, "weight": 24},
    "KazHashTable": {"bucketCount_": 8, "entryCount_": 12, "compare_": 32, "buckets_": 72},
    "KazBucket": {"count": 0, "capacity": 4},
    "KazBucketEntry": {"key": 0, "value": 8},
    "string_map_tp": {"buckets": 0, "bucketCount": 12},
    "string_map_entry": {"key": 0, "value": 8, "next": 16},
    "KazParsedArgs": {"values_": 0, "untagged_": 8},
}
rep_size = 12
bucket_size = 8
entry_size = 16
largest = 1 << 24  # of any count that is believed


def basic(name):
    return gdb.lookup_type(name)


def read(address, size, signed=True):
    memory = gdb.selected_inferior().read_memory(address, size)
    return int.from_bytes(memory.tobytes(), "little", signed=signed)


def pointer_at(address):
    return read(address, 8, signed=False)


def pointer_in(address, type_name, field):
    return pointer_at(address + layout[type_name][field])


def number_in(address, type_name, field):
    return read(address + layout[type_name][field], 4)


def as_pointer(address):
    return gdb.Value(address).cast(basic("void").pointer())


def text(address, unit="char"):
    """The text of a block whose characters start at `address`, as gdb shows texts."""
    try:
        if address == 0:
            length = 0
        else:
            rep = address - rep_size
            length, room, count = (number_in(rep, "KazStringRep", field)
                                   for field in ("stringLength", "bufferLength", "referenceCount"))
            size = basic(unit).sizeof
            if not 0 <= length <= room or room % 16 != 3 or count < 1 or read(address + length * size, size):
                return f"<not a string: length {length}, room {room}, count {count}>"
        if length == 0:
            return '""' if unit == "char" else 'u""'
        return gdb.Value(address).cast(basic(unit).pointer()).lazy_string(length=length)
    except gdb.MemoryError:
        return f"<not a string: no memory at {address:#x}>"


def plain_text(address):
    """A terminated text without a header."""
    if address == 0:
        return '""'
    return gdb.Value(address).cast(basic("char").pointer())


def slot_as_int(word):
    word &= 0xFFFFFFFF
    return gdb.Value(word - (1 << 32) if word >> 31 else word).cast(basic("int"))


def as_child(word, kind):
    if kind == "text":
        return text(word)
    return slot_as_int(word) if kind == "int" else as_pointer(word)


class Printer:
    """Common to all: where the object lies, and memory that is not there."""

    def __init__(self, value):
        self.value = value
        self.address = int(value.address) if value.address is not None else None
        self.name = gdb.types.get_basic_type(value.type).name

    def headline(self, count):
        return f"{self.name} of {count}"

    def damaged(self, what):
        return f"<not a {self.name}: {what}>"


class TextPrinter(Printer):
    unit = "char"

    def to_string(self):
        if self.address is None:
            return self.damaged("not in memory")
        return text(pointer_at(self.address), self.unit)


class WidePrinter(TextPrinter):
    unit = "char16_t"


class ContainerPrinter(Printer):
    """Derived: size(), a number or the text of what is wrong, and items()."""

    def checked_size(self):
        if self.address is None:
            return "not in memory"
        try:
            return self.size()
        except gdb.MemoryError:
            return "no memory there"

    def to_string(self):
        size = self.checked_size()
        return self.headline(size) if isinstance(size, int) else self.damaged(size)

    def children(self):
        size = self.checked_size()
        if not isinstance(size, int):
            return
        number = 0
        try:
            for item in self.items(size):
                yield f"[{number}]", item
                number += 1
        except gdb.MemoryError:
            yield f"[{number}]", "<no memory there>"


class ArrayPrinter(ContainerPrinter):
    kind = "pointer"

    def size(self):
        size, capacity = (number_in(self.address, "KazArrayPtr", field) for field in ("size", "capacity"))
        if not 0 <= size <= capacity or size > largest:
            return f"size {size}, capacity {capacity}"
        return size

    def items(self, size):
        data = pointer_in(self.address, "KazArrayPtr", "data")
        for i in range(size):
            yield as_child(pointer_at(data + 8 * i), self.kind)

    def display_hint(self):
        return "array"


class IntArrayPrinter(ArrayPrinter):
    kind = "int"


class TextArrayPrinter(ArrayPrinter):
    kind = "text"


class TreePrinter(ContainerPrinter):
    """In ascending order: what comes after a value is in its left subtree."""

    kind = "pointer"

    def root(self):
        return pointer_in(self.address, "KazTree", "root_")

    def size(self):
        root = self.root()
        weight = number_in(root, "generic_tree", "weight") if root else 0
        if not 0 <= weight <= largest or (root and weight < 1):
            return f"weight {weight}"
        return weight

    def items(self, size):
        node, above = self.root(), []
        while (node or above) and size > 0:
            # A ring of nodes would never end otherwise.
            if len(above) > size:
                yield "<a node is its own descendant>"
                return
            if node:
                above.append(node)
                node = pointer_in(node, "generic_tree", "right")
                continue
            node = above.pop()
            size -= 1
            yield as_child(pointer_in(node, "generic_tree", "value"), self.kind)
            node = pointer_in(node, "generic_tree", "left")

    def display_hint(self):
        return "array"


class IntTreePrinter(TreePrinter):
    kind = "int"


class TextTreePrinter(TreePrinter):
    kind = "text"


class TablePrinter(ContainerPrinter):
    def size(self):
        size, buckets = (number_in(self.address, "KazHashTable", field)
                         for field in ("entryCount_", "bucketCount_"))
        if not 0 <= size <= largest or buckets > largest:
            return f"{size} entries, {buckets} buckets"
        return size

    def key_kind(self):
        compare = as_pointer(pointer_in(self.address, "KazHashTable", "compare_"))
        return "text" if "KazString::compareDisguised" in compare.format_string() else "pointer"

    def value_kind(self):
        return "pointer"

    def items(self, size):
        keys, values = self.key_kind(), self.value_kind()
        buckets = pointer_in(self.address, "KazHashTable", "buckets_")
        count = max(1, number_in(self.address, "KazHashTable", "bucketCount_"))
        for bucket in (pointer_at(buckets + 8 * i) for i in range(count if size > 0 else 0)):
            held = number_in(bucket, "KazBucket", "count") if bucket else 0
            if not 0 <= held <= size:
                yield from ("<damaged bucket>", f"{held} entries")
                return
            size -= held
            for i in range(held):
                entry = bucket + bucket_size + entry_size * i
                yield as_child(pointer_in(entry, "KazBucketEntry", "key"), keys)
                yield as_child(pointer_in(entry, "KazBucketEntry", "value"), values)

    def display_hint(self):
        return "map"


class TextMapPrinter(TablePrinter):
    def key_kind(self):
        return "text"

    value_kind = key_kind


class StringMapPrinter(ContainerPrinter):
    """Counts by walking: the map's own count is always 0."""

    def chains(self):
        buckets = pointer_in(self.address, "string_map_tp", "buckets")
        count = number_in(self.address, "string_map_tp", "bucketCount")
        order = [*range(count), *range(-1, -count, -1)]
        return (pointer_at(buckets + 8 * i) for i in order)

    def entries(self):
        left = largest
        for entry in self.chains():
            while entry and left > 0:
                yield entry
                left -= 1
                entry = pointer_in(entry, "string_map_entry", "next")

    def size(self):
        buckets = number_in(self.address, "string_map_tp", "bucketCount")
        if not 1 <= buckets <= largest:
            return f"{buckets} buckets"
        return sum(1 for _ in self.entries())

    def items(self, _size):
        for entry in self.entries():
            yield plain_text(pointer_in(entry, "string_map_entry", "key"))
            yield as_pointer(pointer_in(entry, "string_map_entry", "value"))

    def display_hint(self):
        return "map"


class ArgumentsPrinter(ContainerPrinter):
    """The options that were given, by the names of the enumeration, then the rest."""

    def collections(self):
        values = pointer_in(self.address, "KazParsedArgs", "values_")
        for field in basic("arg_type_enum").fields():
            if field.enumval >= 0:
                collection = pointer_at(values + 8 * field.enumval)
                if collection:
                    yield field.name, collection
        yield "untagged", self.address + layout["KazParsedArgs"]["untagged_"]

    def size(self):
        return sum(1 for _ in self.collections()) - 1

    def items(self, _size):
        for name, collection in self.collections():
            value = gdb.Value(collection).cast(basic("KazColl").pointer()).dereference()
            yield name
            yield value.cast(basic("KazStringColl")) if has_type("KazStringColl") else value

    def headline(self, count):
        return f"{self.name} with {count} options"

    def display_hint(self):
        return "map"


def has_type(name):
    try:
        gdb.lookup_type(name)
        return True
    except gdb.error:
        return False


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("moxtools")
    for name, printer in (("KazString", TextPrinter), ("KazWString", WidePrinter),
                          ("KazArrayPtr", ArrayPrinter), ("KazColl", ArrayPrinter),
                          ("KazIntColl", IntArrayPrinter), ("KazStringColl", TextArrayPrinter),
                          ("KazTree", TreePrinter), ("KazIntTree", IntTreePrinter),
                          ("KazStringTree", TextTreePrinter), ("KazHashTable", TablePrinter),
                          ("KazStringToStringMap", TextMapPrinter),
                          ("string_map_tp", StringMapPrinter), ("KazParsedArgs", ArgumentsPrinter)):
        collection.add_printer(name, f"^{name}$", printer)
    return collection


def become_module():
    """Runs this file once more, as a module: what gdb runs by itself shares its names
    with every other script."""
    module = types.ModuleType("moxtools_gdb")
    with open(__file__, encoding="utf-8") as source:
        exec(compile(source.read(), __file__, "exec"), module.__dict__)
    sys.modules[module.__name__] = module
    gdb.printing.register_pretty_printer(gdb.current_objfile(), module.printers(), replace=True)


if __name__ != "moxtools_gdb":
    become_module()
